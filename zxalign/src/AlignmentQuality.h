#pragma once

#include "kernels/PairDifference.h"
#include "zxalign/SliceXForm.h"

#include <cstdint>

/// The quality that both the module and the evaluator give to the difference of two images.
///
/// 1 - sqrt(squares / (n * 255^2)) with n the compared values, and lowered by sqrt(2 * coverage) when the
/// overlap is less than half of smallerPixels, the smaller width times the smaller height. 0 without overlap.
float alignmentQuality(const kernels::PairDifference& difference, int channels, std::uint64_t smallerPixels);

/// The mapping into the image of a slice of this size in 16.16 fixed point, as the pair comparison walks it.
/// For placed see SliceXForm::getImageMatrix().
kernels::Affine16 inverse16(const SliceXForm& xform, int width, int height,
                            const std::optional<SliceXForm>& placed = {});
