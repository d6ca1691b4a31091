#pragma once

#include <QRect>
#include <QString>

class QImage;
class QWidget;

/// Takes pictures of windows and writes them as PNG files into one folder.
///
/// A window is drawn together with the dialogs and menus that are open over it, at their places on the
/// screen; what is not part of the program, frames of a window manager and the pointer, is not in the
/// picture.
class Camera {
public:
  explicit Camera(QString folder) : m_folder(std::move(folder)) {}

  /// The window of a widget, or a part of it in its own pixels.
  void takeWindow(const QString& name, QWidget& window, const QRect& part = {}) const;
  /// A widget alone, or a part of it in its own pixels.
  void takeWidget(const QString& name, QWidget& widget, const QRect& part = {}) const;

private:
  void write(const QString& name, const QImage& picture) const;

  QString m_folder;
};
