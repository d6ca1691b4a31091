#pragma once

#include <QObject>
#include <QTimer>

#include <vector>

class QMainWindow;
class QStackedLayout;
class QxFileCommands;
class QxWorkArea;
class ZxSpatialData;

/// Asks before the window closes: about work that goes on, files being written, unsaved work of editors and
/// data that were not saved. Only when all of it is answered are the editors closed. Where closing has to
/// wait, it closes the window by itself later.
class QxCloseGuard : public QObject {
  Q_OBJECT
public:
  QxCloseGuard(QStackedLayout* pages, QxFileCommands* files, QxWorkArea* workArea, QMainWindow* window);

  /// True when the window may close now.
  bool mayClose();

private:
  enum class Answer { Close, Later, Stay };
  Answer askAboutWork();
  Answer askPages();
  Answer askAboutWriting();
  Answer askAboutUnsaved();
  void closePages();
  /// Closes the window as soon as nothing is in the way any more.
  void closeLater();
  void tryAgain();

  QStackedLayout* m_pages; // these three: of the window
  QxFileCommands* m_files;
  QxWorkArea* m_workArea;
  QMainWindow* m_window; // parent
  QTimer m_later;
  bool m_isAsking = false;
};
