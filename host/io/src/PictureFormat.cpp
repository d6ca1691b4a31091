#include "BmpReader.h"
#include "FileError.h"
#include "Format.h"
#include "FormatNames.h"
#include "JpegReader.h"
#include "PngReader.h"
#include "PngWriter.h"
#include "SliceWriter.h"

#include <fstream>
#include <string_view>

namespace io {
namespace {

constexpr std::string_view pngStart = "\x89PNG\r\n\x1A\n";
constexpr std::string_view jpegStart = "\xFF\xD8\xFF";
constexpr std::string_view bmpStart = "BM";

class PictureFormat final : public Format {
public:
  const char* name() const noexcept override { return "PNG"; }
  /// JPEG and BMP are not written: one changes the values, the other holds no 16 bits.
  std::vector<std::string> endings() const override { return {".png"}; }
  bool claims(const std::string&, std::span<const std::byte> head) const override
  {
    return beginsWith(head, pngStart) || beginsWith(head, jpegStart) || beginsWith(head, bmpStart);
  }
  std::unique_ptr<VolumeReader> open(const std::string& path) const override;
  std::string cannotHold(const ZxLatticeShape& shape) const override;
  void write(const ZxSpatialData& data, const std::string& target,
             const std::string& temporary) const override
  {
    const ZxLatticeShape& shape = data.getLattice()->shape();
    forEachSlice(data, target,
                 [&](std::span<const std::byte> slice) { writePng(shape, slice, target, temporary); });
  }
};

std::unique_ptr<VolumeReader> PictureFormat::open(const std::string& path) const
{
  std::byte first{};
  std::ifstream(path, std::ios::binary).read(reinterpret_cast<char*>(&first), 1);
  if (first == static_cast<std::byte>(pngStart[0])) return std::make_unique<PngReader>(path);
  if (first == static_cast<std::byte>(jpegStart[0])) return std::make_unique<JpegReader>(path);
  return std::make_unique<BmpReader>(path);
}

std::string PictureFormat::cannotHold(const ZxLatticeShape& shape) const
{
  if (shape.dims.slices != 1)
    return "a PNG picture holds one slice; give a name with a number like slice_%04d.png";
  const bool grey = shape.numDataVars == 1;
  if (shape.primType == McPrimType::UInt8 && (grey || shape.numDataVars == 4)) return {};
  if (shape.primType == McPrimType::UInt16 && grey) return {};
  return std::string("PNG pictures cannot hold the type ") + mcNameOf(shape.primType);
}

} // namespace

std::unique_ptr<Format> makePictureFormat() { return std::make_unique<PictureFormat>(); }

} // namespace io
