#include "zxalign/QxViewAlignSlicesOrthogonal.h"

#include "mc/McRound.h"
#include "qx/QxImageViewer.h"
#include "zx/ZxSettingsMgr.h"
#include "zxalign/QxAlignSlices.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace {

constexpr int kLargestZSize = 200;

/// Distance of neighbouring voxel centres along an axis of `count` voxels; 0 where there is none.
double spacing(float min, float max, int count)
{
  return count > 1 ? (static_cast<double>(max) - min) / (count - 1) : 0.0;
}

/// Screen pixels of a slice where a pixel along the slices takes one: the voxels' aspect ratio. 1 where it is
/// not known.
float scaleOf(const ZxLattice& lattice, OrthoOrientation orientation)
{
  const ZxBox3f& b = lattice.getBoundingBox();
  const ZxDims& d = lattice.getDims();
  const double along = orientation == OrthoOrientation::Sagittal ? spacing(b.ymin, b.ymax, d.height)
                                                                 : spacing(b.xmin, b.xmax, d.width);
  const double scale = spacing(b.zmin, b.zmax, d.slices) / along;
  return scale > 0.0 && std::isfinite(scale) ? static_cast<float>(scale) : 1.0f;
}

int widthOf(const ZxDims& dims, OrthoOrientation orientation)
{
  return orientation == OrthoOrientation::Sagittal ? dims.height : dims.width;
}

} // namespace

QxViewAlignSlicesOrthogonal::QxViewAlignSlicesOrthogonal(QxAlignSlices* editor, ZxLattice* lattice,
                                                         OrthoOrientation orientation)
  : QDockWidget(editor), m_editor(editor),
    m_image(widthOf(lattice->getDims(), orientation), lattice->getDims().slices, lattice->primType(),
            lattice->getNumDataVars()),
    m_color(lattice->getNumDataVars() == 4), m_scaleZ(scaleOf(*lattice, orientation)),
    m_viewer(new QxImageViewer(this)), m_lineShape(0),
    m_settingsListener(ZxSettingsMgr::getInstance()->addListener([this] { showTitle(); }))
{
  m_viewer->setObjectName("viewer");
  m_viewer->setTransposed(orientation == OrthoOrientation::Sagittal);
  m_viewer->addShape(&m_lineShape);
  setWidget(m_viewer);
}

QxViewAlignSlicesOrthogonal::~QxViewAlignSlicesOrthogonal()
{
  ZxSettingsMgr::getInstance()->removeListener(m_settingsListener);
  m_viewer->removeShape(&m_lineShape);
}

void QxViewAlignSlicesOrthogonal::setTitles(const QString& anatomical, const QString& axes)
{
  m_anatomicalTitle = anatomical;
  m_axesTitle = axes;
  showTitle();
}

void QxViewAlignSlicesOrthogonal::showTitle()
{
  setWindowTitle(ZxSettingsMgr::getInstance()->usesAnatomicalNames() ? m_anatomicalTitle : m_axesTitle);
}

void QxViewAlignSlicesOrthogonal::updateImageData()
{
  if (m_color)
    showColor();
  else
    showGrey();
  m_viewer->setPixelScale(1.0f, m_scaleZ);
  m_viewer->redraw();
}

void QxViewAlignSlicesOrthogonal::showColor()
{
  if (m_image.primType() == McPrimType::UInt8)
    return m_viewer->setColorImage(m_image.data(), m_image.width(), m_image.height());
  std::vector<unsigned char> rgba(static_cast<std::size_t>(m_image.width()) *
                                  static_cast<std::size_t>(m_image.height()) * 4);
  mcVisit(m_image.primType(), [&](auto zero) {
    const auto* value = reinterpret_cast<const decltype(zero)*>(m_image.data());
    for (unsigned char& c : rgba) c = mc::truncToByte(static_cast<float>(*value++));
  });
  m_viewer->setColorImage(rgba.data(), m_image.width(), m_image.height());
}

void QxViewAlignSlicesOrthogonal::showGrey()
{
  const auto step = static_cast<std::size_t>(m_image.numValues());
  if (step == 1)
    return m_viewer->setGreyImage(m_image.data(), m_image.primType(), m_image.width(), m_image.height(), 0.0f,
                                  255.0f);
  // Of values that are neither grey nor colour the first is shown.
  mcVisit(m_image.primType(), [&](auto zero) {
    const auto* value = reinterpret_cast<const decltype(zero)*>(m_image.data());
    std::vector<decltype(zero)> first(static_cast<std::size_t>(m_image.width()) *
                                      static_cast<std::size_t>(m_image.height()));
    for (std::size_t i = 0; i < first.size(); ++i) first[i] = value[i * step];
    m_viewer->setGreyImage(first.data(), m_image.primType(), m_image.width(), m_image.height(), 0.0f, 255.0f);
  });
}

void QxViewAlignSlicesOrthogonal::setZoom(float zoom)
{
  m_viewer->setZoomFactor(zoom);
  m_viewer->redraw();
}

void QxViewAlignSlicesOrthogonal::setOrthoViewLineWidth(int percent)
{
  m_lineShape.setOrthoViewLineWidth(percent);
  m_viewer->redraw();
}

void QxViewAlignSlicesOrthogonal::updateLineShape(int z)
{
  m_lineShape.setSliceNumber(z);
  m_viewer->redraw();
}

void QxViewAlignSlicesOrthogonal::clearLine(int z) { m_image.clearRow(z); }

int QxViewAlignSlicesOrthogonal::getMinimumZSize() const
{
  const double size = std::floor(static_cast<double>(m_scaleZ) * m_image.height()) + 2 * kMargin;
  return mc::truncToInt(std::min<double>(size, kLargestZSize));
}

void QxViewAlignSlicesOrthogonal::leaveRoomForSliceView()
{
  const QSize half(m_editor->getDrawAreaWidth() / 2, m_editor->getDrawAreaHeight() / 2);
  m_viewer->setMinimumSize(m_viewer->minimumSize().boundedTo(half).expandedTo(QSize(1, 1)));
}

int QxViewAlignSlicesOrthogonal::drawSize(int available) const
{
  return std::max(1, std::min(m_image.width() + 2 * kMargin, available - kSizeReserve));
}
