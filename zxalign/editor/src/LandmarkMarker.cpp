#include "LandmarkMarker.h"

#include <algorithm>

namespace {

constexpr int kSide = 17;

// . nothing, X outline, W white, C the landmark's colour
constexpr const char* kRows[kSide] = {
    "...............XX", ".............XXWX", "...........XXWWX.", ".........XXWWWWX.", ".......XXWWWCWX..",
    ".....XXWWWCCWWX..", "...XXWWWCCCCWX...", ".XXWWWCCCCCWWX...", "XWWWCCCCCCCWX....", ".XWWCCCCCCWWX....",
    "..XWWCCCCCWX.....", "...XWWCCCWWX.....", "....XWWCCWX......", ".....XWWWWX......", "......XWWX.......",
    ".......XWX.......", "........X........",
};

QRgb withoutAlpha(QColor color) { return color.rgb() & RGB_MASK; }

void drawRow(QRgb* line, int width, const char* row, qint64 left, QRgb outline, QRgb fill)
{
  const auto begin = std::max<qint64>(0, -left);
  const auto end = std::min<qint64>(kSide, width - left);
  for (qint64 i = begin; i < end; ++i)
    if (row[i] != '.') line[left + i] = row[i] == 'X' ? outline : row[i] == 'C' ? fill : RGB_MASK;
}

} // namespace

void LandmarkMarker::draw(QImage& picture, qint64 tipX, qint64 tipY, From from, QColor color, bool selected)
{
  const QRgb outline = withoutAlpha(selected ? QColor(Qt::red) : QColor(Qt::black));
  for (int i = 0; i < kSide; ++i) {
    const qint64 y = from == From::Below ? tipY + i : tipY - i;
    if (y < 0 || y >= picture.height()) continue;
    auto* const line = reinterpret_cast<QRgb*>(picture.scanLine(static_cast<int>(y)));
    drawRow(line, picture.width(), kRows[i], tipX - (kSide - 1), outline, withoutAlpha(color));
  }
}

bool LandmarkMarker::contains(McVec2f tip, From from, McVec2f point)
{
  const float s = from == From::Below ? 1.0f : -1.0f;
  const McVec2f e1{-16.0f, 8.0f * s};
  const McVec2f e2{-8.0f, 16.0f * s};
  const McVec2f d{point.x - tip.x, point.y - tip.y};
  const float area = e1.x * e2.y - e2.x * e1.y;
  const float u = (d.x * e2.y - d.y * e2.x) / area;
  const float v = (e1.x * d.y - e1.y * d.x) / area;
  return u > 0.0f && v > 0.0f && 1.0f - u - v > 0.0f;
}
