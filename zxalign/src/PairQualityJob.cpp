#include "zxalign/PairQualityJob.h"

#include "SliceMapping.h"
#include "zxalign/ZxAlignData.h"
#include "zxalign/ZxAlignSlices.h"

#include <new>

namespace {

/// Equal as values that a quality depends on: NaN equals NaN.
bool same(float a, float b) { return a == b || (a != a && b != b); }

bool same(const SliceXForm& a, const SliceXForm& b)
{
  return same(a.translationX, b.translationX) && same(a.translationY, b.translationY) &&
         same(a.rotation, b.rotation) && a.flip == b.flip;
}

} // namespace

bool PairQualityJob::Key::operator==(const Key& other) const
{
  return same(lower, other.lower) && same(upper, other.upper) && data == other.data && mask == other.mask &&
         same(windowMin, other.windowMin) && same(windowMax, other.windowMax);
}

PairQualityJob::PairQualityJob(ZxAlignSlices& module, int lower)
  : m_module(module), m_data(module.sliceData().getSpatialData()), m_mask(module.maskSource()),
    m_lower(lower), m_mapping(std::make_unique<SliceMapping>(module.sliceData().mapping())),
    m_key(keyOf(module, lower))
{
}

PairQualityJob::~PairQualityJob() = default;

PairQualityJob::Key PairQualityJob::keyOf(ZxAlignSlices& module, int lower)
{
  const SliceMapping mapping = module.sliceData().mapping();
  return {module.getSlice(lower),
          module.getSlice(lower + 1),
          mapping.lattice,
          mapping.mask,
          mapping.min,
          mapping.max};
}

std::optional<float> PairQualityJob::run(Buffers& buffers) const
{
  try {
    return compute(buffers);
  } catch (const std::bad_alloc&) {
    buffers = {}; // What was got of them may be what others lack.
    return {};
  }
}

float PairQualityJob::compute(Buffers& buffers) const
{
  ZxLattice& lattice = *m_mapping->lattice;
  const ZxDims& dims = lattice.getDims();
  const bool colour = lattice.isColor();
  const std::size_t bytes = lattice.shape().sliceBytes();
  const std::size_t values = colour ? 1 : static_cast<std::size_t>(lattice.getNumDataVars());
  buffers.raw.resize(bytes);
  for (int i = 0; i < 2; ++i) {
    buffers.grey[i].resize(dims.slicePixels() * values);
    buffers.colour[i].resize(colour ? bytes : 0);
    mapSlice(*m_mapping, m_lower + i, m_module.sliceData().dataMutex(), buffers.raw.data(),
             buffers.grey[i].data(), colour ? buffers.colour[i].data() : nullptr);
  }
  const auto& images = colour ? buffers.colour : buffers.grey;
  return m_module.computeQuality(images[0].data(), images[1].data(), dims.width, dims.height, colour ? 4 : 1,
                                 m_key.lower, m_key.upper);
}
