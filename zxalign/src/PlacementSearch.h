#pragma once

#include "MappingSet.h"
#include "kernels/SampledComparison.h"
#include "zxalign/SliceXForm.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

/// The two images of a pair that are compared, of one size; borrowed. 4 channels: colour, else grey.
struct ImagePair {
  const unsigned char* reference = nullptr;
  const unsigned char* editable = nullptr;
  int width = 0;
  int height = 0;
  int channels = 1;
};

/// Finds the best of many placements of the editable image over the reference.
///
/// The answer is that of comparing them one after the other, to the last bit and for any number of threads.
/// It comes sooner because the reference is sampled once, placements are compared by all threads at the same
/// time, and each is given up as soon as it can no longer become the best.
class PlacementSearch {
public:
  /// Asked on the calling thread between pieces of work of some milliseconds; true: stop.
  using StopQuery = std::function<bool()>;

  struct Found {
    std::size_t index = 0;
    float quality = 0.0f;
  };

  /// Takes the memory for images of up to this size. False when there is not enough.
  bool reserve(int width, int height, int channels);

  /// Begins with a pair and the placement of its reference. The images stay as they are while searched.
  void setPair(const ImagePair& pair, const SliceXForm& reference);

  /// The quality of one placement of the editable image, as ZxAlignSlices::computeQuality() gives it.
  float qualityOf(const SliceXForm& editable);

  /// The best of some placements if its quality exceeds `least`; of equal ones the first. `least` is a
  /// quality that findBest() or qualityOf() gave for this pair, and not lower from call to call: what was
  /// compared before has not exceeded it and is not compared again. A stop ends it early: then only
  /// placements compared so far are taken into account.
  std::optional<Found> findBest(std::span<const SliceXForm> placements, float least, const StopQuery& stop);

private:
  /// What a placement must beat: a quality and, for equal qualities, an order. One number, so that threads
  /// can raise it without a lock.
  class Best {
  public:
    explicit Best(float least);
    /// True when this quality of the placement with this index would be the new best.
    bool isBeatenBy(float quality, std::size_t index) const;
    void offer(float quality, std::size_t index);
    float quality() const;
    std::optional<Found> found() const;

  private:
    static std::uint64_t keyOf(float quality, std::uint32_t rank);
    std::atomic<std::uint64_t> m_key;
  };

  /// A placement of a batch while it is compared.
  struct Slot {
    kernels::SampledComparison comparison;
    kernels::Affine16 mapping;
    bool isCompared = false; // before, in another batch
  };
  using Placements = std::span<const SliceXForm>;

  std::uint64_t points() const;
  void makeSlots(std::size_t wanted);
  enum class Again { No, Yes };
  void start(Slot& slot, const SliceXForm& editable, Again again) const;
  bool compareBatch(Placements placements, std::size_t firstIndex, Best& best, const StopQuery& stop);
  void compareBands(kernels::SampledComparison& comparison, std::size_t index, int bandBegin, int bandEnd,
                    Best& best) const;
  std::uint64_t limitOf(std::uint64_t count, std::size_t index, const Best& best) const;
  float qualityOf(std::uint64_t squares, std::uint64_t count) const;

  ImagePair m_pair;
  kernels::SampledReference m_reference;
  std::vector<Slot> m_slots; // one for every placement of a batch
  MappingSet m_compared;     // of this pair
};
