#pragma once

#include "zx/ZxData.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

/// Files that an earlier call has left unfinished. All functions throw Error.
namespace io {

/// The first bytes of a file, as many as there are up to size; none when there is no such file.
std::vector<std::byte> beginningOf(const std::string& path, std::size_t size);

/// Brings a file to a header and whole slices of equal size. Where it begins with the header the whole slices
/// behind it are kept, up to their number in the volume, and what follows them is cut off; else it is started
/// anew with the header. Returns the number of slices that are there.
int keepWholeSlices(const std::string& path, std::span<const std::byte> header, std::uint64_t sliceBytes,
                    int slices);

/// Cuts a file off behind so many bytes.
void cutOff(const std::string& path, std::uint64_t bytes);

/// Writes over the bytes of a file from an offset on; messages name the file as target.
void overwrite(const std::string& path, const std::string& target, std::uint64_t offset,
               std::span<const std::byte> bytes);

/// Writes a volume straight into a file behind its header, taking over the whole slices that are there.
/// Returns their number.
int continueVoxels(const ZxSpatialData& data, const std::string& path, std::span<const std::byte> header);

/// The same for a header and its voxels in a file of their own. The header stands there first: it says whose
/// the voxels beside it are.
int continueVoxelsBeside(const ZxSpatialData& data, const std::string& headerPath, const std::string& header,
                         const std::string& voxelsPath);

} // namespace io
