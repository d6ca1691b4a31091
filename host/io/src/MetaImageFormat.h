#pragma once

#include "Format.h"

namespace io {

/// MetaImage: .mha with its data, .mhd beside a data file, a pattern or a list of them.
///
/// Reads raw, zlib-packed and text data. Writes raw data in this machine's byte order, .mha in one file, .mhd
/// beside a .raw file. Parameters are fields of their own in the header, in lines that other readers take.
class MetaImageFormat final : public Format {
public:
  const char* name() const noexcept override { return "MetaImage"; }
  std::vector<std::string> endings() const override { return {".mha", ".mhd"}; }
  bool claims(const std::string& path, std::span<const std::byte> head) const override;
  std::unique_ptr<VolumeReader> open(const std::string& path) const override;
  std::string cannotHold(const ZxLatticeShape& shape) const override;
  bool holdsParameters() const noexcept override { return true; }
  void write(const ZxSpatialData& data, const std::string& target,
             const std::string& temporary) const override;
};

} // namespace io
