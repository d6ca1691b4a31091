#include "ReducedVoxels.h"

#include "SliceResampling.h"
#include "kernels/BlockMean.h"
#include "zx/ZxField3.h"

#include <cstring>
#include <memory>
#include <type_traits>
#include <utility>

namespace {

/// Voxels and pixels of the reduced slices are so many times as large.
ZxBox3f boxOf(const ZxLattice& lattice, const ZxDims& reduced, int factor)
{
  const ZxDims& dims = lattice.getDims();
  ZxBox3f box = lattice.getBoundingBox();
  const auto step = [](float length, int n) { return n > 1 ? length / static_cast<float>(n - 1) : 1.0f; };
  const auto f = static_cast<float>(factor);
  box.xmax = box.xmin + step(box.xmax - box.xmin, dims.width) * f * static_cast<float>(reduced.width - 1);
  box.ymax = box.ymin + step(box.ymax - box.ymin, dims.height) * f * static_cast<float>(reduced.height - 1);
  return box;
}

} // namespace

ReducedVoxels::ReducedVoxels(McHandle<ZxSpatialData> data, int factor)
  : m_data(std::move(data)), m_input(*m_data->getLattice()), m_shape(shapeOf(m_input.shape(), factor)),
    m_factor(factor)
{
}

ZxLatticeShape ReducedVoxels::shapeOf(ZxLatticeShape shape, int factor)
{
  shape.dims.width /= factor;
  shape.dims.height /= factor;
  return shape;
}

McHandle<ZxSpatialData> ReducedVoxels::reduce(const McHandle<ZxSpatialData>& data, int factor)
{
  if (!data || !data->getLattice() || factor < 1) return {};
  const ZxLattice& input = *data->getLattice();
  const ZxLatticeShape shape = shapeOf(input.shape(), factor);
  if (shape.dims.width < 1 || shape.dims.height < 1) return {};
  auto voxels = std::make_unique<ReducedVoxels>(data, factor);
  const ZxBox3f box = boxOf(input, shape.dims, factor);
  McHandle<ZxSpatialData> reduced;
  if (holdsLabels(input)) {
    auto lattice = std::make_unique<ZxLabelLattice3>(shape, std::move(voxels));
    lattice->setBoundingBox(box);
    reduced = mcMake<ZxUniformLabelField3>(std::move(lattice));
  } else {
    auto lattice = std::make_unique<ZxLattice3>(shape, std::move(voxels));
    lattice->setBoundingBox(box);
    reduced = ZxField3::create(std::move(lattice));
  }
  reduced->setLabel(data->getLabel());
  return reduced;
}

bool ReducedVoxels::readSlice(int k, void* dst)
{
  const Kept* kept = slice(k);
  if (kept) std::memcpy(dst, kept->voxels.data(), kept->voxels.size());
  return kept;
}

bool ReducedVoxels::readBox(const ZxBox3i& box, void* dst)
{
  const std::size_t voxel = m_shape.voxelBytes(), row = static_cast<std::size_t>(m_shape.dims.width) * voxel;
  const std::size_t bytes = static_cast<std::size_t>(box.size.width) * voxel;
  auto* out = static_cast<unsigned char*>(dst);
  for (int k = box.z; k < box.z + box.size.slices; ++k) {
    const Kept* kept = slice(k);
    if (!kept) return false;
    for (int y = box.y; y < box.y + box.size.height; ++y, out += bytes)
      std::memcpy(out,
                  kept->voxels.data() + static_cast<std::size_t>(y) * row +
                      static_cast<std::size_t>(box.x) * voxel,
                  bytes);
  }
  return true;
}

const ReducedVoxels::Kept* ReducedVoxels::slice(int k)
{
  for (const Kept& kept : m_kept)
    if (kept.slice == k) return &kept;
  Kept& kept = m_kept[m_next];
  m_next = (m_next + 1) % m_kept.size();
  kept.slice = -1;
  kept.voxels.resize(m_shape.sliceBytes());
  if (!reduceSlice(k, kept.voxels.data())) return nullptr;
  kept.slice = k;
  return &kept;
}

bool ReducedVoxels::reduceSlice(int k, void* dst)
{
  const void* source = m_input.sliceInMemory(k);
  if (!source) {
    m_whole.resize(m_input.shape().sliceBytes());
    if (!m_input.readSlice(k, m_whole.data())) return false;
    source = m_whole.data();
  }
  const ZxDims& dims = m_input.getDims();
  mcVisit(m_input.primType(), [&](auto zero) {
    using T = decltype(zero);
    const T* from = static_cast<const T*>(source);
    T* to = static_cast<T*>(dst);
    if (holdsLabels(m_input))
      kernels::blockCentre(from, dims.width, dims.height, m_factor, to);
    else
      kernels::blockMean(from, dims.width, dims.height, m_input.getNumDataVars(), m_factor, to);
  });
  return true;
}
