#pragma once

#include "Format.h"

namespace io {

/// NRRD, headers with their data and detached ones. Keeps parameters as key/value pairs.
///
/// Reads the versions 1 to 5 with raw, gzip, bzip2, text and hex data. Writes raw data in this machine's byte
/// order: .nrrd in one file, .nhdr beside a .raw file.
class NrrdFormat final : public Format {
public:
  const char* name() const noexcept override { return "NRRD"; }
  std::vector<std::string> endings() const override { return {".nrrd", ".nhdr"}; }
  bool claims(const std::string& path, std::span<const std::byte> head) const override;
  std::unique_ptr<VolumeReader> open(const std::string& path) const override;
  std::string cannotHold(const ZxLatticeShape& shape) const override;
  bool holdsParameters() const noexcept override { return true; }
  void write(const ZxSpatialData& data, const std::string& target,
             const std::string& temporary) const override;
};

} // namespace io
