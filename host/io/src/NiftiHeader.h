#pragma once

#include "BinaryHeader.h"
#include "ByteStream.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace io {

/// Where the fields of a version of the header stand, and how many bytes a number of each sort has.
struct NiftiLayout {
  int version;
  std::size_t bytes;
  std::size_t sizeBytes, realBytes, codeBytes, unitBytes, offsetBytes;
  std::size_t magic, sizes, type, bits, spacings, dataOffset, slope, intercept, units, qformCode, sformCode,
      qoffset, srow;
};

/// The binary header of a NIfTI file of either version.
class NiftiHeader {
public:
  /// Reads a header. Throws Error for a file that is none.
  static NiftiHeader read(const std::string& path, Packing packing);
  /// An empty header to be filled in and written.
  explicit NiftiHeader(int version);

  int version() const noexcept { return m_layout->version; }
  const NiftiLayout& at() const noexcept { return *m_layout; }
  bool isSwapped() const noexcept { return m_header.isSwapped(); }
  const std::vector<std::byte>& bytes() const noexcept { return m_header.bytes(); }
  /// True when the voxels follow in the same file.
  bool isSingleFile() const { return m_header.text(m_layout->magic + 1, 1) == "+"; }

  std::int64_t integer(std::size_t place, std::size_t bytes) const noexcept;
  /// Entry i of "dim": 0 is the number of dimensions, 1 the width.
  std::int64_t size(std::size_t i) const noexcept;
  /// Entry i of a field of reals.
  double real(std::size_t place, std::size_t i = 0) const noexcept;
  /// Where the voxels begin in their file; -1 when that is no sensible number.
  std::int64_t dataOffset() const noexcept;

  void putInteger(std::size_t place, std::size_t bytes, std::int64_t value) noexcept;
  void putSize(std::size_t i, std::int64_t value) noexcept;
  void putReal(std::size_t place, std::size_t i, double value) noexcept;

private:
  explicit NiftiHeader(const NiftiLayout& layout) : m_layout(&layout), m_header(layout.bytes) {}
  bool hasMagic() const;

  const NiftiLayout* m_layout;
  BinaryHeader m_header;
};

} // namespace io
