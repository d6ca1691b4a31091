#pragma once

#include "kernels/Affine.h"
#include "kernels/PairDifference.h"
#include "kernels/RowSpan.h"

#include <cstdint>

namespace kernels {

/// Narrows the spans of the rows rowBegin ... rowBegin + rows - 1 of the grid to the columns whose points lie
/// in the image. Exact; the positions between the ends of a span need no test.
void clipToImage(const PairImage& image, const Affine16& m, int rowBegin, int rows, RowSpan* spans);

/// Number of points in these spans.
std::uint64_t countOf(const RowSpan* spans, int rows);

} // namespace kernels
