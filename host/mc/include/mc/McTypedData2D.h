#pragma once

#include "mc/McPrimType.h"
#include "mc/McTypedElement.h"

#include <cstddef>
#include <memory>

/// An image of any primitive type with one or more values per pixel. Rows lie without padding.
class McTypedData2D {
public:
  McTypedData2D() = default;
  /// All values 0. Holds nothing (data() is null) when there is not enough memory or a size is not positive.
  McTypedData2D(int width, int height, McPrimType type, int numValues);

  int width() const noexcept { return m_width; }
  int height() const noexcept { return m_height; }
  McPrimType primType() const noexcept { return m_type; }
  int numValues() const noexcept { return m_numValues; }
  std::size_t pixelBytes() const noexcept;
  std::size_t rowBytes() const noexcept;

  unsigned char* data() noexcept { return m_data.get(); }
  const unsigned char* data() const noexcept { return m_data.get(); }
  /// y lies inside of the image.
  unsigned char* row(int y) noexcept { return m_data.get() + static_cast<std::size_t>(y) * rowBytes(); }
  const unsigned char* row(int y) const noexcept
  {
    return m_data.get() + static_cast<std::size_t>(y) * rowBytes();
  }
  McTypedElement at(int x, int y) const noexcept;
  /// Sets some pixels of a row to 0; firstX and count lie inside of it.
  void clear(int y, int firstX, int count) noexcept;
  /// Sets a row to 0.
  void clearRow(int y) noexcept { clear(y, 0, m_width); }
  /// Moves count pixels of a row from one column to another; the ranges may overlap.
  void movePixels(int y, int fromX, int toX, int count) noexcept;

private:
  int m_width = 0;
  int m_height = 0;
  McPrimType m_type = McPrimType::UInt8;
  int m_numValues = 1;
  std::unique_ptr<unsigned char[]> m_data;
};
