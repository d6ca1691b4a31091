#include "QualityPlot.h"

#include "mc/McRound.h"

#include <QFontMetrics>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

namespace cli {
namespace {

constexpr int kMostBars = 12;
constexpr int kRoomRight = 8; // of the axes
const QColor kBefore(214, 106, 28);
const QColor kAfter(20, 96, 168);
const QColor kGrid(225, 225, 225);
const QColor kInk(40, 40, 40);

/// Where pairs and qualities lie in the picture.
struct Scale {
  QRect area; ///< inside of the axes
  PlotAxis axis;
  int first = 0; ///< lower slice of the first pair
  int count = 1; ///< pairs from the first to the last

  double slot() const { return static_cast<double>(area.width()) / count; }
  double xOf(int lower) const { return area.left() + (lower - first + 0.5) * slot(); }
  double yOf(double quality) const
  {
    return area.bottom() - (quality - axis.min) / (axis.max - axis.min) * area.height();
  }
};

QString number(double value, double step)
{
  const int digits = std::clamp(-mc::floorToInt(std::log10(step) + 1e-9), 0, 6);
  return QString::number(value, 'f', digits);
}

PlotAxis qualityAxis(const std::vector<PairQuality>& pairs)
{
  double low = 100.0, high = 0.0;
  for (const auto& pair : pairs)
    for (const double quality : {pair.before, pair.after}) {
      if (!std::isfinite(quality)) continue;
      low = std::min(low, quality);
      high = std::max(high, quality);
    }
  return low <= high ? chooseAxis(low, high, 6) : PlotAxis{0.0, 100.0, 20.0};
}

void paintQualityAxis(QPainter& painter, const Scale& scale)
{
  const int textHeight = painter.fontMetrics().height();
  const int steps = mc::roundHalfUp((scale.axis.max - scale.axis.min) / scale.axis.step);
  for (int i = 0; i <= steps; ++i) {
    const double value = scale.axis.min + i * scale.axis.step;
    const int y = mc::roundHalfUp(scale.yOf(value));
    painter.setPen(kGrid);
    painter.drawLine(scale.area.left(), y, scale.area.right(), y);
    painter.setPen(kInk);
    painter.drawText(QRect(scale.area.left() - 208, y - textHeight / 2, 200, textHeight),
                     Qt::AlignRight | Qt::AlignVCenter, number(value, scale.axis.step));
  }
}

void paintPairAxis(QPainter& painter, const Scale& scale)
{
  const QFontMetrics metrics = painter.fontMetrics();
  const QString widest = QString("%1 - %1").arg(scale.first + scale.count);
  const int room = std::max(1, scale.area.width() / (metrics.horizontalAdvance(widest) + 24));
  const PlotAxis axis = chooseAxis(0.0, std::max(1, scale.count), std::min(room, 16));
  const int step = std::max(1, mc::roundHalfUp(axis.step));
  for (int lower = scale.first; lower < scale.first + scale.count; ++lower) {
    if (lower % step != 0) continue;
    const int x = mc::roundHalfUp(scale.xOf(lower));
    painter.drawLine(x, scale.area.bottom(), x, scale.area.bottom() + 4);
    const QString text = QString("%1 - %2").arg(lower).arg(lower + 1);
    // The last label must not run out of the picture.
    const int half = metrics.horizontalAdvance(text) / 2 + 2;
    const int middle = std::min(x, scale.area.right() + kRoomRight - half);
    painter.drawText(QRect(middle - half, scale.area.bottom() + 5, 2 * half, metrics.height()),
                     Qt::AlignHCenter, text);
  }
}

/// A bar with its value: above it, or inside where it reaches the top.
void paintBar(QPainter& painter, const Scale& scale, const QRectF& place, double quality,
              const QColor& colour)
{
  painter.fillRect(place, colour);
  const QString text = QString::number(quality, 'f', 1);
  const double height = painter.fontMetrics().height();
  if (painter.fontMetrics().horizontalAdvance(text) > place.width()) return;
  const bool inside = place.top() - height < scale.area.top();
  painter.setPen(inside ? QColor(Qt::white) : kInk);
  painter.drawText(QRectF(place.left(), inside ? place.top() : place.top() - height, place.width(), height),
                   Qt::AlignCenter, text);
}

void paintBars(QPainter& painter, const Scale& scale, const std::vector<PairQuality>& pairs)
{
  const double width = std::min(60.0, scale.slot() / 3.0);
  const auto bar = [&](double left, double quality, const QColor& colour) {
    if (!std::isfinite(quality)) return;
    const double top = scale.yOf(quality);
    paintBar(painter, scale, {left, top, width - 2.0, scale.area.bottom() - top}, quality, colour);
  };
  for (const auto& pair : pairs) {
    bar(scale.xOf(pair.lower) - width, pair.before, kBefore);
    bar(scale.xOf(pair.lower), pair.after, kAfter);
  }
}

void paintCurve(QPainter& painter, const Scale& scale, const std::vector<PairQuality>& pairs,
                double PairQuality::*quality, const QColor& colour)
{
  QPainterPath path;
  bool pen = false;
  int previous = 0;
  for (const auto& pair : pairs) {
    // A pair that is missing or has no quality leaves a gap.
    const bool finite = std::isfinite(pair.*quality);
    const QPointF point(scale.xOf(pair.lower), finite ? scale.yOf(pair.*quality) : 0.0);
    const bool joined = pen && pair.lower == previous + 1;
    if (finite && joined) path.lineTo(point);
    if (finite && !joined) path.moveTo(point);
    if (finite && scale.slot() > 8.0) path.addEllipse(point, 2.0, 2.0), path.moveTo(point);
    pen = finite;
    previous = pair.lower;
  }
  painter.setPen(QPen(colour, 1.6));
  painter.drawPath(path);
}

void paintLegend(QPainter& painter, const QRect& area)
{
  const int height = painter.fontMetrics().height();
  int right = area.right();
  for (const auto& [text, colour] :
       {std::pair(QString("after"), kAfter), std::pair(QString("before"), kBefore)}) {
    const int width = painter.fontMetrics().horizontalAdvance(text) + 4;
    painter.setPen(kInk);
    painter.drawText(QRect(right - width, area.top(), width, height), Qt::AlignRight | Qt::AlignVCenter,
                     text);
    painter.fillRect(QRect(right - width - 30, area.top() + height / 2 - 3, 24, 6), colour);
    right -= width + 54;
  }
  painter.setPen(kInk);
  painter.drawText(QRect(area.left(), area.top(), right - area.left(), height), Qt::AlignLeft,
                   "Quality of every pair of neighbouring slices in percent (100: equal)");
}

/// The inside of the axes: below the legend, right of the numbers, above the names of the pairs.
QRect insideOfAxes(const QPainter& painter, const QRect& area)
{
  const QFontMetrics metrics = painter.fontMetrics();
  const int line = metrics.height();
  return area.adjusted(metrics.horizontalAdvance("00000.00") + 12, line + 12, -kRoomRight, -2 * line - 10);
}

} // namespace

std::vector<PairQuality> inSliceOrder(std::span<const ZxAlignPairResult> pairs)
{
  std::vector<PairQuality> result;
  for (const auto& pair : pairs)
    result.push_back({std::min(pair.pair.editable, pair.pair.reference), 100.0 * pair.qualityBefore,
                      100.0 * pair.qualityAfter});
  std::stable_sort(result.begin(), result.end(),
                   [](const PairQuality& a, const PairQuality& b) { return a.lower < b.lower; });
  return result;
}

PlotAxis chooseAxis(double low, double high, int maxSteps)
{
  if (!(high - low > 1e-9)) {
    low -= 0.5;
    high += 0.5;
  }
  double unit = std::pow(10.0, std::floor(std::log10((high - low) / maxSteps)));
  for (;; unit *= 10.0)
    for (const double factor : {1.0, 2.0, 5.0}) {
      const double step = unit * factor;
      const double first = std::floor(low / step + 1e-9), last = std::ceil(high / step - 1e-9);
      if (last - first <= std::max(2, maxSteps)) return {first * step, last * step, step};
    }
}

void paintQualityPlot(QPainter& painter, const QRect& area, const std::vector<PairQuality>& pairs)
{
  paintLegend(painter, area);
  Scale scale{insideOfAxes(painter, area), qualityAxis(pairs)};
  if (pairs.empty()) {
    painter.drawText(scale.area, Qt::AlignCenter, "no pair was aligned");
    return;
  }
  scale.first = pairs.front().lower;
  scale.count = pairs.back().lower - scale.first + 1;
  paintQualityAxis(painter, scale);
  painter.setPen(kInk);
  painter.drawRect(scale.area);
  paintPairAxis(painter, scale);
  painter.drawText(QRect(scale.area.left(), area.bottom() - painter.fontMetrics().height(),
                         scale.area.width(), painter.fontMetrics().height()),
                   Qt::AlignHCenter, "pair of slices");
  if (scale.count <= kMostBars) {
    paintBars(painter, scale, pairs);
    return;
  }
  painter.setRenderHint(QPainter::Antialiasing);
  paintCurve(painter, scale, pairs, &PairQuality::before, kBefore);
  paintCurve(painter, scale, pairs, &PairQuality::after, kAfter);
}

} // namespace cli
