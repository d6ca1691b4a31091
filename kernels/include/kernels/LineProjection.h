#pragma once

namespace kernels {

/// Points on a straight line through a slice: (x + k stepX, y + k stepY) for k = 0 ... steps, in pixels.
/// steps is -1 for a line that misses the slice.
struct SampleLine {
  double x = 0.0, y = 0.0, stepX = 0.0, stepY = 0.0;
  int steps = -1;
};

/// Points from (x1, y1) to (x2, y2), both included, in n = floor(length / 0.9) equal steps, at least one:
/// none is longer than 1.8 pixels, and none of a segment of whole length longer than 1.
SampleLine sampleSegment(double x1, double y1, double x2, double y2);

/// Maximum-intensity projection of a slice along lines: out[i] becomes the voxel of greatest length that line
/// i touches, the first of them on ties; 0 when all are 0 or the line misses the slice.
///
/// The voxel of a point is (trunc(x + 0.5), trunc(y + 0.5)). A voxel is `channels` values; its length is that
/// of their vector, the absolute value for one, compared by its square for more. One that is not a number is
/// passed over. The slice holds width x height voxels, out one for each of the count lines. A line with an
/// end that is not in the slice by this rule counts as missing it. Defined for std::uint8_t, std::int16_t,
/// std::int32_t, float, double and std::uint16_t. Uses all threads.
template <class T>
void projectLines(const T* slice, int width, int height, int channels, const SampleLine* lines, int count,
                  T* out);

} // namespace kernels
