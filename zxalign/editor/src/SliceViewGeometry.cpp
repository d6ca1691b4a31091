#include "SliceViewGeometry.h"

#include "mc/McRound.h"

namespace {

int offsetOf(int viewport, float zoomed)
{
  const float space = static_cast<float>(viewport) - zoomed;
  return space >= 0.0f ? mc::truncToInt(space * 0.5) : 0;
}

double toImage(int window, int viewport, float zoomed, int scroll, float zoom)
{
  const double space = viewport - static_cast<double>(zoomed);
  return space >= 0.0 ? (window - space * 0.5) / zoom : (static_cast<double>(scroll) + window) / zoom;
}

} // namespace

float SliceViewGeometry::zoomedWidth() const { return static_cast<float>(slice.width()) * zoom; }
float SliceViewGeometry::zoomedHeight() const { return static_cast<float>(slice.height()) * zoom; }

QSize SliceViewGeometry::contents() const
{
  return {mc::truncToInt(zoomedWidth()), mc::truncToInt(zoomedHeight())};
}

QSize SliceViewGeometry::screen() const { return contents().boundedTo(viewport).expandedTo(QSize(0, 0)); }

QPoint SliceViewGeometry::origin() const
{
  const QSize all = contents();
  return {all.width() > viewport.width() ? scroll.x() : 0, all.height() > viewport.height() ? scroll.y() : 0};
}

QPoint SliceViewGeometry::offset() const
{
  return {offsetOf(viewport.width(), zoomedWidth()), offsetOf(viewport.height(), zoomedHeight())};
}

McVec2f SliceViewGeometry::windowToImage(QPoint window) const
{
  return {static_cast<float>(toImage(window.x(), viewport.width(), zoomedWidth(), scroll.x(), zoom)),
          static_cast<float>(toImage(window.y(), viewport.height(), zoomedHeight(), scroll.y(), zoom))};
}

QPoint SliceViewGeometry::windowToContents(QPoint window) const { return window - offset() + origin(); }
