#pragma once

#include "zx/ZxBox3.h"
#include "zxalign/ZxAlignControl.h"

#include <span>
#include <string>
#include <vector>

/// The transforms of a stack as a table for people, scripts and spreadsheets.
///
/// Lines that begin with '#' state units, direction and centre. Then follows the header row
/// "slice,tx,ty,angle_deg,flip" and one row a slice, in the order of the slices from 0: the forward mapping
/// of the slice into the aligned frame. Numbers read back exactly.
namespace cli {

/// The table of slices of width x height pixels.
std::string transformTableText(std::span<const ZxAlignTransform> transforms, int width, int height);

/// Writes the table to a file. What stood there is replaced. Throws io::Error.
void writeTransformTable(std::span<const ZxAlignTransform> transforms, int width, int height,
                         const std::string& path);

/// The size of the slices that a table is for, 0 x 0 where its remarks do not state it. Slices are not
/// counted.
ZxDims statedSize(const std::string& path);

/// Reads a table for slices of width x height pixels (0: of any size). Throws io::Error when its remarks
/// state another size, and, naming the line, where a row is not what is expected: slices not from 0 in order,
/// a missing or additional field, a number that is none or not finite, a flip other than 0 and 1.
std::vector<ZxAlignTransform> readTransformTable(const std::string& path, int width = 0, int height = 0);

} // namespace cli
