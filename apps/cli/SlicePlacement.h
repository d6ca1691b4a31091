#pragma once

#include "mc/McMath.h"
#include "zxalign/ZxAlignControl.h"

namespace cli {

/// A point of a slice or of the aligned frame, in pixels; y downwards.
struct SlicePoint {
  double x = 0.0;
  double y = 0.0;
};

/// Where a slice lies: its transform as a map of points, in double precision.
class SlicePlacement {
public:
  /// width and height in pixels fix the centre: (width / 2, height / 2), integer halves.
  SlicePlacement(const ZxAlignTransform& transform, int width, int height)
    : m_shift{transform.tx, transform.ty}, m_centre{static_cast<double>(width / 2),
                                                    static_cast<double>(height / 2)},
      m_mirror(transform.flip ? -1.0 : 1.0)
  {
    mc::sinCosDegrees(transform.angleDegrees, m_sine, m_cosine);
  }

  /// From the slice into the aligned frame.
  SlicePoint map(SlicePoint p) const
  {
    const double x = m_mirror * (p.x - m_centre.x);
    const double y = p.y - m_centre.y;
    return {x * m_cosine + y * m_sine + m_shift.x + m_centre.x,
            -x * m_sine + y * m_cosine + m_shift.y + m_centre.y};
  }

  /// From the aligned frame into the slice.
  SlicePoint mapInverse(SlicePoint p) const
  {
    const double x = p.x - m_shift.x - m_centre.x;
    const double y = p.y - m_shift.y - m_centre.y;
    return {m_mirror * (x * m_cosine - y * m_sine) + m_centre.x, x * m_sine + y * m_cosine + m_centre.y};
  }

private:
  SlicePoint m_shift;
  SlicePoint m_centre;
  double m_mirror;
  double m_sine = 0.0;
  double m_cosine = 1.0;
};

} // namespace cli
