#pragma once

#include "zx/ZxFileAccess.h"

#include <QObject>
#include <QStringList>
#include <QUrl>

class QWidget;
class QxFileQueue;
class QxRecentFiles;

/// Opening and saving in the window: the dialogs, what dropped files mean, and what is asked before.
class QxFileCommands : public QObject {
  Q_OBJECT
public:
  QxFileCommands(QxFileQueue* queue, QWidget* window);

  QxRecentFiles* recentFiles() const noexcept { return m_recent; }
  QxFileQueue* queue() const noexcept { return m_queue; }

  /// Opens what a user has named: each entry is a volume of its own, except that several pictures are the
  /// slices of one. Of several TIFF files it is asked which they are.
  void open(const QStringList& files, ZxReadAs as = ZxReadAs::Automatic);
  /// Opens what was dropped on the window.
  void drop(const QList<QUrl>& urls);

  /// Writes to the file that the data came from or went to, where that can be written, else asks for a name.
  /// False when nothing is written.
  bool save(ZxSpatialData& data);
  bool saveAs(ZxSpatialData& data);

public Q_SLOTS:
  void askForFiles();
  void askForFolder();
  void askForLabels();

Q_SIGNALS:
  void failed(const QString& sentence);

private:
  void openInputs(const QStringList& inputs, ZxReadAs as);
  void askForFiles(const QString& title, ZxReadAs as);
  void refuse(const QString& sentence);
  bool startWriting(ZxSpatialData& data, const QString& path);

  QxFileQueue* m_queue;    // lives as long as the window
  QWidget* m_window;       // parent
  QxRecentFiles* m_recent; // child
};
