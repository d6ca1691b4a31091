#include "QxVolumeView.h"

#include "QxGreyWindow.h"
#include "QxObjectText.h"
#include "QxPoolWatcher.h"
#include "mc/McRound.h"
#include "qx/QxFullSlider.h"
#include "qx/QxImageViewer.h"
#include "qx/QxSlider.h"
#include "qx/ZxResource.h"
#include "zx/ZxField3.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QToolButton>

#include <algorithm>

namespace {

constexpr float zoomStep = 1.25F;
constexpr float smallestZoom = 1.0F / 64.0F;
constexpr float largestZoom = 64.0F;

QString inUnit(double value) { return QString::number(value, 'g', 6); }

} // namespace

QxVolumeView::QxVolumeView(QxPoolWatcher* watcher, QWidget* parent)
  : QWidget(parent), m_viewer(new QxImageViewer(this)), m_slider(new QxFullSlider(this, "slice"))
{
  m_viewer->setObjectName("viewer");
  m_viewer->setFocusPolicy(Qt::StrongFocus); // Its keys zoom and move the picture.
  m_slider->setToolTip(tr("Slice, counted from 0; the wheel over the picture goes through them, too"));
  m_slider->setIncrement(1.0F);
  m_slider->setFormat("%.0f");
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(2);
  layout->addWidget(makeTools());
  layout->addWidget(m_viewer, 1);
  auto* row = new QHBoxLayout;
  row->setContentsMargins(6, 0, 6, 4);
  m_count = new QLabel(this);
  m_pixel = new QLabel(this);
  m_pixel->setObjectName("pixelText");
  m_pixel->setTextFormat(Qt::PlainText);
  m_pixel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  row->addWidget(new QLabel(tr("Slice:"), this));
  row->addWidget(m_slider, 1);
  row->addSpacing(4);
  row->addWidget(m_count);
  row->addSpacing(12);
  row->addWidget(m_pixel, 1);
  layout->addLayout(row);
  connect(m_slider, &QxFullSlider::valueChanged, this,
          [this](float value) { setSlice(mc::roundHalfUp(value)); });
  connect(m_viewer, &QxImageViewer::wheelStepped, this, [this](int steps) { setSlice(m_slice + steps); });
  connect(m_viewer, &QxImageViewer::pixelHovered, this, &QxVolumeView::showPixel);
  connect(m_viewer, &QxImageViewer::zoomFactorChanged, this, &QxVolumeView::showZoom);
  connect(watcher, &QxPoolWatcher::changed, this, &QxVolumeView::followData);
  connect(watcher, &QxPoolWatcher::removed, this, [this](ZxObject* gone) {
    m_looks.erase(gone);
    if (gone == m_data) setData(nullptr);
  });
}

QToolButton* QxVolumeView::makeTool(const char* name, const char* icon, const QString& text,
                                    const QString& tip)
{
  auto* button = new QToolButton(this);
  button->setObjectName(name);
  button->setAutoRaise(true);
  button->setFocusPolicy(Qt::TabFocus);
  if (icon) button->setIcon(ZxResource::readIcon(icon));
  button->setText(text);
  button->setToolTip(tip);
  return button;
}

QWidget* QxVolumeView::makeTools()
{
  auto* tools = new QWidget(this);
  auto* layout = new QHBoxLayout(tools);
  layout->setContentsMargins(6, 4, 6, 2);
  layout->setSpacing(4);
  QToolButton* in = makeTool("zoomIn", "ZoomIn.png", tr("+"), tr("Zoom in (Ctrl and wheel)"));
  QToolButton* out = makeTool("zoomOut", "ZoomOut.png", tr("-"), tr("Zoom out (Ctrl and wheel)"));
  QToolButton* fit = makeTool("zoomFit", "ZoomFit.png", tr("Fit"), tr("Show the whole slice"));
  QToolButton* one =
      makeTool("zoomOne", nullptr, tr("1:1"), tr("One pixel of the slice on one of the screen"));
  m_zoom = new QLabel(tools);
  m_zoom->setObjectName("zoomText");
  m_zoom->setMinimumWidth(m_zoom->fontMetrics().horizontalAdvance("6400 %"));
  m_zoom->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  m_grey = new QxGreyWindow(tools);
  m_grey->setObjectName("greyWindow");
  for (QWidget* widget : std::initializer_list<QWidget*>{out, in, fit, one, m_zoom})
    layout->addWidget(widget);
  layout->addSpacing(12);
  layout->addWidget(m_grey);
  layout->addStretch();
  connect(in, &QToolButton::clicked, this, [this] { zoomBy(zoomStep); });
  connect(out, &QToolButton::clicked, this, [this] { zoomBy(1.0F / zoomStep); });
  connect(fit, &QToolButton::clicked, m_viewer, &QxImageViewer::zoomToFit);
  connect(one, &QToolButton::clicked, this, [this] { m_viewer->setZoomFactor(1.0F); });
  connect(m_grey, &QxGreyWindow::entered, this, [this](float black, float white) {
    if (!m_data) return;
    look().black = black;
    look().white = white;
    showGreyWindow();
    showSlice();
  });
  connect(m_grey, &QxGreyWindow::autoWanted, this, [this] {
    if (!m_data) return;
    m_image.findGreyWindow(look().black, look().white);
    showGreyWindow();
    showSlice();
  });
  return tools;
}

QxVolumeView::Look& QxVolumeView::look() { return m_looks[m_data]; }

QxVolumeView::Look QxVolumeView::firstLook()
{
  Look first;
  first.slice = m_data->getLattice()->getDims().slices / 2;
  m_image.load(*m_data, first.slice);
  if (m_data->getLattice()->primType() != McPrimType::UInt8) m_image.findGreyWindow(first.black, first.white);
  return first;
}

void QxVolumeView::setData(ZxSpatialData* data)
{
  if (data && (!data->getLattice() || !data->getLattice()->isValid())) data = nullptr;
  if (data == m_data) return;
  m_data = data;
  if (!m_data) {
    m_image.clear();
    m_viewer->clearImage();
    m_pixel->clear();
    return;
  }
  if (!m_looks.count(m_data)) m_looks[m_data] = firstLook();
  const ZxFileGeometry geometry = ZxFileGeometry::of(*m_data);
  const double smaller = std::min(geometry.voxelSize[0], geometry.voxelSize[1]);
  if (smaller > 0)
    m_viewer->setPixelScale(static_cast<float>(geometry.voxelSize[0] / smaller),
                            static_cast<float>(geometry.voxelSize[1] / smaller));
  m_slice = -1;
  followData();
  m_viewer->zoomToFit();
}

void QxVolumeView::followData()
{
  if (!m_data || (m_slice >= 0 && m_change == m_data->changeCount())) return;
  m_change = m_data->changeCount();
  const int slices = m_data->getLattice()->getDims().slices;
  m_slice = std::clamp(look().slice, 0, slices - 1);
  m_slider->setMinMax(0.0F, static_cast<float>(slices - 1));
  m_slider->setValue(static_cast<float>(m_slice));
  m_slider->setEnabled(slices > 1);
  m_count->setText(tr("of %1").arg(slices - 1));
  loadSlice();
  showGreyWindow();
}

void QxVolumeView::setSlice(int slice)
{
  if (!m_data) return;
  slice = std::clamp(slice, 0, m_data->getLattice()->getDims().slices - 1);
  if (slice == m_slice) return;
  m_slice = slice;
  look().slice = slice;
  m_slider->setValue(static_cast<float>(slice));
  loadSlice();
}

void QxVolumeView::loadSlice()
{
  m_image.load(*m_data, m_slice);
  showSlice();
}

void QxVolumeView::showSlice() { m_image.show(*m_viewer, look().black, look().white); }

void QxVolumeView::showGreyWindow()
{
  ZxLattice& lattice = *m_data->getLattice();
  const bool isLabels = m_data->isOfType(ZxLabelLatticeInterface::getClassTypeId());
  m_grey->setVisible(!lattice.isColor() && !isLabels);
  if (m_grey->isHidden()) return;
  float minimum = 0.0F, maximum = 255.0F;
  if (lattice.primType() != McPrimType::UInt8) m_image.findGreyWindow(minimum, maximum);
  const Look& now = look();
  m_grey->set(now.black, now.white, std::min({minimum, now.black, now.white}),
              std::max({maximum, now.black, now.white}));
}

void QxVolumeView::showZoom()
{
  const double percent = static_cast<double>(m_viewer->getZoomFactor()) * 100.0;
  m_zoom->setText(tr("%1 %").arg(mc::roundHalfUp(percent)));
}

void QxVolumeView::zoomBy(float factor)
{
  m_viewer->setZoomFactor(std::clamp(m_viewer->getZoomFactor() * factor, smallestZoom, largestZoom));
}

void QxVolumeView::showPixel(int x, int y, bool inside)
{
  if (!inside || !m_data) return m_pixel->clear();
  const ZxFileGeometry geometry = ZxFileGeometry::of(*m_data);
  const int index[] = {x, y, m_slice};
  QStringList place;
  for (int axis = 0; axis < 3; ++axis)
    place << inUnit(geometry.origin[axis] + index[axis] * geometry.voxelSize[axis]);
  const QString unit = geometry.unit.empty() ? QString() : ' ' + QString::fromStdString(geometry.unit);
  m_pixel->setText(
      tr("x %1, y %2  (%3%4)  value %5").arg(x).arg(y).arg(place.join(", "), unit, m_image.valueAt(x, y)));
}

void QxVolumeView::keyPressEvent(QKeyEvent* event)
{
  switch (event->key()) {
  case Qt::Key_PageUp:
    return setSlice(m_slice + 1);
  case Qt::Key_PageDown:
    return setSlice(m_slice - 1);
  default:
    QWidget::keyPressEvent(event);
  }
}
