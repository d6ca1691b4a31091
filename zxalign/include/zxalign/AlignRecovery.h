#pragma once

#include "mc/McDArray.h"
#include "zx/ZxPoolObserver.h"
#include "zxalign/SliceInfo.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QThreadPool>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

class ZxAlignSlices;
class ZxRecoveryFile;
struct AlignState;
struct RecoveryContent;
struct RecoveryKey;

/// Keeps what was edited and not saved yet in a file of the user's state folder, so that a crash costs no
/// more than the edit in hand.
///
/// Every recorded edit queues the module's state. It is written when the event loop is reached, thus after
/// the edit is complete, on a thread of its own and at most once a second. The file goes when the alignment
/// is discarded on purpose, is back where it began, or was stored with data that have been written to their
/// file since; it stays when the program or the module ends without that. When the same data (file and size)
/// come to a module again, what was left is offered.
///
/// Data without a file are not kept: they could not be told from others. Used from the thread of the module,
/// which owns this object.
class AlignRecovery : public QObject, public ZxPoolObserver {
  Q_OBJECT
public:
  /// Asks the user about an offer, later; restore() or discardOffer() are called with the answer, as long as
  /// the object lives, or none of them to leave things as they are. False: there is nobody to ask.
  using Question = std::function<bool(AlignRecovery& recovery, const QString& text)>;
  /// Where there is none, or nobody to ask, the message console tells of an offer.
  static void setQuestion(Question question);
  /// Says whether anything is kept now; without a function it always is. Scripts without a window can be run
  /// again and need nothing kept.
  static void setWanted(bool (*wanted)()) noexcept;

  explicit AlignRecovery(ZxAlignSlices& module);
  /// Writes what is still queued.
  ~AlignRecovery() override;

  /// The module has taken a new input and read what is stored with it.
  void attach();
  /// The module is about to lose its input. What is queued is written.
  void detach();
  /// An edit was recorded, or taken back.
  void queue();
  /// The alignment as it is now is stored in the parameters of the input. It is kept until they are written.
  void stored();
  /// The alignment as it is now is saved, or not wanted: nothing of it is kept any longer.
  void forget();
  void objectChanged(ZxObject* object) override;

  /// True while something is queued or being written.
  bool isPending() const { return m_timer.isActive() || m_pool.activeThreadCount() > 0; }
  bool hasOffer() const noexcept { return m_offered != nullptr; }
  /// Gives the module the alignment that is offered; one undo takes it back.
  void restore();
  /// Removes it, and offers an older one if there is one.
  void discardOffer();

  /// The least time between two writes, a second.
  void setInterval(std::chrono::milliseconds interval) { m_interval = interval; }

private:
  void takeTurn();
  void writeIfChanged();
  void write(const AlignState& state, std::shared_ptr<ZxRecoveryFile> replaced);
  void tellFailure(const std::string& problem);
  void offer();
  RecoveryKey currentKey() const;

  ZxAlignSlices& m_module;
  std::chrono::milliseconds m_interval{1000};
  QTimer m_timer;
  QElapsedTimer m_sinceWrite;
  McDArray<SliceInfo> m_saved;               // as when attached, or when saved
  McDArray<SliceInfo> m_stored;              // as last stored in the parameters; empty before
  std::unique_ptr<AlignState> m_written;     // what the file holds; null without one
  std::unique_ptr<RecoveryKey> m_key;        // of the present input; null where nothing is kept
  std::shared_ptr<ZxRecoveryFile> m_file;    // used by the pool's thread
  std::shared_ptr<ZxRecoveryFile> m_offered; // held for as long as the question is open
  std::unique_ptr<RecoveryContent> m_offer;
  bool m_hasFailed = false; // One message, not one a second.
  QThreadPool m_pool;       // of one thread: what is done to files is done in order
};
