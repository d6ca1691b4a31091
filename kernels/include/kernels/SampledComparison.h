#pragma once

#include "kernels/SampledReference.h"

#include <cstdint>
#include <memory>

namespace kernels {

/// Compares placements of an image with a sampled reference, one after the other, and can be given up early.
///
/// The number of points that count is known before any pixel is read. The rows are visited in bands that
/// spread over the grid from the beginning, so that a bad placement shows soon. Squares are integers: neither
/// the order nor the number of threads can change a sum.
class SampledComparison {
public:
  SampledComparison();
  ~SampledComparison();
  SampledComparison(SampledComparison&&) noexcept;

  /// Takes the memory for grids of up to this height. False when there is not enough.
  bool reserve(int gridHeight);

  /// Begins with another placement: an image and the mapping from the grid into it. Both the reference and
  /// the image are borrowed until the next call. Takes no memory.
  void start(const SampledReference& reference, const PairImage& image, const Affine16& m);

  /// Points of the grid that lie in both images, as PairDifference::count.
  std::uint64_t count() const noexcept { return m_count; }
  /// Number of bands of the grid.
  int bands() const noexcept { return m_bands; }

  /// Adds the squares of bands [begin, end) in their spread order to what was added before. Returns the sum;
  /// when it reaches `limit` the rest is left out, and only that it does so holds. Uses all threads when the
  /// grid is large.
  std::uint64_t add(int begin, int end, std::uint64_t limit = ~std::uint64_t{0});

private:
  std::uint64_t sumOfBand(int place) const;

  const SampledReference* m_reference = nullptr;
  std::unique_ptr<RowSpan[]> m_spans;
  std::unique_ptr<PairSide> m_side;
  std::uint64_t m_count = 0;
  std::uint64_t m_squares = 0;
  int m_bands = 0;
  int m_bandStep = 1;
};

} // namespace kernels
