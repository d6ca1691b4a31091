#include "kernels/CutLine.h"

#include "reference/PlainLines.h"
#include "support/Random.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

using kernels::Affine;
using reference::PlainSlice;

namespace {

constexpr int kWidth = 141;
constexpr int kHeight = 87;

const double kC = std::cos(0.4), kS = std::sin(0.4);
const double kNan = std::numeric_limits<double>::quiet_NaN();

} // namespace

TEST(CutLine, EqualsThePlainLoopForEveryVoxelSizeAndForPartsOfASlice)
{
  const Affine mappings[] = {{},
                             {1, 0, 0, 1, -1.25, -1.5},
                             {-1, 0, 0, 1, kWidth - 1.0, 2.5},
                             {kC, kS, -kS, kC, 20.3, -10.7},
                             {0, 1, -1, 0, 80, 3},
                             {1, 0, 0, 1, 1000, 0},
                             {kNan, 0, 0, 1, 0, 0},
                             {1e300, 0, 0, 1e300, 0, 0}};
  const auto bytes = Random(3).bytes(countOf(kWidth, kHeight, 32));
  for (const std::size_t size : {1, 2, 3, 4, 8, 16, 32})
    for (const Affine& m : mappings)
      for (const kernels::FrameLine line : {kernels::FrameLine{false, 40, kHeight}, {true, 0, kWidth}}) {
        const PlainSlice slice{bytes.data(), McPrimType::UInt8, static_cast<int>(size), kWidth, kHeight};
        std::vector<unsigned char> expected(static_cast<std::size_t>(line.count) * size), out(expected);
        reference::plainCut(slice, m, line, expected.data());
        kernels::cutLine({bytes.data(), kWidth * size, size, 0, 0, kWidth, kHeight}, m, line, out.data());
        EXPECT_EQ(out, expected) << "bytes " << size << " m11 " << m.m11 << " dx " << m.dx;
      }
}

TEST(CutLine, LeavesBlankWhatIsBesideTheBox)
{
  const std::vector<unsigned char> slice{10, 11, 12, 13, 14, 15};
  std::vector<unsigned char> out(6, 9);
  kernels::cutLine({slice.data() + 2, 6, 1, 2, 0, 3, 1}, {}, {true, 0, 6}, out.data());
  EXPECT_EQ(out, (std::vector<unsigned char>{0, 0, 12, 13, 14, 0}));
  // Positions down to just above -1.5 are the first column, -1.5 itself is not.
  kernels::cutLine({slice.data(), 6, 1, 0, 0, 6, 1}, {1, 0, 0, 1, -1.5, 0}, {true, 0, 6}, out.data());
  EXPECT_EQ(out, (std::vector<unsigned char>{0, 10, 11, 12, 13, 14}));
}
