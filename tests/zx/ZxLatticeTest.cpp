#include "support/Volumes.h"
#include "zx/ZxMemory.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

/// A source that must be read slice by slice, and whose last slice cannot be.
class Broken : public ZxVoxelSource {
public:
  bool readSlice(int k, void* dst) override
  {
    std::memset(dst, k + 1, 6);
    return k < 2;
  }
  bool readBox(const ZxBox3i&, void*) override { return false; }
  const void* sliceInMemory(int) const override { return nullptr; }
  void* beginWrite(int) override { return nullptr; }
  bool endWrite(int) override { return false; }
};

template <class T>
std::pair<float, float> rangeOf(const std::vector<T>& values)
{
  const auto n = static_cast<int>(values.size() / 2);
  auto lattice = ZxLattice3::create({{n, 1, 2}, 1, mcPrimTypeOf<T>, ZxCoordType::Uniform});
  fillLattice<T>(*lattice,
                 [&](int x, int, int k, int) { return values[static_cast<std::size_t>(k * n + x)]; });
  float min = 9, max = 9;
  lattice->getRange(min, max);
  return {min, max};
}

} // namespace

TEST(ZxLattice, FindsTheRangeOfFiniteValues)
{
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float inf = std::numeric_limits<float>::infinity();
  using Range = std::pair<float, float>;
  EXPECT_EQ(rangeOf<std::int16_t>({5, -7, 30000, 0}), Range(-7, 30000));
  EXPECT_EQ(rangeOf<std::uint8_t>({255, 255}), Range(255, 255));
  EXPECT_EQ(rangeOf<float>({nan, 2, -inf, -3.5f, inf, 1}), Range(-3.5f, 2));
  EXPECT_EQ(rangeOf<double>({nan, inf}), Range(0, 0));
  ZxLattice broken({{6, 1, 3}, 1, McPrimType::UInt8, ZxCoordType::Uniform}, std::make_unique<Broken>());
  float min = 9, max = 9;
  broken.getRange(min, max);
  EXPECT_EQ(Range(min, max), Range(0, 0));
  ZxLattice whole({{6, 1, 2}, 1, McPrimType::UInt8, ZxCoordType::Uniform}, std::make_unique<Broken>());
  whole.getRange(min, max);
  EXPECT_EQ(Range(min, max), Range(1, 2));
}

TEST(ZxLattice, ReadsSlicesAndBoxes)
{
  const ZxDims dims{5, 4, 3};
  const auto value = [](int x, int y, int k, int c) { return 1000 * k + 100 * y + 10 * x + c; };
  for (const int vars : {1, 4}) {
    auto lattice = ZxLattice3::create({dims, vars, McPrimType::Int16, ZxCoordType::Uniform});
    EXPECT_EQ(valuesOf<std::int16_t>(*lattice),
              std::vector<std::int16_t>(60U * static_cast<unsigned>(vars), 0));
    fillLattice<std::int16_t>(*lattice, value);
    std::vector<std::int16_t> box(static_cast<std::size_t>(3 * 2 * 2 * vars), -1);
    EXPECT_TRUE(lattice->readBox({1, 2, 1, {3, 2, 2}}, box.data()));
    std::size_t i = 0;
    for (int k = 1; k < 3; ++k)
      for (int y = 2; y < 4; ++y)
        for (int x = 1; x < 4; ++x)
          for (int c = 0; c < vars; ++c) EXPECT_EQ(box[i++], value(x, y, k, c));
    EXPECT_EQ(static_cast<const std::int16_t*>(lattice->sliceInMemory(2))[5 * vars], 2100);
    EXPECT_EQ(lattice->shape().sliceBytes(), static_cast<std::size_t>(40 * vars));
    EXPECT_EQ(lattice->getBoundingBox(), (ZxBox3f{0, 4, 0, 3, 0, 2}));
  }
}

TEST(ZxLattice, RefusesWhatCannotBeInMemory)
{
  const auto made = [](ZxDims dims, int vars) {
    return ZxLattice3::create({dims, vars, McPrimType::Double, ZxCoordType::Uniform}) != nullptr;
  };
  const int most = std::numeric_limits<int>::max();
  EXPECT_TRUE(made({1, 1, 1}, 1));
  for (const ZxDims& d : {ZxDims{0, 1, 1}, {1, -1, 1}, {1, 1, 0}, {most, most, 1}, {most, most, most}})
    EXPECT_FALSE(made(d, 1));
  EXPECT_FALSE(made({1, 1, 1}, 0));
  // Products that are small again modulo 2^64.
  EXPECT_FALSE(made({1 << 30, 1 << 30, 16}, 1));
  EXPECT_GT(zxAvailableMemory(), 1U << 20);
}

TEST(ZxLattice, KnowsWhatLabelsAndColoursAre)
{
  const auto label = [](McPrimType type, int vars) {
    return ZxLabelLattice3::create({{2, 2, 2}, vars, type, ZxCoordType::Uniform}) != nullptr;
  };
  for (const McPrimType type :
       {McPrimType::UInt8, McPrimType::Int16, McPrimType::UInt16, McPrimType::Int32}) {
    EXPECT_TRUE(label(type, 1)) << mcNameOf(type);
    EXPECT_FALSE(label(type, 4)) << mcNameOf(type);
  }
  for (const McPrimType type : {McPrimType::Float, McPrimType::Double}) EXPECT_FALSE(label(type, 1));

  const auto kind = [](int vars, McPrimType type, ZxCoordType coords) {
    return ZxField3::create(ZxLattice3::create({{2, 2, 2}, vars, type, coords}))->getTypeId().name();
  };
  EXPECT_EQ(kind(4, McPrimType::UInt8, ZxCoordType::Uniform), "ZxUniformColorField3");
  EXPECT_EQ(kind(4, McPrimType::UInt16, ZxCoordType::Uniform), "ZxRegScalarField3");
  EXPECT_EQ(kind(1, McPrimType::UInt8, ZxCoordType::Uniform), "ZxRegScalarField3");
  EXPECT_EQ(kind(1, McPrimType::UInt8, ZxCoordType::Stacked), "ZxStackedScalarField3");
}
