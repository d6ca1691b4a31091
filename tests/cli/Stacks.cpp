#include "Stacks.h"

#include "io/Volume.h"

#include <gtest/gtest.h>

namespace test {
namespace {

/// Spreads an index over 32 bits.
std::uint32_t scrambled(std::uint64_t index)
{
  std::uint64_t h = (index + 1) * 0x9E3779B97F4A7C15ull;
  h ^= h >> 29;
  return static_cast<std::uint32_t>(h * 0xBF58476D1CE4E5B9ull >> 32);
}

template <class T>
T noiseValue(std::uint64_t index)
{
  const std::uint32_t bits = scrambled(index);
  if constexpr (std::is_floating_point_v<T>)
    return static_cast<T>(static_cast<int>(bits % 200001) - 100000) / static_cast<T>(7);
  else if constexpr (sizeof(T) == 4)
    return static_cast<T>(bits % (2u << 24)) - (1 << 24);
  else
    return static_cast<T>(bits);
}

} // namespace

McHandle<ZxField3> noiseField(const ZxLatticeShape& shape)
{
  std::unique_ptr<ZxLattice3> lattice = ZxLattice3::create(shape);
  std::uint64_t index = 0;
  for (int k = 0; k < shape.dims.slices; ++k) {
    void* slice = lattice->beginWrite(k);
    mcVisit(shape.primType, [&](auto zero) {
      using T = decltype(zero);
      const std::size_t count = shape.sliceBytes() / sizeof(T);
      for (std::size_t i = 0; i < count; ++i) static_cast<T*>(slice)[i] = noiseValue<T>(index++);
    });
    lattice->endWrite(k);
  }
  return ZxField3::create(std::move(lattice));
}

std::string voxels(ZxSpatialData& data)
{
  ZxLattice& lattice = *data.getLattice();
  const std::size_t bytes = lattice.shape().sliceBytes();
  std::string all(lattice.shape().bytes(), '\0');
  for (int k = 0; k < lattice.getDims().slices; ++k)
    EXPECT_TRUE(lattice.readSlice(k, all.data() + static_cast<std::size_t>(k) * bytes));
  return all;
}

std::string voxelsOf(const std::string& path) { return voxels(*io::readVolume({path})); }

void makePhantom(const std::string& path, int slices, int size, const std::vector<std::string>& more)
{
  Run phantom{{"phantom", path, "--slices", std::to_string(slices), "--size", std::to_string(size)}, {}, {}};
  phantom.arguments.insert(phantom.arguments.end(), more.begin(), more.end());
  const Outcome outcome = run(phantom);
  ASSERT_EQ(outcome.status, 0) << outcome.err;
}

void writeLabels(const std::string& path, const ZxDims& dims)
{
  std::unique_ptr<ZxLabelLattice3> lattice = ZxLabelLattice3::create({dims, 1, McPrimType::UInt8});
  for (int k = 0; k < dims.slices; ++k) {
    auto* slice = static_cast<std::uint8_t*>(lattice->beginWrite(k));
    for (int y = 0; y < dims.height; ++y)
      for (int x = 0; x < dims.width; ++x) *slice++ = x < dims.width / 3 + k && y < dims.height / 2;
    lattice->endWrite(k);
  }
  io::writeVolume(*mcMake<ZxUniformLabelField3>(std::move(lattice)), path);
}

std::string identityTable(int slices)
{
  std::string table = "slice,tx,ty,angle_deg,flip\n";
  for (int k = 0; k < slices; ++k) table += std::to_string(k) + ",0,0,0,0\n";
  return table;
}

} // namespace test
