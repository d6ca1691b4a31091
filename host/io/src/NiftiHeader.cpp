#include "NiftiHeader.h"

#include "FileError.h"
#include "mc/McRound.h"

#include <cmath>

namespace io {

namespace {

constexpr NiftiLayout layouts[] = {
    {.version = 1,
     .bytes = 348,
     .sizeBytes = 2,
     .realBytes = 4,
     .codeBytes = 2,
     .unitBytes = 1,
     .offsetBytes = 4,
     .magic = 344,
     .sizes = 40,
     .type = 70,
     .bits = 72,
     .spacings = 76,
     .dataOffset = 108,
     .slope = 112,
     .intercept = 116,
     .units = 123,
     .qformCode = 252,
     .sformCode = 254,
     .qoffset = 268,
     .srow = 280},
    {.version = 2,
     .bytes = 540,
     .sizeBytes = 8,
     .realBytes = 8,
     .codeBytes = 4,
     .unitBytes = 4,
     .offsetBytes = 8,
     .magic = 4,
     .sizes = 16,
     .type = 12,
     .bits = 14,
     .spacings = 104,
     .dataOffset = 168,
     .slope = 176,
     .intercept = 184,
     .units = 500,
     .qformCode = 344,
     .sformCode = 348,
     .qoffset = 376,
     .srow = 400},
};

} // namespace

NiftiHeader::NiftiHeader(int version) : NiftiHeader(layouts[version - 1])
{
  m_header.put<std::int32_t>(0, static_cast<std::int32_t>(m_layout->bytes));
  const std::string magic = version == 1 ? std::string("n+1\0", 4) : std::string("n+2\0\r\n\x1a\n", 8);
  m_header.putText(m_layout->magic, magic);
}

NiftiHeader NiftiHeader::read(const std::string& path, Packing packing)
{
  BinaryHeader start(4);
  const std::size_t got = openBytes(path, 0, packing)->read(start.data(), 4);
  if (got == 0) cannotRead(path, "the file is empty");
  if (got < 4) cannotRead(path, "the file is too short for a NIfTI header");
  for (const bool swapped : {false, true}) {
    start.setSwapped(swapped);
    for (const NiftiLayout& layout : layouts) {
      if (start.get<std::uint32_t>(0) != layout.bytes) continue;
      NiftiHeader header(layout);
      header.m_header.setSwapped(swapped);
      const std::unique_ptr<ByteStream> file = openBytes(path, 0, packing);
      if (file->read(header.m_header.data(), layout.bytes) != layout.bytes)
        cannotRead(path, "the file is too short for a NIfTI header");
      if (!header.hasMagic())
        cannotRead(path, "its NIfTI mark is missing (Analyze 7.5 files are not supported)");
      if (!header.isSingleFile()) file->finish(); // else whoever reads the voxels does
      return header;
    }
  }
  cannotRead(path, "it does not begin like a NIfTI file");
}

bool NiftiHeader::hasMagic() const
{
  const std::string digit = std::to_string(m_layout->version);
  const std::string mark = m_header.text(m_layout->magic, 4);
  return mark == "n+" + digit + '\0' || mark == "ni" + digit + '\0';
}

std::int64_t NiftiHeader::integer(std::size_t place, std::size_t bytes) const noexcept
{
  switch (bytes) {
  case 1:
    return m_header.get<std::int8_t>(place);
  case 2:
    return m_header.get<std::int16_t>(place);
  case 4:
    return m_header.get<std::int32_t>(place);
  default:
    return m_header.get<std::int64_t>(place);
  }
}

std::int64_t NiftiHeader::size(std::size_t i) const noexcept
{
  return integer(m_layout->sizes + i * m_layout->sizeBytes, m_layout->sizeBytes);
}

double NiftiHeader::real(std::size_t place, std::size_t i) const noexcept
{
  if (m_layout->realBytes == 4) return m_header.get<float>(place + 4 * i);
  return m_header.get<double>(place + 8 * i);
}

std::int64_t NiftiHeader::dataOffset() const noexcept
{
  if (m_layout->version == 2) return integer(m_layout->dataOffset, 8);
  const double offset = real(m_layout->dataOffset);
  return std::isfinite(offset) && offset >= 0.0 ? mc::truncToInt64(offset) : -1;
}

void NiftiHeader::putInteger(std::size_t place, std::size_t bytes, std::int64_t value) noexcept
{
  switch (bytes) {
  case 1:
    return m_header.put(place, static_cast<std::int8_t>(value));
  case 2:
    return m_header.put(place, static_cast<std::int16_t>(value));
  case 4:
    return m_header.put(place, static_cast<std::int32_t>(value));
  default:
    return m_header.put(place, value);
  }
}

void NiftiHeader::putSize(std::size_t i, std::int64_t value) noexcept
{
  putInteger(m_layout->sizes + i * m_layout->sizeBytes, m_layout->sizeBytes, value);
}

void NiftiHeader::putReal(std::size_t place, std::size_t i, double value) noexcept
{
  if (m_layout->realBytes == 4)
    m_header.put(place + 4 * i, static_cast<float>(value));
  else
    m_header.put(place + 8 * i, value);
}

} // namespace io
