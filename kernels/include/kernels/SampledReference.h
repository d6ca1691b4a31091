#pragma once

#include "kernels/PairDifference.h"
#include "kernels/RowSpan.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace kernels {

struct PairSide;

/// One image of a pair as it lies on the grid of the aligned frame, so that many placements of the other
/// image can be compared with it (see SampledComparison) and only that other image is walked over.
class SampledReference {
public:
  SampledReference();
  ~SampledReference();
  SampledReference(const SampledReference&) = delete;
  SampledReference& operator=(const SampledReference&) = delete;

  /// Takes the memory for grids of up to this many points and channels (4: colour; else grey). False when
  /// there is not enough; then nothing can be sampled.
  bool reserve(int gridWidth, int gridHeight, int channels);

  /// Samples an image on a grid as pairDifference() does. The grid is within what was reserved. Above the
  /// limits of pairDifference() the grid is empty.
  void sample(const PairImage& image, const Affine16& m, int gridWidth, int gridHeight, int channels);

  int gridWidth() const noexcept { return m_gridWidth; }
  int gridHeight() const noexcept { return m_gridHeight; }
  /// Rows of a band, the unit in which comparisons are made: enough for neighbouring rows to share what they
  /// read, few enough for a comparison to be given up soon.
  int bandRows() const noexcept { return std::max(8, m_gridHeight / 64); }
  int bands() const noexcept { return (m_gridHeight + bandRows() - 1) / bandRows(); }
  int channels() const noexcept { return m_channels; }
  /// The columns of every row of the grid that lie in the image.
  const RowSpan* spans() const noexcept { return m_spans.get(); }
  /// The sampled image; valid until the next call of sample().
  const PairSide& side() const noexcept { return *m_side; }

private:
  std::unique_ptr<std::uint8_t[]> m_pixels;
  std::unique_ptr<RowSpan[]> m_spans;
  std::unique_ptr<PairSide> m_side;
  int m_gridWidth = 0;
  int m_gridHeight = 0;
  int m_channels = 1;
};

} // namespace kernels
