#pragma once

#include "kernels/Affine.h"

#include <cstdint>

namespace kernels {

enum class Interpolation : std::uint8_t { Nearest, Linear };

/// Where one slice lies in its output: the input frame of width x height pixels starts at column `left` and
/// row `top` of an output of outWidth x outHeight pixels. Both may be negative: then the output is cut out of
/// the input.
///
/// Output pixel (i, j) is the position (i - left, j - top), which `inverse` maps into the slice.
struct ResampleFrame {
  int width = 0;
  int height = 0;
  int outWidth = 0;
  int outHeight = 0;
  int left = 0;
  int top = 0;
  Affine inverse;
};

/// Resamples the output rows rowBegin ... rowEnd - 1 of one slice.
///
/// source holds width x height and output outWidth x outHeight pixels of `channels` interleaved values;
/// background holds `channels` values.
/// - Nearest: the pixel (floor(sx + 0.5), floor(sy + 0.5)), outside the slice the background.
/// - Linear: with ix = floor(sx), iy = floor(sy) inside 0 <= ix < width - 1, 0 <= iy < height - 1 the sum of
///   the four neighbours, weighted in float; elsewhere the background. Needing both neighbours, it never
///   samples the last column and row; they become background on purpose.
///
/// Every value passes through float. Integers are stored by rounding to the nearest, ties to even, and
/// clamped; float is stored as it is, and double receives the float. Positions that are not finite are
/// outside. Defined for std::uint8_t, std::int16_t, std::int32_t, float, double and std::uint16_t. Uses all
/// threads; the caller cuts the rows into bands where it wants to report progress.
template <class T>
void resampleRows(const ResampleFrame& frame, const T* source, int channels, Interpolation interpolation,
                  const float* background, T* output, int rowBegin, int rowEnd);

/// As resampleRows with nearest neighbour for labels: one integer a pixel, copied unchanged; 0 outside.
/// Defined for std::uint8_t, std::uint16_t, std::int16_t and std::int32_t.
template <class T>
void resampleLabelRows(const ResampleFrame& frame, const T* source, T* output, int rowBegin, int rowEnd);

} // namespace kernels
