#include "kernels/Compose.h"

#include "LandmarkMarker.h"
#include "ShownPair.h"

#include "mc/McRound.h"
#include "zxalign/QxDrawAlignSlices.h"

#include <optional>

namespace {

using View = QxDrawAlignSlices;

std::optional<kernels::ComposeMode> kernelMode(int viewMode)
{
  switch (viewMode) {
  case View::RedGreen:
    return kernels::ComposeMode::RedGreen;
  case View::Checkerboard:
    return kernels::ComposeMode::Checkerboard;
  case View::Average:
    return kernels::ComposeMode::Average;
  case View::InvertedOverlay:
    return kernels::ComposeMode::InvertedOverlay;
  default:
    return {};
  }
}

kernels::ComposeShow kernelShow(int shown)
{
  return shown == View::BothSlices    ? kernels::ComposeShow::Both
         : shown == View::SecondSlice ? kernels::ComposeShow::Second
                                      : kernels::ComposeShow::First;
}

// From the zoomed contents into the slice.
kernels::Affine16 inverseOf(const ShownPair& pair, std::size_t slice, float zoom)
{
  const McVec2f centre = pair.centre();
  QTransform m;
  pair.transform(slice).getImageMatrix(m, pair.placed[slice], centre.x, centre.y);
  const double scale = 1.0 / zoom;
  return {mc::toFixed16(m.m11() * scale), mc::toFixed16(m.m12() * scale), mc::toFixed16(m.m21() * scale),
          mc::toFixed16(m.m22() * scale), mc::toFixed16(m.dx()),          mc::toFixed16(m.dy())};
}

void composeSlices(const ShownPair& pair, const SliceViewGeometry& geometry, const PictureSettings& settings,
                   kernels::ComposeMode mode, QImage& picture)
{
  // Red and green stand for the slices there, so colours of their own would mislead.
  const bool usesGrey = mode == kernels::ComposeMode::RedGreen;
  const auto& images = usesGrey ? pair.grey : pair.display;
  kernels::Composition c;
  c.width = pair.size.width();
  c.height = pair.size.height();
  c.channels = usesGrey ? 1 : pair.bytesPerPixel;
  c.first = {images[0], inverseOf(pair, 0, geometry.zoom)};
  c.second = {images[1], inverseOf(pair, 1, geometry.zoom)};
  c.mode = mode;
  c.show = kernelShow(settings.shown);
  c.fieldSize = settings.fieldSize;
  c.left = geometry.origin().x();
  c.top = geometry.origin().y();
  kernels::composePair(c, reinterpret_cast<QRgb*>(picture.bits()), picture.width(), picture.height(),
                       picture.bytesPerLine() / 4);
}

void drawLandmarks(const ShownPair& pair, std::size_t slice, const SliceViewGeometry& geometry, int selected,
                   const LandmarkPalette& palette, QImage& picture)
{
  const McDArray<QPoint>& landmarks = pair.records[slice]->landmarks;
  const auto from = slice == 0 ? LandmarkMarker::From::Below : LandmarkMarker::From::Above;
  const QPoint origin = geometry.origin();
  for (std::size_t i = 0; i < landmarks.size(); ++i) {
    const McVec2f p = pair.landmarkInContents(slice, landmarks[i], geometry.zoom);
    LandmarkMarker::draw(picture, qint64{mc::roundHalfUp(p.x)} - origin.x(),
                         qint64{mc::roundHalfUp(p.y)} - origin.y(), from, palette.at(i),
                         static_cast<qint64>(i) == selected);
  }
}

} // namespace

SliceXForm ShownPair::transform(std::size_t slice) const
{
  SliceXForm xform = transforms[slice];
  xform.flip = records[slice] && records[slice]->flip;
  return xform;
}

McVec2f ShownPair::centre() const
{
  const int x = size.width() / 2, y = size.height() / 2;
  return {static_cast<float>(x), static_cast<float>(y)};
}

McVec2f ShownPair::landmarkInContents(std::size_t slice, QPoint landmark, float zoom) const
{
  const McVec2f c = centre();
  const McVec2f p =
      transform(slice).map({static_cast<float>(landmark.x()), static_cast<float>(landmark.y())}, c.x, c.y);
  return {zoom * p.x, zoom * p.y};
}

void composePicture(const ShownPair& pair, const SliceViewGeometry& geometry, const PictureSettings& settings,
                    const LandmarkPalette& palette, QImage& picture)
{
  if (const auto mode = kernelMode(settings.viewMode))
    composeSlices(pair, geometry, settings, *mode, picture);
  if (!settings.hasLandmarks) return;
  const kernels::ComposeShow shown = kernelShow(settings.shown);
  if (shown != kernels::ComposeShow::Second)
    drawLandmarks(pair, 0, geometry, settings.selected, palette, picture);
  if (shown != kernels::ComposeShow::First)
    drawLandmarks(pair, 1, geometry, settings.selected, palette, picture);
}
