#include "RowSpans.h"

#include "FixedWalk.h"

#include <algorithm>

namespace kernels {

namespace {

/// floor((start + j * step) / divisor) for j = 0, 1, ...: one division at the beginning, additions after.
class SteppedFloor {
public:
  SteppedFloor(std::int64_t start, std::int64_t step, std::int64_t divisor)
    : m_divisor(divisor), m_quotient(floorDiv(start, divisor)), m_rest(start - m_quotient * divisor),
      m_step(floorDiv(step, divisor)), m_stepRest(step - m_step * divisor)
  {
  }
  std::int64_t value() const { return m_quotient; }
  void next()
  {
    m_quotient += m_step;
    m_rest += m_stepRest;
    const bool carries = m_rest >= m_divisor;
    m_rest -= carries ? m_divisor : 0;
    m_quotient += carries ? 1 : 0;
  }

private:
  std::int64_t m_divisor, m_quotient, m_rest, m_step, m_stepRest;
};

/// A coordinate over the grid: start + j * rowStep + i * columnStep for column i of row j.
struct Axis {
  std::int64_t start, rowStep, columnStep;
};

void narrow(RowSpan& span, std::int64_t begin, std::int64_t end)
{
  span.begin = static_cast<std::int32_t>(std::clamp<std::int64_t>(begin, span.begin, kMaxSide));
  span.end = static_cast<std::int32_t>(std::clamp<std::int64_t>(end, 0, span.end));
}

// The same position in all columns of a row: the row counts or not.
void clipWholeRows(const Axis& axis, std::int64_t limit, int rows, RowSpan* spans)
{
  std::int64_t v = axis.start;
  for (int j = 0; j < rows; ++j, v += axis.rowStep)
    if (v < 0 || v >= limit) spans[j].end = 0;
}

/// Keeps the columns where 0 <= coordinate < limit.
void clip(const Axis& axis, std::int64_t limit, int rows, RowSpan* spans)
{
  if (axis.columnStep == 0) return clipWholeRows(axis, limit, rows, spans);
  const bool rises = axis.columnStep > 0;
  const std::int64_t step = rises ? axis.columnStep : -axis.columnStep;
  // Rising: -begin = floor(v / step), last = floor((limit - 1 - v) / step). Falling, with step turned round:
  // last = floor(v / step), first outside at the other end = floor((v - limit) / step).
  SteppedFloor fromZero(axis.start, axis.rowStep, step);
  SteppedFloor fromLimit(rises ? limit - 1 - axis.start : axis.start - limit,
                         rises ? -axis.rowStep : axis.rowStep, step);
  for (int j = 0; j < rows; ++j, fromZero.next(), fromLimit.next()) {
    if (rises)
      narrow(spans[j], -fromZero.value(), fromLimit.value() + 1);
    else
      narrow(spans[j], fromLimit.value() + 1, fromZero.value() + 1);
  }
}

} // namespace

void clipToImage(const PairImage& image, const Affine16& m, int rowBegin, int rows, RowSpan* spans)
{
  const Axis x{m.dx + rowBegin * m.m21, m.m21, m.m11};
  const Axis y{m.dy + rowBegin * m.m22, m.m22, m.m12};
  clip(x, std::int64_t{image.width} << 16, rows, spans);
  clip(y, std::int64_t{image.height} << 16, rows, spans);
}

std::uint64_t countOf(const RowSpan* spans, int rows)
{
  std::uint64_t count = 0;
  for (int j = 0; j < rows; ++j) count += static_cast<std::uint64_t>(spans[j].size());
  return count;
}

} // namespace kernels
