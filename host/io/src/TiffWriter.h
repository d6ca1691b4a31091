#pragma once

#include "zx/ZxData.h"

#include <string>

namespace io {

/// Writes a volume as a TIFF file of uncompressed pages, as BigTIFF when it would pass 4 GB. The description
/// of the first page is that of ImageJ, so that voxel size and unit are found by other programs. Messages
/// name the file as target. Throws Error.
void writeTiff(const ZxSpatialData& data, const std::string& target, const std::string& path);

/// Writes it straight under its name behind the whole pages that an earlier call has left there. Returns
/// their number. Throws Error.
int continueTiff(const ZxSpatialData& data, const std::string& path);

} // namespace io
