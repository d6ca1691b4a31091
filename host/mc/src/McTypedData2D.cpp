#include "mc/McTypedData2D.h"

#include <cstring>
#include <limits>
#include <new>

McTypedData2D::McTypedData2D(int width, int height, McPrimType type, int numValues)
  : m_width(width), m_height(height), m_type(type), m_numValues(numValues)
{
  if (width <= 0 || height <= 0 || numValues <= 0) return;
  const std::size_t rows = static_cast<std::size_t>(height);
  if (rowBytes() > std::numeric_limits<std::size_t>::max() / rows) return;
  m_data.reset(new (std::nothrow) unsigned char[rowBytes() * rows]());
}

std::size_t McTypedData2D::pixelBytes() const noexcept
{
  return mcSizeOf(m_type) * static_cast<std::size_t>(m_numValues);
}

std::size_t McTypedData2D::rowBytes() const noexcept
{
  return pixelBytes() * static_cast<std::size_t>(m_width);
}

McTypedElement McTypedData2D::at(int x, int y) const noexcept
{
  return {row(y) + pixelBytes() * static_cast<std::size_t>(x), m_type, m_numValues};
}

void McTypedData2D::clear(int y, int firstX, int count) noexcept
{
  std::memset(row(y) + pixelBytes() * static_cast<std::size_t>(firstX), 0,
              pixelBytes() * static_cast<std::size_t>(count));
}

void McTypedData2D::movePixels(int y, int fromX, int toX, int count) noexcept
{
  std::memmove(row(y) + pixelBytes() * static_cast<std::size_t>(toX),
               row(y) + pixelBytes() * static_cast<std::size_t>(fromX),
               pixelBytes() * static_cast<std::size_t>(count));
}
