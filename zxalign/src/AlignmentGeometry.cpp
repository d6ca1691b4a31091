#include "AlignmentGeometry.h"

#include "AlignmentMatrix.h"
#include "mc/McRound.h"

#include <algorithm>

namespace {

struct Bounds {
  double xmin = 0, xmax = 0, ymin = 0, ymax = 0;
};

/// Distance of neighbouring voxels along an axis of n voxels; 0 where there is only one.
double voxelStep(float min, float max, int n)
{
  return n > 1 ? (static_cast<double>(max) - static_cast<double>(min)) / (n - 1) : 0.0;
}

/// The box around the input's corners as all slices transform them, in physical units.
Bounds transformedBounds(const McDArray<SliceInfo>& slices, const ZxDims& dims, const ZxBox3f& box)
{
  const double step = voxelStep(box.xmin, box.xmax, dims.width);
  Bounds bounds;
  bool first = true;
  for (const SliceInfo& slice : slices) {
    QTransform m;
    slice.getMatrix(m, sliceCentre(dims.width), sliceCentre(dims.height));
    m = QTransform(m.m11(), m.m12(), m.m21(), m.m22(), m.dx() * step, m.dy() * step);
    for (const float x : {box.xmin, box.xmax})
      for (const float y : {box.ymin, box.ymax}) {
        const QPointF p = mapPoint(m, x, y);
        if (first) bounds = {p.x(), p.x(), p.y(), p.y()};
        first = false;
        bounds.xmin = std::min(bounds.xmin, p.x());
        bounds.xmax = std::max(bounds.xmax, p.x());
        bounds.ymin = std::min(bounds.ymin, p.y());
        bounds.ymax = std::max(bounds.ymax, p.y());
      }
  }
  return bounds;
}

int pixelsOf(double extent, float min, float max, int n)
{
  const double size = static_cast<double>(max) - static_cast<double>(min);
  return size > 0.0 ? mc::truncToInt(n * extent / size) : n;
}

int pixelOffset(float min, double boundsMin, double step)
{
  if (!(step > 0.0)) return 0;
  // Far beyond every image, and far enough from the limits of an integer for sums of sizes and borders.
  constexpr double farthest = 1 << 29;
  return mc::truncToInt(std::clamp(static_cast<double>(min) - boundsMin / step, -farthest, farthest));
}

float scaledMaximum(float max, int outputSize, int size)
{
  return size > 1 ? static_cast<float>(static_cast<double>(max) * (outputSize - 1) / (size - 1)) : max;
}

} // namespace

void minimalOutputSize(const McDArray<SliceInfo>& slices, const ZxDims& dims, const ZxBox3f& box, int& width,
                       int& height)
{
  const Bounds b = transformedBounds(slices, dims, box);
  width = pixelsOf(b.xmax - b.xmin, box.xmin, box.xmax, dims.width);
  height = pixelsOf(b.ymax - b.ymin, box.ymin, box.ymax, dims.height);
}

OutputBorders centredBorders(const ZxDims& dims, int outputWidth, int outputHeight)
{
  const int dx = outputWidth - dims.width;
  const int dy = outputHeight - dims.height;
  OutputBorders b;
  b.left = dx / 2 + dx % 2;
  b.right = dx - b.left;
  b.top = dy / 2 + dy % 2;
  b.bottom = dy - b.top;
  return b;
}

OutputBorders originBorders(const McDArray<SliceInfo>& slices, const ZxDims& dims, const ZxBox3f& box,
                            int outputWidth, int outputHeight, int width, int height)
{
  if (width == 0 || height == 0) {
    width = dims.width;
    height = dims.height;
  }
  const Bounds bounds = transformedBounds(slices, dims, box);
  OutputBorders b;
  b.left = pixelOffset(box.xmin, bounds.xmin, voxelStep(box.xmin, box.xmax, dims.width));
  b.right = outputWidth - width - b.left;
  b.top = pixelOffset(box.ymin, bounds.ymin, voxelStep(box.ymin, box.ymax, height));
  b.bottom = outputHeight - height - b.top;
  return b;
}

ZxBox3f outputBox(const ZxDims& dims, const ZxBox3f& box, int outputWidth, int outputHeight)
{
  ZxBox3f out = box;
  out.xmax = scaledMaximum(box.xmax, outputWidth, dims.width);
  out.ymax = scaledMaximum(box.ymax, outputHeight, dims.height);
  return out;
}
