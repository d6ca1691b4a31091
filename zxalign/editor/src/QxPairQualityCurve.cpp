#include "zxalign/QxPairQualityCurve.h"

#include "mc/McRound.h"
#include "zxalign/PairQualities.h"
#include "zxalign/PairQualityModel.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>

#include <algorithm>

namespace {

QString percent(double quality) { return QString::number(mc::roundHalfUp(quality * 100.0)) + " %"; }

} // namespace

QxPairQualityCurve::QxPairQualityCurve(const PairQualities& qualities, QWidget* parent)
  : QWidget(parent), m_qualities(qualities)
{
  setCursor(Qt::PointingHandCursor);
  const auto repaint = qOverload<>(&QWidget::update);
  connect(&qualities, &PairQualities::reset, this, repaint);
  connect(&qualities, &PairQualities::changed, this, repaint);
  connect(&qualities, &PairQualities::worstChanged, this, repaint);
  connect(&qualities, &PairQualities::currentChanged, this, repaint);
}

QSize QxPairQualityCurve::sizeHint() const { return {260, 140}; }

QSize QxPairQualityCurve::minimumSizeHint() const { return {120, 80}; }

QRectF QxPairQualityCurve::plot() const
{
  const QFontMetricsF font(this->font());
  return QRectF(rect()).adjusted(font.horizontalAdvance("100 %") + 8, font.height() / 2 + 3, -8,
                                 -font.height() / 2 - 3);
}

double QxPairQualityCurve::lowest() const
{
  const int worst = m_qualities.worst();
  const double quality = worst < 0 ? 1.0 : static_cast<double>(*m_qualities.quality(worst));
  return std::clamp(mc::floorToInt(quality * 10.0 - 0.1) / 10.0, 0.0, 0.9);
}

QPointF QxPairQualityCurve::pointOf(int lower) const
{
  const QRectF area = plot();
  const double quality = static_cast<double>(m_qualities.quality(lower).value_or(1.0f));
  return {area.left() + (lower + 0.5) / m_qualities.count() * area.width(),
          area.bottom() - (quality - lowest()) / (1.0 - lowest()) * area.height()};
}

int QxPairQualityCurve::pairAt(double x) const
{
  const int n = m_qualities.count();
  const QRectF area = plot();
  if (n == 0 || area.width() <= 0) return -1;
  return std::clamp(mc::floorToInt((x - area.left()) / area.width() * n), 0, n - 1);
}

void QxPairQualityCurve::paintEvent(QPaintEvent*)
{
  QPainter painter(this);
  painter.fillRect(rect(), palette().color(QPalette::Base));
  paintScale(painter);
  if (m_qualities.count() == 0) return;
  painter.setRenderHint(QPainter::Antialiasing);
  paintCurve(painter);
  paintMarks(painter);
}

void QxPairQualityCurve::paintScale(QPainter& painter) const
{
  const QRectF area = plot();
  const QColor text = palette().color(QPalette::Text);
  QColor grid = text;
  grid.setAlphaF(0.2f);
  for (const double share : {0.0, 0.5, 1.0}) {
    const double y = area.bottom() - share * area.height();
    painter.setPen(grid);
    painter.drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
    painter.setPen(text);
    painter.drawText(QRectF(0, y - 20, area.left() - 5, 40), Qt::AlignRight | Qt::AlignVCenter,
                     percent(lowest() + share * (1.0 - lowest())));
  }
}

void QxPairQualityCurve::paintCurve(QPainter& painter) const
{
  QPainterPath path;
  bool isKnown = false; // A gap where nothing is known.
  for (int i = 0; i < m_qualities.count(); ++i) {
    const bool wasKnown = isKnown;
    isKnown = m_qualities.quality(i).has_value();
    if (!isKnown) continue;
    if (wasKnown)
      path.lineTo(pointOf(i));
    else
      path.moveTo(pointOf(i));
    if (m_qualities.count() * 6 < width()) path.addEllipse(pointOf(i), 1.5, 1.5), path.moveTo(pointOf(i));
  }
  painter.setPen(QPen(palette().color(QPalette::Highlight), 1.5));
  painter.drawPath(path);
}

void QxPairQualityCurve::paintMarks(QPainter& painter) const
{
  const QRectF area = plot();
  if (const int current = m_qualities.current(); current >= 0) {
    painter.setPen(QPen(palette().color(QPalette::Text), 1, Qt::DashLine));
    const double x = pointOf(current).x();
    painter.drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
  }
  if (const int worst = m_qualities.worst(); worst >= 0) {
    painter.setPen(QPen(Qt::red, 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(pointOf(worst), 5, 5);
  }
}

void QxPairQualityCurve::mousePressEvent(QMouseEvent* event)
{
  const int lower = pairAt(event->position().x());
  if (event->button() == Qt::LeftButton && lower >= 0) Q_EMIT pairChosen(lower);
}

bool QxPairQualityCurve::event(QEvent* event)
{
  if (event->type() != QEvent::ToolTip) return QWidget::event(event);
  const auto* help = static_cast<QHelpEvent*>(event);
  const int lower = pairAt(help->pos().x());
  if (lower >= 0)
    QToolTip::showText(help->globalPos(),
                       tr("Slices %1: %2")
                           .arg(PairQualityModel::slicesText(lower),
                                PairQualityModel::qualityText(m_qualities.quality(lower))),
                       this);
  return true;
}
