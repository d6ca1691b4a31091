#pragma once

#include "RunProgram.h"
#include "zx/ZxField3.h"

#include <cstdint>
#include <string>
#include <vector>

namespace test {

/// A field of the given shape with values that differ everywhere, so that a swapped axis, a shifted row or a
/// dropped tail shows. Integers stay within +-2^24.
McHandle<ZxField3> noiseField(const ZxLatticeShape& shape);

/// All voxels, slice after slice.
std::string voxels(ZxSpatialData& data);
std::string voxelsOf(const std::string& path);

/// Makes a phantom with the program: a stack that can be aligned, small and quick.
void makePhantom(const std::string& path, int slices, int size, const std::vector<std::string>& more = {});

/// A label field: 1 in the upper left part of each slice, growing with the slice, else 0.
void writeLabels(const std::string& path, const ZxDims& dims);

/// A table of identity transforms.
std::string identityTable(int slices);

} // namespace test
