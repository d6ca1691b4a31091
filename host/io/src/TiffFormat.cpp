#include "Format.h"
#include "TiffReader.h"
#include "TiffWriter.h"

#include <array>
#include <cstring>

namespace io {
namespace {

class TiffFormat final : public Format {
public:
  const char* name() const noexcept override { return "TIFF"; }
  std::vector<std::string> endings() const override { return {".tif", ".tiff"}; }
  bool claims(const std::string& path, std::span<const std::byte> head) const override;
  std::unique_ptr<VolumeReader> open(const std::string& path) const override
  {
    return std::make_unique<TiffReader>(path);
  }
  std::string cannotHold(const ZxLatticeShape& shape) const override;
  void write(const ZxSpatialData& data, const std::string& target,
             const std::string& temporary) const override
  {
    writeTiff(data, target, temporary);
  }
  int continueWriting(const ZxSpatialData& data, const std::string& path) const override
  {
    return continueTiff(data, path);
  }
};

bool TiffFormat::claims(const std::string&, std::span<const std::byte> head) const
{
  constexpr std::array<char[5], 4> beginnings = {"II*\0", "MM\0*", "II+\0", "MM\0+"};
  for (const auto& beginning : beginnings) {
    if (head.size() >= 4 && std::memcmp(head.data(), beginning, 4) == 0) return true;
  }
  return false;
}

std::string TiffFormat::cannotHold(const ZxLatticeShape& shape) const
{
  const bool colour = shape.numDataVars == 4 && shape.primType == McPrimType::UInt8;
  if (shape.numDataVars == 1 || colour) return {};
  return "TIFF files are written with one value a voxel or four of 8 bits";
}

} // namespace

std::unique_ptr<Format> makeTiffFormat() { return std::make_unique<TiffFormat>(); }

} // namespace io
