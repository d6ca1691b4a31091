#pragma once

#include "zxalign/ZxAlignControl.h"

#include <string>
#include <vector>

namespace cli {

/// Reads the landmarks of a stack of that many slices from a table "slice,index,x,y": pixels of the slice, x
/// to the right, y downwards, whole numbers. Slices and indices count from 0; rows may stand in any order,
/// and lines that begin with '#' are remarks.
///
/// Throws io::Error unless the table names every index on every slice, each once.
std::vector<std::vector<ZxAlignPoint>> readLandmarkTable(const std::string& path, int slices);

} // namespace cli
