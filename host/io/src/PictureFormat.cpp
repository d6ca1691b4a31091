#include "FileError.h"
#include "Format.h"
#include "PictureHeader.h"
#include "SliceWriter.h"
#include "StoredVoxels.h"

#include <itkBMPImageIO.h>
#include <itkJPEGImageIO.h>
#include <itkPNGImageIO.h>

#include <algorithm>

namespace io {
namespace {

itk::ImageIOBase::Pointer makeDecoder(PictureKind kind)
{
  itk::Object::GlobalWarningDisplayOff(); // Its warnings would be printed.
  switch (kind) {
  case PictureKind::Png:
    return itk::PNGImageIO::New().GetPointer();
  case PictureKind::Jpeg:
    return itk::JPEGImageIO::New().GetPointer();
  default:
    return itk::BMPImageIO::New().GetPointer();
  }
}

const char* nameOf(PictureKind kind)
{
  switch (kind) {
  case PictureKind::Png:
    return "PNG";
  case PictureKind::Jpeg:
    return "JPEG";
  default:
    return "BMP";
  }
}

class PictureReader final : public VolumeReader {
public:
  explicit PictureReader(const std::string& path);
  void readSlice(int k, void* dst) override;

private:
  void findType();

  std::string m_path;
  PictureHeader m_header;
  itk::ImageIOBase::Pointer m_decoder;
  StoredVoxels m_voxels;
};

PictureReader::PictureReader(const std::string& path)
  : m_path(path), m_header(PictureHeader::read(path)), m_decoder(makeDecoder(m_header.kind))
{
  try {
    m_decoder->SetFileName(path);
    m_decoder->ReadImageInformation();
  } catch (const itk::ExceptionObject&) {
    cannotRead(path, "its header is damaged");
  }
  const auto width = static_cast<std::size_t>(m_header.width);
  if (m_decoder->GetDimensions(0) != width ||
      m_decoder->GetDimensions(1) != static_cast<std::size_t>(m_header.height)) {
    cannotRead(path, "its header is damaged");
  }
  m_info.format = nameOf(m_header.kind);
  m_info.shape.dims = {m_header.width, m_header.height, 1};
  findType();
}

void PictureReader::findType()
{
  const auto component = m_decoder->GetComponentType();
  m_voxels.type = component == itk::ImageIOBase::USHORT ? StoredType::UInt16 : StoredType::UInt8;
  m_voxels.channels = static_cast<int>(m_decoder->GetNumberOfComponents());
  const bool known = component == itk::ImageIOBase::USHORT || component == itk::ImageIOBase::UCHAR;
  const bool grey = m_voxels.channels == 1;
  const bool colour =
      m_voxels.type == StoredType::UInt8 && (m_voxels.channels == 3 || m_voxels.channels == 4);
  m_info.storedType = m_voxels.channels == 2 ? "grey with alpha " + m_voxels.describe() : m_voxels.describe();
  if (!known || (!grey && !colour)) {
    cannotRead(m_path, "pixels of the type " + m_info.storedType + " are not supported");
  }
  m_info.shape.numDataVars = grey ? 1 : 4;
  m_info.shape.primType =
      grey && m_voxels.type == StoredType::UInt16 ? McPrimType::UInt16 : McPrimType::UInt8;
}

void PictureReader::readSlice(int, void* dst)
{
  itk::ImageIORegion region(2);
  region.SetSize(0, static_cast<std::size_t>(m_header.width));
  region.SetSize(1, static_cast<std::size_t>(m_header.height));
  m_decoder->SetIORegion(region);
  const std::size_t pixels = m_info.shape.dims.slicePixels();
  std::vector<std::byte> stored(pixels * m_voxels.bytes());
  try {
    m_decoder->Read(stored.data());
  } catch (const itk::ExceptionObject&) {
    cannotRead(m_path, "its data are damaged");
  }
  m_voxels.convert(stored.data(), pixels, m_info.shape.primType, dst);
  auto* out = static_cast<std::byte*>(dst);
  if (m_header.alphaIsUnused && m_voxels.channels == 4) {
    for (std::size_t i = 0; i < pixels; ++i) out[4 * i + 3] = std::byte{255};
  }
}

class PictureFormat final : public Format {
public:
  const char* name() const noexcept override { return "PNG"; }
  /// JPEG and BMP are not written: one changes the values, the other holds no 16 bits.
  std::vector<std::string> endings() const override { return {".png"}; }
  bool claims(const std::string&, std::span<const std::byte> head) const override
  {
    return pictureKindOf(head) != PictureKind::None;
  }
  std::unique_ptr<VolumeReader> open(const std::string& path) const override
  {
    return std::make_unique<PictureReader>(path);
  }
  std::string cannotHold(const ZxLatticeShape& shape) const override;
  void write(const ZxSpatialData& data, const std::string& target,
             const std::string& temporary) const override;
};

std::string PictureFormat::cannotHold(const ZxLatticeShape& shape) const
{
  if (shape.dims.slices != 1)
    return "a PNG picture holds one slice; give a name with a number like slice_%04d.png";
  const bool grey = shape.numDataVars == 1;
  if (shape.primType == McPrimType::UInt8 && (grey || shape.numDataVars == 4)) return {};
  if (shape.primType == McPrimType::UInt16 && grey) return {};
  return std::string("PNG pictures cannot hold the type ") + mcNameOf(shape.primType);
}

void writePng(const ZxLatticeShape& shape, const std::byte* slice, const std::string& path)
{
  const auto encoder = itk::PNGImageIO::New();
  const auto width = static_cast<std::size_t>(shape.dims.width);
  const auto height = static_cast<std::size_t>(shape.dims.height);
  itk::ImageIORegion region(2);
  region.SetSize(0, width);
  region.SetSize(1, height);
  encoder->SetFileName(path);
  encoder->SetNumberOfDimensions(2);
  encoder->SetDimensions(0, width);
  encoder->SetDimensions(1, height);
  encoder->SetIORegion(region);
  encoder->SetNumberOfComponents(static_cast<unsigned>(shape.numDataVars));
  encoder->SetPixelType(shape.numDataVars == 4 ? itk::IOPixelEnum::RGBA : itk::IOPixelEnum::SCALAR);
  encoder->SetComponentType(shape.primType == McPrimType::UInt8 ? itk::IOComponentEnum::UCHAR
                                                                : itk::IOComponentEnum::USHORT);
  encoder->SetUseCompression(true);
  encoder->SetCompressionLevel(4);
  encoder->Write(slice);
}

void PictureFormat::write(const ZxSpatialData& data, const std::string& target,
                          const std::string& temporary) const
{
  const ZxLatticeShape& shape = data.getLattice()->shape();
  forEachSlice(data, target, [&](std::span<const std::byte> slice) {
    try {
      writePng(shape, slice.data(), temporary);
      PictureHeader::read(temporary); // The encoder does not notice when the last bytes cannot be stored.
    } catch (const std::exception&) {
      cannotWrite(target, "the disk is full or cannot be written to");
    }
  });
}

} // namespace

std::unique_ptr<Format> makePictureFormat() { return std::make_unique<PictureFormat>(); }

} // namespace io
