#pragma once

#include "zx/ZxLattice.h"
#include "zxalign/ZxAlignControl.h"

#include <span>
#include <string>
#include <vector>

namespace cli {

/// What the picture of an alignment shows: the stack cut along x and along y, before and after, and the
/// quality of every pair of neighbours.
struct PictureInput {
  std::string title;           ///< name of the input, without its folder
  ZxLattice* before = nullptr; ///< the input; not owned
  /// The aligned volume; not owned. Null where none was made: then the cuts are taken from the input through
  /// the transforms, nearest neighbour, in its own size.
  ZxLattice* after = nullptr;
  std::span<const ZxAlignTransform> transforms; ///< of all slices; used where after is null
  std::span<const ZxAlignPairResult> pairs;     ///< in any order
  /// Grey values shown black and white; where both are equal they are chosen from the values of the cuts.
  float windowMin = 0.0f;
  float windowMax = 0.0f;
};

/// Paints the picture and writes it as PNG, beside its target and renamed into place. Throws io::Error.
void writePicture(const PictureInput& input, const std::string& path);

} // namespace cli
