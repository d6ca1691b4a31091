#pragma once

#include "zxalign/PairConfidence.h"
#include "zxalign/PairQualityJob.h"

#include <QObject>
#include <QThreadPool>
#include <QTimer>

#include <optional>
#include <vector>

class ZxAlignSlices;

/// The quality of every pair of neighbouring slices of a module, computed in the background.
///
/// While it is active it looks now and then what has changed, and computes the pairs that did, one at a time
/// on a thread of its own, beginning at the present pair. It does nothing while a mouse button is down or
/// other work goes on: what a person does comes first. A pair is named by its lower slice.
class PairQualities : public QObject {
  Q_OBJECT
public:
  /// The module outlives this object.
  explicit PairQualities(ZxAlignSlices& module, QObject* parent = nullptr);
  /// Waits for the pair that is being computed.
  ~PairQualities() override;

  /// Off at first.
  void setActive(bool active);
  /// One less than there are slices.
  int count() const noexcept { return static_cast<int>(m_pairs.size()); }
  /// 0 to 1; the one before, while it is being computed anew; none before it is known, and when there was not
  /// enough memory.
  std::optional<float> quality(int lower) const { return m_pairs[static_cast<std::size_t>(lower)].quality; }
  /// What the method that matched the pair last has said of it; none where it has said nothing, or the pair
  /// has been moved since.
  const std::optional<PairConfidence>& confidence(int lower) const
  {
    return m_pairs[static_cast<std::size_t>(lower)].confidence;
  }
  /// Whether there is a confidence of any pair.
  bool hasConfidences() const noexcept;
  /// How many are known and up to date.
  int upToDate() const noexcept;
  /// The pair of lowest quality, the first of equal ones; -1 while none is known.
  int worst() const noexcept { return m_worst; }
  /// The pair that is being edited; -1 when its slices are no neighbours.
  int current() const noexcept { return m_current; }

Q_SIGNALS:
  /// There are other pairs now, and nothing is known of them.
  void reset();
  /// Something about this pair has changed.
  void changed(int lower);
  /// Another pair is the worst.
  void worstChanged(int before, int now);
  void currentChanged(int lower);

private:
  struct Pair {
    std::optional<float> quality;
    std::optional<PairConfidence> upwards; // said of the upper slice, of the lower one
    std::optional<PairConfidence> downwards;
    std::optional<PairConfidence> confidence; // the one that stands
    PairQualityJob::Key key;                  // that the quality is of
    bool isUpToDate = false;
    bool hasMoved = true; // since the confidence was looked at
  };

  void look();
  void lookAtCurrent();
  void lookAtConfidences();
  std::optional<PairConfidence> standing(const Pair& pair) const;
  bool mayCompute() const;
  void computeNext();
  int nextOutdated() const;
  void finish(const PairQualityJob& job, std::optional<float> quality);
  void findWorst();

  ZxAlignSlices& m_module;
  std::vector<Pair> m_pairs;
  int m_worst = -1;
  int m_current = -1;
  int m_last = -1; // computed last
  bool m_isComputing = false;
  QTimer m_watch;
  PairQualityJob::Buffers m_buffers; // of the pool's thread
  QThreadPool m_pool;                // of one thread
};
