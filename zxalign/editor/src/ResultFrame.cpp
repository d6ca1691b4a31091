#include "ResultFrame.h"

#include "mc/McRound.h"

std::optional<QRect> ResultFrame::outline(const SliceViewGeometry& geometry) const
{
  if (!(scaleX >= 1.0f) || !(scaleY >= 1.0f)) return {};
  const bool centred = x == -1 || y == -1;
  const auto marginOf = [&](float n, float scale, int border) {
    return centred ? mc::truncToInt((scale * n - n) * 0.5)
                   : mc::floorToInt(static_cast<float>(border) * geometry.zoom);
  };
  const auto lengthOf = [](float n, float scale) { return mc::floorToInt(double{n * scale} + 1.0); };
  const QSize screen = geometry.screen();
  const QPoint offset = geometry.offset();
  const auto width = static_cast<float>(screen.width());
  const auto height = static_cast<float>(screen.height());
  return QRect(offset.x() - marginOf(width, scaleX, x) - 1, offset.y() - marginOf(height, scaleY, y) - 1,
               lengthOf(width, scaleX), lengthOf(height, scaleY));
}
