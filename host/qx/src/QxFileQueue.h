#pragma once

#include "zx/ZxFileJob.h"

#include <QTimer>
#include <QWidget>

#include <deque>
#include <functional>
#include <memory>

class QLabel;
class QProgressBar;
class QPushButton;

/// Reads and writes files in the background, one after the other, and shows how far it has come: a part of
/// the status line that is there while there is something to do.
///
/// Children: "fileText", "fileBar", "fileStop".
class QxFileQueue : public QWidget {
  Q_OBJECT
public:
  explicit QxFileQueue(QWidget* parent);
  ~QxFileQueue() override;

  void read(ZxReadRequest request);
  void write(McHandle<ZxSpatialData> source, std::string path);
  bool isIdle() const noexcept { return !m_job && m_waiting.empty(); }
  /// True while data are being written or wait to be.
  bool isWriting() const noexcept;
  /// Stops what is going on and drops what waits.
  void stopAll();
  /// The button that stops what is going on; what waits goes on after it.
  QPushButton* stopButton() const noexcept { return m_stop; }

Q_SIGNALS:
  /// A volume was read and is in the pool.
  void opened(ZxSpatialData* data, const QStringList& inputs);
  void saved(ZxSpatialData* data, const QString& path);
  /// Reading or writing failed, with its sentence; it is on the console, too.
  void failed(const QString& sentence);
  /// Nothing is left to do.
  void becameIdle();

private:
  struct Order {
    ZxReadRequest request;
    McHandle<ZxSpatialData> data; // to be written; null for reading
    std::string path;
  };
  void start();
  void jobEnded();
  void showProgress();

  QLabel* m_text; // these three: children
  QProgressBar* m_bar;
  QPushButton* m_stop;
  QTimer m_timer;
  std::deque<Order> m_waiting;
  Order m_order; // what the job does
  std::unique_ptr<ZxFileJob> m_job;
};
