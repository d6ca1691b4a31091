#pragma once

#include "Format.h"

namespace io {

/// MRC volumes and image stacks, also packed with gzip.
///
/// Reads the modes 0, 1, 2, 6, 12 and 16 in both byte orders. Bytes are signed, as the format says, unless
/// the header bears the IMOD stamp and says that they are not. Writes the modes 1, 2 and 6; bytes, for which
/// the format has no type that all programs agree on, are written in 16 bits with a label that brings them
/// back as bytes. Lengths in the header are in Angstrom: where the unit of a volume is known they are
/// converted.
class MrcFormat final : public Format {
public:
  const char* name() const noexcept override { return "MRC"; }
  std::vector<std::string> endings() const override;
  bool claims(const std::string& path, std::span<const std::byte> head) const override;
  std::unique_ptr<VolumeReader> open(const std::string& path) const override;
  std::string cannotHold(const ZxLatticeShape& shape) const override;
  void write(const ZxSpatialData& data, const std::string& target,
             const std::string& temporary) const override;
};

} // namespace io
