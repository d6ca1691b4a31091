#pragma once

#include "mc/McDArray.h"
#include "mc/McPrimType.h"

#include <cstddef>

/// The value that most pixels of a slice have.
///
/// 4 channels of 8 bits: the most frequent colour, of equally frequent ones the smallest as a number with the
/// first channel in the highest byte. 1 channel: the fullest bin of a histogram with one bin per unit from
/// the smallest to the largest value, the first of equally full ones. Any other number of channels leaves
/// color as it is.
void mostFrequentColor(const void* data, std::size_t pixels, int channels, McPrimType type,
                       McDArray<float>& color);
