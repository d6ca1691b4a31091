#pragma once

#include "SliceImage.h"

namespace robust {

/// A slice at a whole fraction of its size, made of the means of whole blocks: how large slices are worked
/// on, so that their memory is bounded.
class ReducedSlice {
public:
  /// Divides the size by the smallest power of two with which the longer side is at most mostSide. A slice
  /// that is small enough is taken as it is; its samples have to stay. What is left over at the right and
  /// below is left out, and a block of which a pixel is masked out is masked out.
  ReducedSlice(const SliceImage& slice, int mostSide);

  const SliceImage& image() const noexcept { return m_image; }
  /// Size of a pixel in pixels of the slice.
  int factor() const noexcept { return m_factor; }

private:
  void averageRow(const SliceImage& slice, int y);
  void maskRow(const SliceImage& slice, int y);

  int m_factor = 1;
  std::vector<unsigned char> m_samples;
  SliceImage m_image; ///< its samples are m_samples when the slice was reduced
};

} // namespace robust
