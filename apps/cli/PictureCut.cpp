#include "PictureCut.h"

#include "SlicePlacement.h"
#include "io/Error.h"
#include "mc/McRound.h"
#include "zx/ZxWorkArea.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace cli {
namespace {

PictureCut emptyCut(const ZxLattice& lattice, int width)
{
  PictureCut cut{width, lattice.getDims().slices, {}, {}};
  const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(cut.slices);
  if (lattice.isColor())
    cut.colour.assign(pixels, qRgba(0, 0, 0, 0));
  else
    cut.grey.assign(pixels, std::numeric_limits<float>::quiet_NaN());
  return cut;
}

/// Stores a voxel; of several values that are no colour the first one.
void setVoxel(PictureCut& cut, std::size_t pixel, const std::byte* voxel, McPrimType type)
{
  if (cut.isColour()) {
    const auto* rgb = reinterpret_cast<const std::uint8_t*>(voxel);
    cut.colour[pixel] = qRgb(rgb[0], rgb[1], rgb[2]);
    return;
  }
  mcVisit(type, [&](auto value) {
    std::memcpy(&value, voxel, sizeof value);
    cut.grey[pixel] = static_cast<float>(value);
  });
}

/// Fills the row of a cut that a slice has in it with a line of the slice's voxels.
void cutLine(PictureCut& cut, ZxLattice& lattice, const ZxBox3i& line)
{
  const ZxLatticeShape& shape = lattice.shape();
  std::vector<std::byte> voxels(line.size.voxels() * shape.voxelBytes());
  if (!lattice.readBox(line, voxels.data())) throw io::Error("The volume for the picture cannot be read.");
  const std::size_t first = static_cast<std::size_t>(line.z) * static_cast<std::size_t>(cut.width);
  for (std::size_t i = 0; i < line.size.voxels(); ++i)
    setVoxel(cut, first + i, voxels.data() + i * shape.voxelBytes(), shape.primType);
}

/// The bytes of a slice, copied where they are not in memory.
const std::byte* sliceBytes(ZxLattice& lattice, int k, std::vector<std::byte>& buffer)
{
  if (const void* bytes = lattice.sliceInMemory(k)) return static_cast<const std::byte*>(bytes);
  buffer.resize(lattice.shape().sliceBytes());
  if (!lattice.readSlice(k, buffer.data())) throw io::Error("The volume for the picture cannot be read.");
  return buffer.data();
}

/// Fills row k of a cut: pixel i takes the voxel of the slice that lies nearest to pointAt(i).
template <class PointAt>
void cutSlice(PictureCut& cut, int k, const std::byte* bytes, const ZxLatticeShape& shape,
              const SlicePlacement& placement, PointAt pointAt)
{
  for (int i = 0; i < cut.width; ++i) {
    const SlicePoint source = placement.mapInverse(pointAt(i));
    const int x = mc::roundHalfUp(source.x), y = mc::roundHalfUp(source.y);
    if (x < 0 || y < 0 || x >= shape.dims.width || y >= shape.dims.height) continue;
    const auto voxel = static_cast<std::size_t>(y) * static_cast<std::size_t>(shape.dims.width) +
                       static_cast<std::size_t>(x);
    const auto pixel =
        static_cast<std::size_t>(k) * static_cast<std::size_t>(cut.width) + static_cast<std::size_t>(i);
    setVoxel(cut, pixel, bytes + voxel * shape.voxelBytes(), shape.primType);
  }
}

float takePercentile(std::vector<float>& values, double share)
{
  const double position = share * static_cast<double>(values.size() - 1);
  const auto nth = values.begin() + mc::floorToInt64(position);
  std::nth_element(values.begin(), nth, values.end());
  return *nth;
}

QRgb greyPixel(float value, const GreyWindow& window)
{
  if (std::isnan(value)) return qRgba(0, 0, 0, 0);
  const double share = (static_cast<double>(value) - window.min) /
                       (static_cast<double>(window.max) - static_cast<double>(window.min));
  const int grey = mc::roundHalfUp(255.0 * std::clamp(share, 0.0, 1.0));
  return qRgb(grey, grey, grey);
}

} // namespace

PictureCuts cutStack(ZxLattice& lattice)
{
  const ZxDims& dims = lattice.getDims();
  PictureCuts cuts{emptyCut(lattice, dims.width), emptyCut(lattice, dims.height)};
  // Slice by slice: the lines of one slice come from what has been read of it.
  for (int k = 0; k < dims.slices; ++k) {
    if (ZxWorkArea::getTheWorkArea()->wasInterrupted(1)) throw io::Interrupted();
    cutLine(cuts.alongX, lattice, {0, dims.height / 2, k, {dims.width, 1, 1}});
    cutLine(cuts.alongY, lattice, {dims.width / 2, 0, k, {1, dims.height, 1}});
  }
  return cuts;
}

PictureCuts cutThroughTransforms(ZxLattice& lattice, std::span<const ZxAlignTransform> transforms)
{
  const ZxLatticeShape& shape = lattice.shape();
  PictureCuts cuts{emptyCut(lattice, shape.dims.width), emptyCut(lattice, shape.dims.height)};
  const double column = shape.dims.width / 2, row = shape.dims.height / 2;
  const int slices = std::min(shape.dims.slices, static_cast<int>(transforms.size()));
  std::vector<std::byte> buffer;
  for (int k = 0; k < slices; ++k) {
    if (ZxWorkArea::getTheWorkArea()->wasInterrupted(1)) throw io::Interrupted();
    const std::byte* bytes = sliceBytes(lattice, k, buffer);
    const SlicePlacement placement(transforms[static_cast<std::size_t>(k)], shape.dims.width,
                                   shape.dims.height);
    cutSlice(cuts.alongX, k, bytes, shape, placement, [row](int i) {
      return SlicePoint{static_cast<double>(i), row};
    });
    cutSlice(cuts.alongY, k, bytes, shape, placement, [column](int i) {
      return SlicePoint{column, static_cast<double>(i)};
    });
  }
  return cuts;
}

GreyWindow chooseWindow(const PictureCuts& cuts)
{
  std::vector<float> values;
  for (const PictureCut* cut : {&cuts.alongX, &cuts.alongY})
    std::copy_if(cut->grey.begin(), cut->grey.end(), std::back_inserter(values),
                 [](float v) { return std::isfinite(v); });
  if (values.empty()) return {0.0f, 1.0f};
  const GreyWindow window{takePercentile(values, 0.005), takePercentile(values, 0.995)};
  return window.max > window.min ? window : GreyWindow{window.min, window.min + 1.0f};
}

QImage cutImage(const PictureCut& cut, const GreyWindow& window)
{
  QImage image(cut.width, cut.slices, QImage::Format_ARGB32);
  std::size_t pixel = 0;
  for (int k = 0; k < cut.slices && !image.isNull(); ++k) {
    auto* line = reinterpret_cast<QRgb*>(image.scanLine(k));
    for (int i = 0; i < cut.width; ++i, ++pixel)
      line[i] = cut.isColour() ? cut.colour[pixel] : greyPixel(cut.grey[pixel], window);
  }
  return image;
}

} // namespace cli
