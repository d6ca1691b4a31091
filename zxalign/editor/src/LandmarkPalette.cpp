#include "LandmarkPalette.h"

namespace {

QColor hueOf(std::size_t step) { return QColor::fromHsv(static_cast<int>(step * 37 % 360), 255, 255); }

} // namespace

void LandmarkPalette::buildIfEmpty(std::size_t count)
{
  if (!m_colors.isEmpty()) return;
  m_colors = {Qt::red,       Qt::yellow,      Qt::blue,     Qt::green,   Qt::magenta,    Qt::gray,
              Qt::black,     Qt::cyan,        Qt::white,    Qt::darkRed, Qt::darkYellow, Qt::darkBlue,
              Qt::darkGreen, Qt::darkMagenta, Qt::darkCyan, Qt::darkGray};
  while (m_colors.size() < count) m_colors.append(hueOf(m_colors.size()));
}

void LandmarkPalette::extendBeyond(std::size_t count)
{
  if (m_colors.size() < count + 1) m_colors.append(hueOf(count + 1));
}

void LandmarkPalette::remove(std::size_t index)
{
  if (index < m_colors.size()) m_colors.remove(index);
}

QColor LandmarkPalette::at(std::size_t index) const
{
  return index < m_colors.size() ? m_colors[index] : hueOf(index);
}
