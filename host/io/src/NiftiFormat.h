#pragma once

#include "Format.h"

namespace io {

/// NIfTI-1 and NIfTI-2: .nii, .nii.gz and pairs of .hdr and .img, in both byte orders.
///
/// Rows and slices keep the order of the file. The origin is the position of its first voxel in the file's
/// own axes (x to the right, y to the front, z up), from qform or else sform; directions that are turned or
/// mirrored are not kept, an origin is written back with axes along x, y and z. Scaled integers become
/// floating-point numbers. Writes NIfTI-1, and NIfTI-2 where a size does not fit into the former.
class NiftiFormat final : public Format {
public:
  const char* name() const noexcept override { return "NIfTI"; }
  std::vector<std::string> endings() const override { return {".nii", ".nii.gz"}; }
  bool claims(const std::string& path, std::span<const std::byte> head) const override;
  std::unique_ptr<VolumeReader> open(const std::string& path) const override;
  std::string cannotHold(const ZxLatticeShape& shape) const override;
  void write(const ZxSpatialData& data, const std::string& target,
             const std::string& temporary) const override;
};

} // namespace io
