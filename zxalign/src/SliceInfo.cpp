#include "zxalign/SliceInfo.h"

void SliceInfo::getLandmarks(McDArray<QPoint>& out, int width) const
{
  out = landmarks;
  if (!flip) return;
  for (QPoint& p : out) p.setX(width - 1 - p.x());
}

bool SliceInfo::operator==(const SliceInfo& other) const
{
  return translationX == other.translationX && translationY == other.translationY &&
         rotation == other.rotation && flip == other.flip && landmarks == other.landmarks;
}
