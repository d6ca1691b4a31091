#pragma once

#include "zx/ZxLattice.h"

#include <string>

namespace io {

/// What the pages of a file that writeTiff() writes have in common.
struct TiffPlan {
  ZxLatticeShape shape;
  std::string description; ///< of the first page
};

/// Cuts a TIFF file that was not finished off behind its last whole page. Pages count as whole when they hold
/// all strips of a slice of the plan. Returns their number, at most that of the slices; the file is left as
/// it is when there is none, or no such file. Throws Error when it cannot be changed.
int keepWholePages(const std::string& path, const TiffPlan& plan);

} // namespace io
