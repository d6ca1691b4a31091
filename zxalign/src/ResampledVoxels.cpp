#include "ResampledVoxels.h"

#include "zx/ZxMessage.h"
#include "zx/ZxWorkArea.h"

#include <cstring>
#include <utility>

namespace {

/// The part of a frame's output that starts at column x and row y.
kernels::ResampleFrame cut(kernels::ResampleFrame frame, const ZxBox3i& box)
{
  frame.left -= box.x;
  frame.top -= box.y;
  frame.outWidth = box.size.width;
  frame.outHeight = box.size.height;
  return frame;
}

} // namespace

ResampledVoxels::ResampledVoxels(McHandle<ZxSpatialData> input, SliceResampling how, Kind kind, int slices)
  : m_data(std::move(input)), m_input(*m_data->getLattice()), m_how(std::move(how)), m_kind(kind),
    m_slices(slices)
{
}

bool ResampledVoxels::readSlice(int k, void* dst)
{
  ZxWorkArea::getTheWorkArea()->setProgressText("Resampling slice %d of %d", k + 1, m_slices);
  const ZxBox3i whole{0, 0, k, {m_how.width(), m_how.height(), 1}};
  return resample(k, cut(m_how.frame(k, m_input.getDims()), whole), SliceResampling::Tell::Yes, dst);
}

bool ResampledVoxels::readBox(const ZxBox3i& box, void* dst)
{
  const std::size_t bytes = box.size.slicePixels() * m_input.shape().voxelBytes();
  auto* out = static_cast<unsigned char*>(dst);
  for (int k = box.z; k < box.z + box.size.slices; ++k, out += bytes)
    if (!resample(k, cut(m_how.frame(k, m_input.getDims()), box), SliceResampling::Tell::No, out))
      return false;
  return true;
}

const void* ResampledVoxels::source(int k)
{
  if (const void* bytes = m_input.sliceInMemory(k)) return bytes;
  if (k == m_read) return m_slice.data();
  m_read = -1;
  m_slice.resize(m_input.shape().sliceBytes());
  if (!m_input.readSlice(k, m_slice.data())) {
    ZxMessage::getTheMsg()->printf("Slice %d of %s cannot be read.", k, m_data->getLabel().getString());
    return nullptr;
  }
  m_read = k;
  return m_slice.data();
}

bool ResampledVoxels::resample(int k, const kernels::ResampleFrame& frame, SliceResampling::Tell tell,
                               void* dst)
{
  const auto goOn = [](int) { return !ZxWorkArea::getTheWorkArea()->wasInterrupted(1); };
  const ZxLatticeShape& shape = m_input.shape();
  if (k >= shape.dims.slices) {
    std::memset(dst, 0,
                ZxDims{frame.outWidth, frame.outHeight, 1}.slicePixels() * m_input.shape().voxelBytes());
    return goOn(0);
  }
  const void* bytes = source(k);
  if (!bytes) return false;
  if (m_kind == Kind::Image)
    return m_how.image(frame, m_input, bytes, m_how.background(k, bytes, shape, tell), dst, goOn);
  SliceResampling::labels(frame, shape.primType, bytes, dst);
  return goOn(0);
}
