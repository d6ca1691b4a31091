#pragma once

#include <QWidget>

#include <functional>

class ZxPort;

/// The control of one port. It shows what the port holds and hands on what the user enters: the module then
/// runs a pass, at once or, while it works, after its pass.
///
/// Object names: the widget is called like its port, the controls inside have the port's name, a dot and
/// their number from 0.
class QxPortWidget : public QWidget {
  Q_OBJECT
public:
  /// The control for a port of any kind; null for a kind without one.
  static QxPortWidget* create(ZxPort& port, QWidget* parent);

  ZxPort& port() const noexcept { return m_port; }
  /// Takes up what the port holds. Never changes the port.
  virtual void refresh() = 0;

protected:
  QxPortWidget(ZxPort& port, QWidget* parent);
  /// Gives a control its name, the port's tool tip and a name for screen readers.
  void prepare(QWidget* control, int number, const QString& text);
  /// Changes the port on the user's behalf.
  void change(std::function<void()> edit);

private:
  ZxPort& m_port; // lives longer: its module is shown
};
