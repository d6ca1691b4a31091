#include "ModuleTest.h"
#include "reference/PlainLeastSquares.h"

#include <array>
#include <cmath>

namespace {

constexpr int kLeastSquares = 1;

/// Slice 0 shows blobs of seeded random shape on a slope, slice 1 the same as it lies under a transform:
/// applying that transform to slice 1 puts it back.
McHandle<ZxField3> displacedPair(const ZxDims& dims, int channels, std::uint32_t seed,
                                 const SliceXForm& truth)
{
  Random random(seed);
  std::array<std::array<double, 4>, 14> blobs;
  for (auto& b : blobs)
    b = {random.real(-60, 60), random.real(-50, 50), random.real(3, 16), random.real(-90, 90)};
  const float cx = static_cast<float>(dims.width / 2), cy = static_cast<float>(dims.height / 2);
  return makeField<std::uint8_t>(dims, channels, [&](int column, int row, int k, int c) {
    McVec2f p{static_cast<float>(column), static_cast<float>(row)};
    if (k == 1) p = truth.map(p, cx, cy);
    const double x = static_cast<double>(p.x - cx), y = static_cast<double>(p.y - cy);
    double v = 120 + 0.2 * x - 0.1 * y;
    for (const auto& [bx, by, r, height] : blobs)
      v += height * std::exp(-((x - bx) * (x - bx) + (y - by) * (y - by)) / (r * r)) * (1 + 0.2 * c);
    return std::clamp(v, 0.0, 255.0);
  });
}

class ZxOptimizeAlignMethodTest : public ModuleTest {
protected:
  /// The result of the plain search on the current pair; the module itself stays as it is.
  reference::PlainLeastSquares plain()
  {
    ZxAlignData& data = module->sliceData();
    const ZxDims& d = data.getDims();
    const bool colour = data.isColorField();
    reference::PlainLeastSquares search({colour ? data.getReferenceColorPtr() : data.getReferenceSlicePtr(),
                                         colour ? data.getEditableColorPtr() : data.getEditableSlicePtr(),
                                         d.width, d.height, colour ? 4 : 1},
                                        module->alignSettings(), module->getSlice(0), module->getSlice(1));
    search.run();
    return search;
  }
};

} // namespace

TEST_F(ZxOptimizeAlignMethodTest, EqualsThePlainSearch)
{
  struct Case {
    ZxDims dims;
    int channels;
    const char *levels, *iterations, *rotation;
    SliceXForm truth, start;
  };
  const Case cases[] = {{{128, 103, 2}, 1, "128", "1000", "on", {3, -5, 6, false}, {}},
                        {{128, 103, 2}, 1, "128", "1000", "off", {7, 4, 2, false}, {2, 1, -3, false}},
                        {{210, 201, 2}, 1, "128", "1000", "on", {-6, 9, -4, false}, {0.5f, 0, 0, false}},
                        {{210, 201, 2}, 1, "1", "1000", "on", {-6, 9, -4, false}, {}},
                        {{70, 64, 2}, 1, "0", "1000", "on", {5, 2, 20, false}, {}},
                        {{99, 120, 2}, 1, "128", "1000", "on", {1, -2, 3, false}, {-4, 0, 0, false}},
                        {{102, 101, 2}, 4, "128", "1000", "on", {4, -3, 5, false}, {}},
                        {{128, 103, 2}, 1, "128", "1", "on", {3, -5, 6, false}, {1, 1, 1, false}},
                        {{128, 103, 2}, 1, "128", "5", "on", {3, -5, 6, false}, {1, 1, 1, false}},
                        {{60, 64, 2}, 1, "128", "5", "on", {3, -5, 6, false}, {1, 1, 1, true}},
                        {{128, 103, 2}, 1, "128", "0", "on", {3, -5, 6, false}, {1.3f, 1, 1, true}}};
  std::uint32_t seed = 10;
  for (const Case& c : cases) {
    connect(module->portData, displacedPair(c.dims, c.channels, ++seed, c.truth));
    module->setSetting("levels", c.levels);
    module->setSetting("iterations", c.iterations);
    module->setSetting("rotation", c.rotation);
    setTransform(0, {0.25f, -1, 4, false});
    setTransform(1, c.start);
    module->setModified(false);
    const reference::PlainLeastSquares search = plain();
    EXPECT_TRUE(search.accepted > 3 || module->alignSettings().maxIterations < 1000) << seed; // not trivial
    EXPECT_EQ(module->doLayout(kLeastSquares), 1);
    // The differences go through the whole-stack operations: turned in place, then shifted.
    SliceXForm expected = c.start;
    expected.rotation += search.editable.rotation - expected.rotation;
    expected.translationX += search.editable.translationX - expected.translationX;
    expected.translationY += search.editable.translationY - expected.translationY;
    EXPECT_TRUE(isAt(1, expected)) << seed;
    EXPECT_TRUE(isAt(0, {0.25f, -1, 4, false}));
    EXPECT_TRUE(module->isModified());
  }
}

TEST_F(ZxOptimizeAlignMethodTest, EndsEarlyOnWideSlices)
{
  // Above 1024 pixels the step of 10 degrees, like every other, is never halved.
  for (const int width : {1024, 1025}) {
    connect(module->portData, displacedPair({width, 90, 2}, 1, 5, {2, 0, 5, false}));
    module->doLayout(kLeastSquares);
    EXPECT_EQ(std::remainder(module->getSlice(1).rotation, 10.0f) == 0.0f, width > 1024);
  }
}

TEST_F(ZxOptimizeAlignMethodTest, KeepsTheBestOfAnInterruptedSearch)
{
  // Stopped anywhere, the transform is in pixels of the full image and no worse than before.
  const SliceXForm start(1.5f, -2, 0, false);
  for (const int query : {1, 2, 3, 4, 5, 8, 12, 1200}) {
    connect(module->portData, displacedPair({128, 103, 2}, 1, 21, {8, -6, 5, false}));
    setTransform(1, start);
    const float before = module->computeQuality();
    work.interruptAtQuery(work.getNumQueries() + query);
    EXPECT_EQ(module->doLayout(kLeastSquares), 1);
    if (query <= 2 || query == 1200) {
      EXPECT_EQ(isAt(1, start), query <= 2) << query;
    }
    EXPECT_GE(module->computeQuality(), before - 0.01f) << query;
  }
}

TEST_F(ZxOptimizeAlignMethodTest, RecoversShiftAndAngle)
{
  std::uint32_t seed = 30;
  for (const SliceXForm& truth : {SliceXForm(9, -4, 0, false), {-5, 11, 7, false}, {2, 3, -12, false}})
    for (const int side : {+1, -1}) {
      connect(module->portData, displacedPair({150, 121, 2}, 1, ++seed, truth));
      module->setEditableSide(side);
      module->setReferenceSlice(side == 1 ? 0 : 1);
      module->setSlice(side == 1 ? 1 : 0);
      module->doLayout(kLeastSquares);
      // The corners of the upper slice under both transforms, seen from the lower one.
      for (const McVec2f corner : {McVec2f{0, 0}, {149, 0}, {0, 120}, {149, 120}}) {
        const McVec2f back = module->getSlice(0).mapInverse(module->getSlice(1).map(corner, 75, 60), 75, 60);
        const McVec2f right = truth.map(corner, 75, 60);
        EXPECT_NEAR(back.x, right.x, 1.0f) << seed;
        EXPECT_NEAR(back.y, right.y, 1.0f) << seed;
      }
    }
}
