#include "OrthoLines.h"

#include "kernels/CutLine.h"
#include "kernels/LineProjection.h"
#include "mc/McLine.h"
#include "mc/McRound.h"

#include <QTransform>

#include <algorithm>
#include <cstddef>

namespace {

// How far beside the slice a line may lie before it misses it, in pixels.
constexpr double kTolerance = 0.0001;

/// The indices from the smaller position, cut off, to the larger one, rounded, within 0 ... size - 1. False
/// when there are none.
bool indexRange(double a, double b, int size, int& first, int& last)
{
  first = std::max(mc::truncToInt(std::min(a, b)), 0);
  last = std::min(mc::addHalfAndTrunc(std::max(a, b)), size - 1);
  return first <= last;
}

} // namespace

OrthoLines::OrthoLines(const ZxLatticeShape& shape, const SliceXForm& transform) : m_shape(shape)
{
  QTransform m;
  transform.getInverseMatrix(m, static_cast<float>(m_shape.dims.width / 2),
                             static_cast<float>(m_shape.dims.height / 2));
  m_inverse = {m.m11(), m.m12(), m.m21(), m.m22(), m.dx(), m.dy()};
}

bool OrthoLines::boxOf(OrthoCoordinate constant, int position, McBox2i& box) const
{
  const double fixed = position;
  const bool alongY = constant == OrthoCoordinate::X;
  const double x1 = alongY ? fixed : 0.0;
  const double y1 = alongY ? 0.0 : fixed;
  const double x2 = alongY ? fixed : m_shape.dims.width - 1;
  const double y2 = alongY ? m_shape.dims.height - 1 : fixed;
  box = {};
  McBox2i touched;
  if (!indexRange(m_inverse.mapX(x1, y1), m_inverse.mapX(x2, y2), m_shape.dims.width, touched.xMin,
                  touched.xMax))
    return false;
  if (!indexRange(m_inverse.mapY(x1, y1), m_inverse.mapY(x2, y2), m_shape.dims.height, touched.yMin,
                  touched.yMax))
    return false;
  box = touched;
  return true;
}

bool OrthoLines::cut(ZxLattice& lattice, int z, OrthoCoordinate constant, int position, const McBox2i& box,
                     std::vector<unsigned char>& buffer, unsigned char* pixels) const
{
  kernels::VoxelBox voxels;
  voxels.voxelBytes = m_shape.voxelBytes();
  voxels.x = box.xMin;
  voxels.y = box.yMin;
  voxels.width = box.xMax - box.xMin + 1;
  voxels.height = box.yMax - box.yMin + 1;
  if (const auto* slice = static_cast<const unsigned char*>(lattice.sliceInMemory(z))) {
    voxels.rowBytes = static_cast<std::size_t>(m_shape.dims.width) * voxels.voxelBytes;
    voxels.voxels = slice + static_cast<std::size_t>(box.yMin) * voxels.rowBytes +
                    static_cast<std::size_t>(box.xMin) * voxels.voxelBytes;
  } else {
    voxels.rowBytes = static_cast<std::size_t>(voxels.width) * voxels.voxelBytes;
    buffer.resize(voxels.rowBytes * static_cast<std::size_t>(voxels.height));
    if (!lattice.readBox({box.xMin, box.yMin, z, {voxels.width, voxels.height, 1}}, buffer.data()))
      return false;
    voxels.voxels = buffer.data();
  }
  const bool alongX = constant == OrthoCoordinate::Y;
  const int count = alongX ? m_shape.dims.width : m_shape.dims.height;
  kernels::cutLine(voxels, m_inverse, {alongX, position, count}, pixels);
  return true;
}

void OrthoLines::project(const void* slice, OrthoCoordinate constant, int first, int last,
                         unsigned char* pixels) const
{
  if (first > last) return;
  const ZxDims& d = m_shape.dims;
  // A slice one pixel wide gives a line its direction, too.
  const double endX = constant == OrthoCoordinate::X ? 0.0 : std::max(d.width - 1, 1);
  const double endY = constant == OrthoCoordinate::X ? std::max(d.height - 1, 1) : 0.0;
  std::vector<kernels::SampleLine> lines(static_cast<std::size_t>(last - first + 1));
  for (int i = first; i <= last; ++i) {
    const double x = constant == OrthoCoordinate::X ? i : 0.0;
    const double y = constant == OrthoCoordinate::X ? 0.0 : i;
    const McLine line{m_inverse.mapX(x, y), m_inverse.mapY(x, y), m_inverse.mapX(x + endX, y + endY),
                      m_inverse.mapY(x + endX, y + endY)};
    McLine part;
    if (line.intersect(0.0, 0.0, d.width - 1, d.height - 1, kTolerance, part))
      lines[static_cast<std::size_t>(i - first)] = kernels::sampleSegment(part.x1, part.y1, part.x2, part.y2);
  }
  mcVisit(m_shape.primType, [&](auto zero) {
    using T = decltype(zero);
    kernels::projectLines(
        static_cast<const T*>(slice), d.width, d.height, m_shape.numDataVars, lines.data(),
        static_cast<int>(lines.size()),
        reinterpret_cast<T*>(pixels + static_cast<std::size_t>(first) * m_shape.voxelBytes()));
  });
}
