#include "zxalign/QxAlignToolBar.h"

#include "mc/McDArray.h"
#include "mc/McRound.h"
#include "qx/QxFullSlider.h"
#include "qx/QxSlider.h"
#include "qx/ZxResource.h"

#include <QAction>
#include <QFrame>
#include <QLabel>
#include <QMainWindow>
#include <QSignalBlocker>

namespace {

/// The number and a blank behind it, which keeps the label from touching what follows.
QString zoomText(float zoom)
{
  return zoom >= 1.0f ? QStringLiteral("%1:1 ").arg(mc::addHalfAndTrunc(zoom))
                      : QStringLiteral("1:%1 ").arg(mc::addHalfAndTrunc(1.0f / zoom));
}

} // namespace

QxAlignToolBar::QxAlignToolBar(QMainWindow* parent, const char* name)
  : QToolBar(QString::fromLatin1(name), parent), m_zoomLabel(new QLabel(QStringLiteral("1:1"), this)),
    m_slice(new QxFullSlider(this, "Slice"))
{
  setObjectName(QStringLiteral("alignToolBar"));
  setWindowTitle(QStringLiteral("Alignment Settings"));
  addWidget(new QLabel(QStringLiteral(" Slice: "), this));
  m_slice->setFixedSize(175, 21);
  m_slice->setIncrement(1.0f);
  m_slice->setSliderFrameStyle(QFrame::Panel);
  m_slice->setFormat("%.0f");
  connect(m_slice, &QxFullSlider::valueChanged, this, &QxAlignToolBar::sliceChange);
  addWidget(m_slice);
  addSeparator();
  addAction(ZxResource::readIcon("AlignZoomIn162.png"), QStringLiteral("Zoom In"), this,
            &QxAlignToolBar::zoomIn)
      ->setObjectName(QStringLiteral("zoomIn"));
  addAction(ZxResource::readIcon("AlignZoomOut162.png"), QStringLiteral("Zoom Out"), this,
            &QxAlignToolBar::zoomOut)
      ->setObjectName(QStringLiteral("zoomOut"));
  m_zoomLabel->setObjectName(QStringLiteral("zoom"));
  m_zoomLabel->setAlignment(Qt::AlignHCenter | Qt::AlignVCenter);
  m_zoomLabel->setMinimumWidth(m_zoomLabel->fontMetrics().horizontalAdvance(QStringLiteral("14:1 ")));
  addWidget(m_zoomLabel);
}

void QxAlignToolBar::setSlicesRange(int min, int max)
{
  const QSignalBlocker blocker(m_slice);
  m_slice->setMinMax(static_cast<float>(min), static_cast<float>(max));
}

void QxAlignToolBar::setSlice(int slice, int reference)
{
  const QSignalBlocker blocker(m_slice);
  if (mc::addHalfAndTrunc(m_slice->getValue()) != slice) m_slice->setValue(static_cast<float>(slice));
  McDArray<float> ticks;
  ticks.append(static_cast<float>(reference));
  m_slice->slider()->setTicks(ticks);
}

void QxAlignToolBar::sliceChange(float slice) { Q_EMIT sliceChanged(slice); }

void QxAlignToolBar::zoomIn()
{
  if (m_zoom < 0.51f) return setZoom(2.0f * m_zoom);
  const int n = mc::addHalfAndTrunc(m_zoom);
  setZoom(n >= 1 && n <= 3 ? static_cast<float>(n + 1) : static_cast<float>(mc::addHalfAndTrunc(1.5 * n)));
}

void QxAlignToolBar::zoomOut()
{
  setZoom(m_zoom > 2.9f ? static_cast<float>(mc::addHalfAndTrunc(2.0f * m_zoom / 3.0f)) : m_zoom / 2.0f);
}

void QxAlignToolBar::setZoom(float zoom)
{
  if (!(zoom > 0.0f)) return; // Half of the smallest number there is: there would be no way back.
  m_zoom = zoom;
  m_zoomLabel->setText(zoomText(zoom));
  Q_EMIT zoomChanged(zoom);
}
