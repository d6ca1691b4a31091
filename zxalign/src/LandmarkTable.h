#pragma once

#include "zxalign/ZxAlignControl.h"

#include <string>
#include <vector>

/// Reads the landmarks of a stack of that many slices from a table "slice,index,x,y": pixels of the slice, x
/// to the right, y downwards, whole numbers. Slices and indices count from 0; rows may stand in any order.
///
/// Returns an empty string and one list a slice, or one sentence that says what is wrong, unless the table
/// names every index on every slice, each once.
std::string readLandmarkTable(const std::string& path, int slices,
                              std::vector<std::vector<ZxAlignPoint>>& landmarks);
