#include "zxalign/QxOrthoViewManager.h"

#include "mc/McRound.h"
#include "qx/QxImageViewer.h"
#include "zx/ZxInterpreter.h"
#include "zx/ZxMessage.h"
#include "zxalign/QxAlignSlices.h"
#include "zxalign/QxViewAlignSlicesCoronal.h"
#include "zxalign/QxViewAlignSlicesOrthogonalCommonToolBar.h"
#include "zxalign/QxViewAlignSlicesSagittal.h"
#include "zxalign/UpdateOrthogonalViewsThread.h"

#include <QByteArray>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <mutex>

namespace {

// Columns after which the views are refreshed.
constexpr int kCrossSectionUpdateFrequency = 15;
constexpr int kProjectionUpdateFrequency = 5;
constexpr int kDefaultZRange = 10;
constexpr int kSmallestHeight = 50; // of a view, screen pixels
// Beyond these a step of the zoom is not made.
constexpr float kLargestZoom = 4096.0f;
constexpr float kSmallestZoom = 1.0f / 4096.0f;

float rounded(float v) { return static_cast<float>(mc::roundHalfUpReal(v)); }

float zoomedIn(float zoom)
{
  if (zoom < 0.51f) return zoom * 2.0f;
  const float n = rounded(zoom);
  return n < 4.0f ? n + 1.0f : std::floor(n * 3.0f * 0.5f + 0.5f);
}

float zoomedOut(float zoom) { return zoom > 2.9f ? rounded(2.0f * zoom / 3.0f) : zoom / 2.0f; }

} // namespace

QxOrthoViewManager::QxOrthoViewManager(QxAlignSlices* editor, ZxLattice* lattice, bool useMaxIntProj)
  : m_editor(editor)
{
  init(lattice, useMaxIntProj);
}

QxOrthoViewManager::~QxOrthoViewManager()
{
  deleteThread();
  deleteView(OrthoOrientation::Coronal);
  deleteView(OrthoOrientation::Sagittal);
}

void QxOrthoViewManager::init(ZxLattice* lattice, bool useMaxIntProj)
{
  const bool hadSagittal = m_sagittalView;
  const bool hadCoronal = m_coronalView;
  deleteThread(); // its range is that of the old stack
  deleteView(OrthoOrientation::Sagittal);
  deleteView(OrthoOrientation::Coronal);
  {
    const std::lock_guard lock(m_mutex);
    m_projects = useMaxIntProj;
    adoptLattice(lattice);
  }
  m_updateFrequency = m_projects ? kProjectionUpdateFrequency : kCrossSectionUpdateFrequency;
  m_updateAgain = true; // for an update that has let us in
  showSagittalView(hadSagittal);
  showCoronalView(hadCoronal);
}

void QxOrthoViewManager::adoptLattice(ZxLattice* lattice)
{
  m_lattice = lattice;
  m_shape = lattice ? lattice->shape() : ZxLatticeShape();
  m_axial = 0;
  m_cutX = m_shape.dims.width / 2;
  m_cutY = m_shape.dims.height / 2;
  m_zMin = 0;
  m_zMax = m_shape.dims.slices - 1;
  m_showZRange = false;
  m_zHalfWidth = kDefaultZRange;
  m_columns.reset(m_shape.dims.slices);
}

void QxOrthoViewManager::deleteThread() { m_thread.reset(); }

QxViewAlignSlicesSagittal* QxOrthoViewManager::getSagittalView() const { return m_sagittalView; }

QxViewAlignSlicesCoronal* QxOrthoViewManager::getCoronalView() const { return m_coronalView; }

QxViewAlignSlicesOrthogonalCommonToolBar* QxOrthoViewManager::getToolBar() const { return m_toolBar; }

QxViewAlignSlicesOrthogonal* QxOrthoViewManager::view(OrthoOrientation orientation) const
{
  if (orientation == OrthoOrientation::Sagittal) return m_sagittalView;
  return m_coronalView;
}

bool QxOrthoViewManager::hasView() const { return m_sagittalView || m_coronalView; }

int QxOrthoViewManager::widthOf(OrthoOrientation orientation) const noexcept
{
  return orientation == OrthoOrientation::Sagittal ? m_shape.dims.height : m_shape.dims.width;
}

void QxOrthoViewManager::showSagittalView(bool show)
{
  if (show)
    createView(OrthoOrientation::Sagittal);
  else
    deleteView(OrthoOrientation::Sagittal);
}

void QxOrthoViewManager::showCoronalView(bool show)
{
  if (show)
    createView(OrthoOrientation::Coronal);
  else
    deleteView(OrthoOrientation::Coronal);
}

void QxOrthoViewManager::createView(OrthoOrientation orientation)
{
  if (view(orientation) || !isInputPresent()) return;
  const bool sagittal = orientation == OrthoOrientation::Sagittal;
  std::unique_ptr<QxViewAlignSlicesSagittal> newSagittal;
  std::unique_ptr<QxViewAlignSlicesCoronal> newCoronal;
  if (sagittal)
    newSagittal = std::make_unique<QxViewAlignSlicesSagittal>(m_editor, m_lattice);
  else
    newCoronal = std::make_unique<QxViewAlignSlicesCoronal>(m_editor, m_lattice);
  View& created = sagittal ? static_cast<View&>(*newSagittal) : *newCoronal;
  if (!created.hasImage())
    return ZxMessage::getTheMsg()->memError(created.image().rowBytes() *
                                            static_cast<std::size_t>(m_shape.dims.slices));
  {
    const std::lock_guard lock(m_mutex);
    if (sagittal)
      m_sagittalView = newSagittal.release();
    else
      m_coronalView = newCoronal.release();
  }
  placeView(created);
  if (!m_toolBar) createToolBar();
  showCutSlider(orientation, !m_projects);
  clearLineImmediate(0, m_shape.dims.slices - 1, orientation);
  updateSlices(m_zMin, m_zMax, orientation);
}

void QxOrthoViewManager::placeView(View& created)
{
  created.leaveRoomForSliceView();
  m_editor->addDockWidget(Qt::RightDockWidgetArea, &created);
  created.setZoom(m_zoom);
  created.setOrthoViewLineWidth(m_lineWidth);
  created.updateLineShape(m_axial);
  // A dock is shown, and counts, in the next turn of the event loop.
  QObject::connect(&created, &QDockWidget::visibilityChanged, &created, [this](bool visible) {
    if (visible) keepInWindow();
  });
  // Zooming with the mouse in one view zooms both.
  QObject::connect(created.viewer(), &QxImageViewer::zoomFactorChanged, &created,
                   [this](float zoom) { setZoom(zoom); });
}

void QxOrthoViewManager::keepInWindow()
{
  if (!m_editor->isVisible()) return;
  for (View* shown : {static_cast<View*>(m_sagittalView), static_cast<View*>(m_coronalView)}) {
    if (!shown) continue;
    QxImageViewer& viewer = *shown->viewer();
    viewer.setMinimumWidth(std::min(viewer.minimumWidth(), m_editor->width() / 2));
    const int excess = m_editor->minimumSizeHint().height() - m_editor->height();
    if (excess > 0)
      viewer.setMinimumHeight(
          std::max(std::min(viewer.minimumHeight(), kSmallestHeight), viewer.minimumHeight() - excess));
  }
}

void QxOrthoViewManager::deleteView(OrthoOrientation orientation)
{
  const std::unique_ptr<View> old(view(orientation));
  if (!old) return;
  {
    const std::lock_guard lock(m_mutex);
    if (orientation == OrthoOrientation::Sagittal)
      m_sagittalView = nullptr;
    else
      m_coronalView = nullptr;
    for (int z = 0; z < m_columns.slices(); ++z)
      m_columns.mark(orientation, z, OrthoColumns::State::UpToDate);
  }
  if (hasView()) return showCutSlider(orientation, false);
  deleteUpToDateBoxes();
  m_toolBar->detach();
  m_editor->removeToolBarBreak(m_toolBar);
  m_editor->removeToolBar(m_toolBar);
  m_toolBar->deleteLater(); // one of its own buttons may have led here
  m_toolBar = nullptr;
}

void QxOrthoViewManager::createToolBar()
{
  m_toolBar =
      new QxViewAlignSlicesOrthogonalCommonToolBar(this, m_editor, m_shape.dims.width, m_shape.dims.height);
  m_editor->addToolBar(Qt::TopToolBarArea, m_toolBar);
  m_editor->insertToolBarBreak(m_toolBar); // Beside the others it would be cut off.
  m_toolBar->setShowZRange(m_showZRange);
  m_toolBar->setZRange(m_zHalfWidth);
  if (m_zoom != 1.0f) showZoom();
  if (m_projects) createUpToDateBoxes();
}

void QxOrthoViewManager::showCutSlider(OrthoOrientation orientation, bool show)
{
  if (orientation == OrthoOrientation::Sagittal) {
    m_toolBar->setSagittalSliderRange(0, m_shape.dims.width - 1);
    m_toolBar->setSagittalSlice(m_cutX);
    m_toolBar->showSagittal(show);
  } else {
    m_toolBar->setCoronalSliderRange(0, m_shape.dims.height - 1);
    m_toolBar->setCoronalSlice(m_cutY);
    m_toolBar->showCoronal(show);
  }
}

void QxOrthoViewManager::setSliceNumberSagittal(int x)
{
  if (x == m_cutX) return;
  if (x < 0 || x >= m_shape.dims.width)
    return ZxMessage::getTheMsg()->printf("Invalid sagittal/yz slice number in OrthoViewManager");
  {
    const std::lock_guard lock(m_mutex);
    m_cutX = x;
  }
  if (m_toolBar) m_toolBar->setSagittalSlice(x);
  if (m_sagittalView)
    updateView(0, m_shape.dims.slices - 1, OrthoOrientation::Sagittal, 0, 0, false, false, false);
}

void QxOrthoViewManager::setSliceNumberCoronal(int y)
{
  if (y == m_cutY) return;
  if (y < 0 || y >= m_shape.dims.height)
    return ZxMessage::getTheMsg()->printf("Invalid coronal/xz slice number in OrthoViewManager");
  {
    const std::lock_guard lock(m_mutex);
    m_cutY = y;
  }
  if (m_toolBar) m_toolBar->setCoronalSlice(y);
  if (m_coronalView)
    updateView(0, m_shape.dims.slices - 1, OrthoOrientation::Coronal, 0, 0, false, false, false);
}

void QxOrthoViewManager::setSliceNumberAxial(int z)
{
  if (z < 0 || z >= m_shape.dims.slices)
    return ZxMessage::getTheMsg()->printf("Invalid axial/xy slice number in OrthoViewManager");
  m_axial = z;
  if (m_sagittalView) m_sagittalView->updateLineShape(z);
  if (m_coronalView) m_coronalView->updateLineShape(z);
  updateZRange();
}

void QxOrthoViewManager::setVisibleRangeZMin(int z)
{
  if (changeZMin(z)) updateLinesIfAutomatic();
}

void QxOrthoViewManager::setVisibleRangeZMax(int z)
{
  if (changeZMax(z)) updateLinesIfAutomatic();
}

bool QxOrthoViewManager::changeZMin(int z)
{
  if (z == m_zMin) return false;
  if (z < 0 || z > m_zMax) {
    ZxMessage::getTheMsg()->printf("Invalid minimum value for visible z range.");
    return false;
  }
  const int old = m_zMin;
  m_zMin = z;
  if (z > old)
    mark(old, z - 1, OrthoOrientation::Both, OrthoColumns::State::ToClear);
  else
    mark(z, old - 1, OrthoOrientation::Both, OrthoColumns::State::ToCompute);
  return true;
}

bool QxOrthoViewManager::changeZMax(int z)
{
  if (z == m_zMax) return false;
  if (z < m_zMin || z >= m_shape.dims.slices) {
    ZxMessage::getTheMsg()->printf("Invalid maximum value for visible z range.");
    return false;
  }
  const int old = m_zMax;
  m_zMax = z;
  if (z < old)
    mark(z + 1, old, OrthoOrientation::Both, OrthoColumns::State::ToClear);
  else
    mark(old + 1, z, OrthoOrientation::Both, OrthoColumns::State::ToCompute);
  return true;
}

void QxOrthoViewManager::setVisibleRange(int min, int max)
{
  // In the direction of the move, so that the limits never cross.
  const bool up = max > m_zMax;
  const bool first = up ? changeZMax(max) : changeZMin(min);
  const bool second = up ? changeZMin(min) : changeZMax(max);
  if (first || second) updateLinesIfAutomatic();
}

void QxOrthoViewManager::updateZRange()
{
  if (m_shape.dims.slices == 0) return;
  const int last = m_shape.dims.slices - 1;
  if (!m_showZRange) return setVisibleRange(0, last);
  const int halfWidth = std::min(m_zHalfWidth, last); // more is no more
  setVisibleRange(std::max(m_axial - halfWidth, 0), std::min(m_axial + halfWidth, last));
}

void QxOrthoViewManager::setShowZRange(bool show)
{
  if (show == m_showZRange) return;
  m_showZRange = show;
  if (m_toolBar) m_toolBar->setShowZRange(show);
  updateZRange();
}

void QxOrthoViewManager::setZRange(int halfWidth)
{
  if (halfWidth == m_zHalfWidth || halfWidth < 0) return;
  m_zHalfWidth = halfWidth;
  if (m_toolBar) m_toolBar->setZRange(halfWidth);
  updateZRange();
}

void QxOrthoViewManager::getRangeToUpdate(int& from, int& to) const
{
  from = std::max(from, m_zMin);
  to = std::min(to, m_zMax);
}

void QxOrthoViewManager::setUseMaxIntProj(bool on)
{
  if (on == m_projects) return;
  {
    const std::lock_guard lock(m_mutex);
    m_projects = on;
  }
  m_updateFrequency = on ? kProjectionUpdateFrequency : kCrossSectionUpdateFrequency;
  if (m_thread) m_thread->setUpdateFreq(m_updateFrequency);
  if (!hasView()) return deleteUpToDateBoxes(); // they come with the first view
  clearLineImmediate(0, m_shape.dims.slices - 1, OrthoOrientation::Both);
  if (on)
    createUpToDateBoxes();
  else
    deleteUpToDateBoxes();
  for (const OrthoOrientation o : {OrthoOrientation::Sagittal, OrthoOrientation::Coronal})
    if (view(o)) showCutSlider(o, !on);
  updateSlices(m_zMin, m_zMax, OrthoOrientation::Both);
}

void QxOrthoViewManager::setOrthoViewLineWidth(int percent)
{
  if (percent < 0 || percent > 100) return;
  m_lineWidth = percent;
  if (m_sagittalView) m_sagittalView->setOrthoViewLineWidth(percent);
  if (m_coronalView) m_coronalView->setOrthoViewLineWidth(percent);
}

void QxOrthoViewManager::zoomIn()
{
  if (zoomedIn(m_zoom) <= kLargestZoom) setZoom(zoomedIn(m_zoom));
}

void QxOrthoViewManager::zoomOut()
{
  if (zoomedOut(m_zoom) >= kSmallestZoom) setZoom(zoomedOut(m_zoom));
}

void QxOrthoViewManager::setZoom(float zoom)
{
  if (zoom == m_zoom) return;
  m_zoom = zoom;
  if (m_toolBar) showZoom();
  if (m_sagittalView) m_sagittalView->setZoom(zoom);
  if (m_coronalView) m_coronalView->setZoom(zoom);
}

void QxOrthoViewManager::showZoom()
{
  char text[32];
  if (m_zoom >= 1.0f)
    std::snprintf(text, sizeof text, "%d:1 ", mc::roundHalfUp(m_zoom));
  else
    std::snprintf(text, sizeof text, "1:%d ", mc::roundHalfUp(1.0f / m_zoom));
  m_toolBar->setZoomLabel(text);
}

bool QxOrthoViewManager::waitForUpdate(unsigned long milliseconds)
{
  return !m_thread || m_thread->wait(milliseconds);
}

bool QxOrthoViewManager::useThread()
{
  const char* const text = ZxInterpreter::getTheInterpreter().getVar("ZxAlign_useThreads");
  if (!text) return false; // what a pass under way still does is as good as what is done here
  if (QByteArray(text).toInt() == 0) {
    deleteThread();
    return false;
  }
  if (!m_thread) {
    m_thread = std::make_unique<UpdateOrthogonalViewsThread>(this);
    m_thread->setUpdateRange(0, m_shape.dims.slices - 1);
    m_thread->setUpdateFreq(m_updateFrequency);
  }
  return true;
}
