#pragma once

#include "zx/ZxData.h"
#include "zxalign/SliceXForm.h"

#include <memory>
#include <optional>
#include <vector>

class ZxAlignSlices;
struct SliceMapping;

/// The quality of one pair of neighbouring slices, computed apart from the module: on any thread, without
/// touching its current pair.
///
/// Made on the module's thread, of which it takes what it needs as it is at that moment; the module outlives
/// it. It keeps the data alive.
class PairQualityJob {
public:
  /// What the quality of a pair depends on besides its voxels. Equal values give equal qualities.
  struct Key {
    SliceXForm lower;
    SliceXForm upper;
    const void* data = nullptr; ///< to compare with only, like the mask
    const void* mask = nullptr;
    float windowMin = 0.0f;
    float windowMax = 0.0f;

    bool operator==(const Key& other) const;
  };
  /// Room that jobs share, one after the other.
  struct Buffers {
    std::vector<unsigned char> raw;
    std::vector<unsigned char> grey[2];
    std::vector<unsigned char> colour[2];
  };

  /// The pair of the slices lower and lower + 1, both in the stack.
  PairQualityJob(ZxAlignSlices& module, int lower);
  /// On the module's thread, like the constructor: the data may go with the job.
  ~PairQualityJob();
  static Key keyOf(ZxAlignSlices& module, int lower);

  int lower() const noexcept { return m_lower; }
  const Key& key() const noexcept { return m_key; }
  /// 0 to 1, as the module shows it of a pair that is displayed normally, not as projections; none when there
  /// is not enough memory. Holds the module's data mutex while voxels are read.
  std::optional<float> run(Buffers& buffers) const;

private:
  float compute(Buffers& buffers) const;

  ZxAlignSlices& m_module;
  McHandle<ZxSpatialData> m_data; // keep alive what the mapping borrows
  McHandle<ZxData> m_mask;
  int m_lower;
  std::unique_ptr<SliceMapping> m_mapping;
  Key m_key;
};
