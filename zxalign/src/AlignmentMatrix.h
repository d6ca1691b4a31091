#pragma once

#include "kernels/Affine.h"
#include "kernels/PairDifference.h"
#include "mc/McRound.h"

#include <QTransform>

/// A toolkit matrix as the kernels take it.
inline kernels::Affine toAffine(const QTransform& m)
{
  return {m.m11(), m.m12(), m.m21(), m.m22(), m.dx(), m.dy()};
}

/// The same in 16.16 fixed point, each coefficient to the nearest.
inline kernels::Affine16 toAffine16(const QTransform& m)
{
  return {mc::toFixed16(m.m11()), mc::toFixed16(m.m12()), mc::toFixed16(m.m21()),
          mc::toFixed16(m.m22()), mc::toFixed16(m.dx()),  mc::toFixed16(m.dy())};
}

/// The rotation centre along one axis: half the size, in whole pixels.
inline float sliceCentre(int size) { return static_cast<float>(size / 2); }
