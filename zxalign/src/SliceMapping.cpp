#include "SliceMapping.h"

#include "kernels/GreyMapping.h"
#include "zx/ZxLattice.h"

#include <cstring>
#include <mutex>

namespace {

void mapGrey(const SliceMapping& mapping, const unsigned char* raw, unsigned char* grey)
{
  const ZxLattice& lattice = *mapping.lattice;
  const std::size_t n = lattice.getDims().slicePixels() * static_cast<std::size_t>(lattice.getNumDataVars());
  if (lattice.primType() == McPrimType::UInt8 && mapping.min == 0.0f && mapping.max == 255.0f) {
    std::memcpy(grey, raw, n);
    return;
  }
  mcVisit(lattice.primType(), [&](auto zero) {
    kernels::mapLinear(reinterpret_cast<const decltype(zero)*>(raw), n, mapping.min, mapping.scale(), grey);
  });
}

} // namespace

std::vector<std::uint8_t> readMaskBits(ZxLabelLattice* mask, int slice, ZxMutex& mutex)
{
  std::vector<std::uint8_t> bits;
  if (!mask || slice < 0 || slice >= mask->getDims().slices) return bits;
  const std::size_t n = mask->getDims().slicePixels();
  std::vector<unsigned char> labels(mask->shape().sliceBytes());
  {
    const std::lock_guard lock(mutex);
    if (!mask->readSlice(slice, labels.data())) return bits;
  }
  bits.assign((n + 7) / 8, 0);
  mcVisit(mask->primType(), [&](auto zero) {
    const auto* label = reinterpret_cast<const decltype(zero)*>(labels.data());
    for (std::size_t i = 0; i < n; ++i)
      if (label[i] != 0) bits[i / 8] = static_cast<std::uint8_t>(bits[i / 8] | 1U << (i % 8));
  });
  return bits;
}

bool mapSlice(const SliceMapping& mapping, int slice, ZxMutex& mutex, unsigned char* raw, unsigned char* grey,
              unsigned char* colour)
{
  ZxLattice& lattice = *mapping.lattice;
  const std::vector<std::uint8_t> mask = readMaskBits(mapping.mask, slice, mutex);
  const std::size_t n = lattice.getDims().slicePixels();
  const std::lock_guard lock(mutex);
  const auto* source = static_cast<const unsigned char*>(lattice.sliceInMemory(slice));
  const bool isRead = source || lattice.readSlice(slice, raw);
  if (!isRead) std::memset(raw, 0, lattice.shape().sliceBytes());
  if (!source) source = raw;
  if (!lattice.isColor()) {
    mapGrey(mapping, source, grey);
    colour = nullptr;
  } else {
    kernels::mapColour(source, n, mapping.min, mapping.scale(), grey);
    if (colour) std::memcpy(colour, source, n * 4);
  }
  if (!mask.empty()) kernels::applyMask(mask.data(), n, grey, colour);
  return isRead;
}
