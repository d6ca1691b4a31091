#include "support/Volumes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

namespace {

/// A source that must be read slice by slice, and whose third slice cannot be.
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

using Range = std::pair<float, float>;

Range rangeOf(ZxLattice& lattice)
{
  Range range(9, 9);
  lattice.getRange(range.first, range.second);
  return range;
}

template <class T>
Range rangeOf(const std::vector<T>& values)
{
  const auto at = [&](int x, int, int k, int) { return values[static_cast<std::size_t>(2 * k + x)]; };
  return rangeOf(*makeField<T>({2, 1, static_cast<int>(values.size() / 2)}, 1, at)->getLattice());
}

} // namespace

TEST(ZxLattice, FindsTheRangeOfFiniteValues)
{
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float inf = std::numeric_limits<float>::infinity();
  EXPECT_EQ(rangeOf<std::int16_t>({5, -7, 30000, 0}), Range(-7, 30000));
  EXPECT_EQ(rangeOf<float>({nan, 2, -inf, -3.5f, inf, 1}), Range(-3.5f, 2));
  EXPECT_EQ(rangeOf<double>({nan, inf}), Range(0, 0));
  for (const int slices : {2, 3}) {
    ZxLattice lattice({{6, 1, slices}, 1, McPrimType::UInt8, ZxCoordType::Uniform},
                      std::make_unique<Broken>());
    EXPECT_EQ(rangeOf(lattice), slices == 2 ? Range(1, 2) : Range(0, 0));
  }
}

TEST(ZxLattice, ReadsSlicesAndBoxes)
{
  const auto value = [](int x, int y, int k, int c) { return 1000 * k + 100 * y + 10 * x + c; };
  for (const int vars : {1, 4}) {
    const auto field = makeField<std::int16_t>({5, 4, 3}, vars, value);
    ZxLattice& lattice = *field->getLattice();
    std::vector<std::int16_t> box(static_cast<std::size_t>(3 * 2 * 2 * vars), -1);
    EXPECT_TRUE(lattice.readBox({1, 2, 1, {3, 2, 2}}, box.data()));
    std::size_t i = 0;
    for (int k = 1; k < 3; ++k)
      for (int y = 2; y < 4; ++y)
        for (int x = 1; x < 4; ++x)
          for (int c = 0; c < vars; ++c) EXPECT_EQ(box[i++], value(x, y, k, c));
    EXPECT_EQ(static_cast<const std::int16_t*>(lattice.sliceInMemory(2))[5 * vars], 2100);
    EXPECT_EQ(lattice.getBoundingBox(), (ZxBox3f{0, 4, 0, 3, 0, 2}));
  }
}

TEST(ZxLattice, RefusesWhatCannotBe)
{
  constexpr int most = std::numeric_limits<int>::max();
  // The last two: products that are small again modulo 2^64, or as a signed number below 0.
  for (const ZxDims& d : {ZxDims{0, 1, 1}, {1, -1, 1}, {1, 1, 0}, {1 << 30, 1 << 30, 16}, {most, most, most}})
    EXPECT_EQ(ZxLattice3::create({d, 1, McPrimType::Double, ZxCoordType::Uniform}), nullptr);
  EXPECT_EQ(ZxLattice3::create({{1, 1, 1}, 0, McPrimType::UInt8, ZxCoordType::Uniform}), nullptr);
  for (const McPrimType type : {McPrimType::UInt8, McPrimType::Int16, McPrimType::UInt16, McPrimType::Int32,
                                McPrimType::Float, McPrimType::Double}) {
    const bool labels = type != McPrimType::Float && type != McPrimType::Double;
    EXPECT_EQ(ZxLabelLattice3::create({{1, 1, 1}, 1, type, ZxCoordType::Uniform}) != nullptr, labels);
    EXPECT_EQ(ZxLabelLattice3::create({{1, 1, 1}, 4, type, ZxCoordType::Uniform}), nullptr);
  }
}

TEST(ZxField3, IsOfTheKindThatItsLatticeAsksFor)
{
  const auto kind = [](int vars, McPrimType type, ZxCoordType coords) {
    return ZxField3::create(ZxLattice3::create({{2, 2, 2}, vars, type, coords}))->getTypeId().name();
  };
  EXPECT_EQ(kind(4, McPrimType::UInt8, ZxCoordType::Uniform), "ZxUniformColorField3");
  EXPECT_EQ(kind(4, McPrimType::UInt16, ZxCoordType::Uniform), "ZxRegScalarField3");
  EXPECT_EQ(kind(1, McPrimType::UInt8, ZxCoordType::Uniform), "ZxRegScalarField3");
  EXPECT_EQ(kind(1, McPrimType::UInt8, ZxCoordType::Stacked), "ZxStackedScalarField3");
}
