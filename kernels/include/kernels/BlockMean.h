#pragma once

namespace kernels {

/// Reduces an image of any type with interleaved channels by whole blocks of factor x factor pixels.
///
/// dst receives (width / factor) x (height / factor) pixels, per channel the mean of each block; blocks that
/// do not fit are dropped. Of integers it is their exact sum divided by factor^2, truncated towards zero (of
/// 8 bits: blockAverage()). Of float and double the sum is made in double, row after row and from left to
/// right in each, and divided; the quotient is narrowed to T. Factors of 1 to 65,535; dst and src do not
/// overlap. Defined for std::uint8_t, std::int16_t, std::uint16_t, std::int32_t, float and double. Uses all
/// threads.
template <class T>
void blockMean(const T* src, int width, int height, int channels, int factor, T* dst);

/// The same for labels, which have no mean: each block becomes the pixel (factor / 2, factor / 2) of it, its
/// centre or, where the factor is even, the one below and to the right of it. One value a pixel.
template <class T>
void blockCentre(const T* src, int width, int height, int factor, T* dst);

} // namespace kernels
