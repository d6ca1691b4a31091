#pragma once

#include "Pyramid.h"
#include "RigidMotion.h"

#include <filesystem>
#include <string>
#include <vector>

namespace bench {

/// The slices of a volume as the method "robust" sees them, and where they truly lie.
struct Stack {
  std::string name;
  int width = 0, height = 0, channels = 1, slices = 0;
  std::vector<unsigned char> samples;
  std::vector<robust::RigidMotion> truth; ///< from the slice into the aligned frame; empty when unknown
  unsigned char background = 0;

  std::size_t sliceBytes() const
  {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
           static_cast<std::size_t>(channels);
  }
  /// The samples of a slice; they belong to the stack.
  robust::SliceImage image(int slice) const
  {
    return {width, height, channels, samples.data() + static_cast<std::size_t>(slice) * sliceBytes(), {}};
  }
  /// How a slice truly lies on another one.
  robust::RigidMotion motion(int reference, int moved) const
  {
    return truth[static_cast<std::size_t>(reference)].inverse().after(truth[static_cast<std::size_t>(moved)]);
  }
};

/// A volume or a folder of slices, with the truth of the description beside it; an empty stack when it is not
/// there. 16 bits are mapped between the least and the greatest value.
Stack readStack(const std::filesystem::path& path);
/// Those of a list of names that are there.
std::vector<Stack> readStacks(const std::filesystem::path& folder, const std::vector<std::string>& names);
/// The displaced volumes whose truth is exact.
std::vector<std::string> volumesWithTruth();

/// Standard deviation of the samples of a slice.
double deviationOf(const Stack& stack, int slice);

/// A slice of a stack seen through a motion, as a stack of one slice: what the new slice shows at p lies at
/// motion(p) of the old one. Linear between pixels, the background outside; noise of a standard deviation is
/// added.
Stack movedSlice(const Stack& stack, int slice, const robust::RigidMotion& motion, double noise,
                 unsigned seed);

} // namespace bench
