#pragma once

#include "zxalign/ZxAlignControl.h"

#include <QRect>
#include <span>
#include <vector>

class QPainter;

namespace cli {

/// The quality of one pair of neighbours, slices lower and lower + 1, in percent.
struct PairQuality {
  int lower = 0;
  double before = 0.0;
  double after = 0.0;
};

/// The results of an alignment in slice order.
std::vector<PairQuality> inSliceOrder(std::span<const ZxAlignPairResult> pairs);

/// Axis from min to max with a tick at every multiple of step inside.
struct PlotAxis {
  double min = 0.0;
  double max = 1.0;
  double step = 0.2;
};

/// The axis of round numbers that holds [low, high] with at most so many steps.
PlotAxis chooseAxis(double low, double high, int maxSteps);

/// Paints the qualities before and after over the pairs: a curve each, bars where there are few pairs. Axes,
/// labels and legend lie inside the area.
void paintQualityPlot(QPainter& painter, const QRect& area, const std::vector<PairQuality>& pairs);

} // namespace cli
