#include "zx/ZxLattice.h"

#include "ZxMemoryVoxels.h"
#include "zx/ZxMemory.h"
#include "zx/ZxWorkArea.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <tuple>
#include <type_traits>
#include <vector>

namespace {

/// Widens [min, max] to the finite values of a run.
template <class T>
void widenRange(const T* values, std::size_t n, T& min, T& max)
{
  for (std::size_t i = 0; i < n; ++i) {
    if constexpr (std::is_floating_point_v<T>)
      if (!std::isfinite(values[i])) continue;
    if (values[i] < min) min = values[i];
    if (values[i] > max) max = values[i];
  }
}

/// True when no value can widen the range any more, which of 8 bits is soon the case.
template <class T>
bool isWidest(T min, T max)
{
  return std::is_integral_v<T> && min == std::numeric_limits<T>::lowest() &&
         max == std::numeric_limits<T>::max();
}

/// False when a slice could not be read or the user wants to stop.
template <class T>
bool rangeOf(ZxLattice& lattice, const std::function<void(float)>& progress, float& min, float& max)
{
  const ZxLatticeShape& shape = lattice.shape();
  const std::size_t n = shape.dims.slicePixels() * static_cast<std::size_t>(shape.numDataVars);
  T lo = std::numeric_limits<T>::has_infinity ? std::numeric_limits<T>::infinity()
                                              : std::numeric_limits<T>::max();
  T hi = std::numeric_limits<T>::has_infinity ? -std::numeric_limits<T>::infinity()
                                              : std::numeric_limits<T>::lowest();
  std::vector<T> copy;
  for (int k = 0; k < shape.dims.slices && !isWidest(lo, hi); ++k) {
    const T* values = static_cast<const T*>(lattice.sliceInMemory(k));
    if (!values) {
      // A volume in a file may be larger than anyone wants to wait for.
      if (ZxWorkArea::getTheWorkArea()->wasInterrupted()) return false;
      copy.resize(n);
      if (!lattice.readSlice(k, copy.data())) return false;
      if (progress) progress(static_cast<float>(k + 1) / static_cast<float>(shape.dims.slices));
      values = copy.data();
    }
    widenRange(values, n, lo, hi);
  }
  if (lo > hi) return true;
  min = static_cast<float>(lo);
  max = static_cast<float>(hi);
  return true;
}

/// n * f, or the largest number when that overflows.
std::size_t multiplied(std::size_t n, std::size_t f) noexcept
{
  std::size_t product = 0;
  return __builtin_mul_overflow(n, f, &product) ? static_cast<std::size_t>(-1) : product;
}

ZxBox3f unitBox(const ZxDims& d) noexcept
{
  return {0, static_cast<float>(d.width - 1), 0, static_cast<float>(d.height - 1),
          0, static_cast<float>(d.slices - 1)};
}

/// A lattice of class L in memory, or null.
template <class L>
std::unique_ptr<L> createInMemory(const ZxLatticeShape& shape)
{
  auto source = ZxLattice::createMemory(shape);
  return source ? std::make_unique<L>(shape, std::move(source)) : nullptr;
}

} // namespace

std::size_t ZxLatticeShape::voxelBytes() const noexcept
{
  return mcSizeOf(primType) * static_cast<std::size_t>(numDataVars);
}

std::size_t ZxLatticeShape::bytes() const noexcept
{
  return multiplied(multiplied(dims.slicePixels(), static_cast<std::size_t>(dims.slices)), voxelBytes());
}

ZxLattice::ZxLattice(const ZxLatticeShape& shape, std::unique_ptr<ZxVoxelSource> source)
  : m_shape(shape), m_box(unitBox(shape.dims)), m_source(std::move(source))
{
}

ZxLattice::~ZxLattice() = default;

std::unique_ptr<ZxVoxelSource> ZxLattice::createMemory(const ZxLatticeShape& shape)
{
  if (shape.dims.width <= 0 || shape.dims.height <= 0 || shape.dims.slices <= 0 || shape.numDataVars <= 0)
    return nullptr;
  const std::size_t bytes = shape.bytes();
  if (bytes > zxAvailableMemory()) return nullptr;
  // calloc: fresh pages come zeroed, and only those that are written cost memory.
  std::unique_ptr<std::byte[], void (*)(void*)> block(static_cast<std::byte*>(std::calloc(bytes, 1)),
                                                      std::free);
  if (!block) return nullptr;
  return std::make_unique<ZxMemoryVoxels>(shape, std::move(block));
}

bool ZxLattice::isValid() const noexcept
{
  const ZxDims& d = m_shape.dims;
  return m_source && d.width > 0 && d.height > 0 && d.slices > 0 && m_shape.numDataVars > 0;
}

void ZxLattice::getRange(float& min, float& max, const std::function<void(float)>& progress)
{
  min = max = 0.0f;
  bool known = m_range.has_value();
  if (known)
    std::tie(min, max) = *m_range;
  else
    mcVisit(primType(), [&](auto zero) { known = rangeOf<decltype(zero)>(*this, progress, min, max); });
  if (known) m_range.emplace(min, max);
}

void* ZxLattice::beginWrite(int k)
{
  if (m_locks > 0) return nullptr;
  m_range.reset();
  return m_source->beginWrite(k);
}

bool ZxLattice::endWrite(int k)
{
  m_range.reset();
  return m_source->endWrite(k);
}

std::unique_ptr<ZxLattice3> ZxLattice3::create(const ZxLatticeShape& shape)
{
  return createInMemory<ZxLattice3>(shape);
}

bool ZxLabelLattice::isLabelType(McPrimType type) noexcept
{
  return type != McPrimType::Float && type != McPrimType::Double;
}

std::unique_ptr<ZxLabelLattice3> ZxLabelLattice3::create(const ZxLatticeShape& shape)
{
  if (!isLabelType(shape.primType) || shape.numDataVars != 1) return nullptr;
  return createInMemory<ZxLabelLattice3>(shape);
}
