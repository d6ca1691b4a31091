#include "AlignmentMatrix.h"
#include "ModuleTest.h"
#include "reference/PlainResample.h"

using kernels::Interpolation;

namespace {

constexpr ZxDims kDims{13, 7, 3};
constexpr int kPreview = 0;
// dx != dy, a sign, a flip and angles: one for every slice.
const SliceXForm kTransforms[] = {{2.25f, -1.5f, 17, false}, {}, {-3, 1, -130, true}};

const auto kNine = [](auto...) { return 9; };

class ZxAlignResamplerTest : public ModuleTest {
protected:
  void transformAll(bool identity = false)
  {
    for (int k = 0; k < kDims.slices; ++k) setTransform(k, identity ? SliceXForm() : kTransforms[k]);
  }
  void setSize(int width, int height)
  {
    module->alignSettings().outputWidth = width;
    module->alignSettings().outputHeight = height;
  }
  ZxSpatialData* result(int slot = 0) { return dynamic_cast<ZxSpatialData*>(module->getResult(slot)); }
  template <class T>
  std::vector<T> values(int slot = 0)
  {
    return result(slot) ? valuesOf<T>(*result(slot)->getLattice()) : std::vector<T>{};
  }

  /// The module's input as the plain loop resamples it with the present transforms.
  template <class T>
  std::vector<T> plain(Interpolation mode, int left, int top)
  {
    ZxLattice& input = *module->getDataLattice();
    const ZxAlignSettings& s = module->alignSettings();
    const ZxDims& d = input.getDims();
    const int channels = input.getNumDataVars();
    const float* background = channels == 1 ? &s.background : s.backgroundColour;
    const std::vector<T> source = valuesOf<T>(input);
    std::vector<T> all(countOf(s.outputWidth, s.outputHeight, channels) * static_cast<std::size_t>(d.slices));
    for (std::size_t k = 0; k < 3; ++k) {
      QTransform m;
      module->getSlice(static_cast<int>(k)).getInverseMatrix(m, sliceCentre(d.width), sliceCentre(d.height));
      reference::plainResample<T>({d.width, d.height, s.outputWidth, s.outputHeight, left, top, toAffine(m)},
                                  source.data() + source.size() / 3 * k, channels, mode, background,
                                  all.data() + all.size() / 3 * k);
    }
    return all;
  }

  template <class T>
  void expectBothMethodsRight(int channels)
  {
    connect(module->portData, makeField<T>(kDims, channels, [](int x, int y, int k, int c) {
              return sizeof(T) == 1 ? greyAt(x, y, k, c) : 100 * greyAt(x, y, k, c) - 9000;
            }));
    for (const int method : {0, 1}) {
      module->portResampleMethod.setValue(method);
      transformAll();
      setSize(16, 4); // 3 more: 2 left and 1 right; 3 less: 2 of them on top
      press(1);
      const auto mode = method == kPreview ? Interpolation::Nearest : Interpolation::Linear;
      EXPECT_EQ(values<T>(), plain<T>(mode, 2, -2)) << mcNameOf(mcPrimTypeOf<T>) << channels << method;
      transformAll(true);
      setSize(13, 7);
      press(1);
      EXPECT_EQ(values<T>() == valuesOf<T>(*module->getDataLattice()), method == kPreview);
    }
  }
};

} // namespace

TEST_F(ZxAlignResamplerTest, ResamplesEveryTypeLikeThePlainLoop)
{
  for (const int channels : {1, 4}) {
    module->setSetting("background", "41.5");
    module->setSetting("background-colour", "5,66,7.25,200");
    expectBothMethodsRight<std::uint8_t>(channels);
    expectBothMethodsRight<std::int16_t>(channels);
    expectBothMethodsRight<std::uint16_t>(channels);
    expectBothMethodsRight<std::int32_t>(channels);
    expectBothMethodsRight<float>(channels);
    expectBothMethodsRight<double>(channels);
  }
  EXPECT_EQ(console.take(), Lines{});
}

TEST_F(ZxAlignResamplerTest, DescribesTheResult)
{
  const auto field = greyStack(kDims);
  ZxFileGeometry geometry{{100, -50, 0}, {0.1, 0.3, 4}, "micron"};
  geometry.store(field->parameters());
  field->getLattice()->setBoundingBox(geometry.box(kDims));
  connect(module->portData, field);
  transformAll();
  setSize(16, 4);
  press(1);
  EXPECT_EQ(result()->getLabel(), "stack.align");
  int number = 0, size[2];
  const ZxParamBundle& stored = result()->parameters();
  EXPECT_TRUE(stored.findNums("AlignIsApplied", 1, &number) && number == 1);
  ASSERT_NE(stored.findBundle("AlignTransform"), nullptr);
  EXPECT_TRUE(stored.findBundle("AlignTransform")->findNums("ImageSize", 2, size) && size[0] == 13);
  EXPECT_TRUE(field->parameters().findNums("OutputImageWidth", 1, &number) && number == 16);
  EXPECT_TRUE(field->parameters().findNums("OutputImageHeigth", 1, &number) && number == 4);
  EXPECT_EQ(field->parameters().findBundle("AlignTransform"), nullptr);
  const ZxBox3f& box = result()->getLattice()->getBoundingBox();
  EXPECT_FLOAT_EQ(box.xmax, 1.5f);
  EXPECT_FLOAT_EQ(box.ymax, 0.9f);
  EXPECT_EQ(box.zmax, 8.0f);
  const ZxFileGeometry moved = ZxFileGeometry::of(*result());
  EXPECT_DOUBLE_EQ(moved.origin[0], 100 - 2 * 0.1);
  EXPECT_DOUBLE_EQ(moved.origin[1], -50 + 2 * 0.3);
  EXPECT_EQ(moved.voxelSize[0], 0.1);
  EXPECT_TRUE(result()->isUnsaved());
}

TEST_F(ZxAlignResamplerTest, PlacesSlicesByTheirCommonBox)
{
  connect(module->portData, greyStack(kDims));
  setTransform(0, {-4, -2, 0, false});
  setSize(17, 9);
  module->setSetting("automatic-origin", "on");
  press(1);
  EXPECT_EQ(values<std::uint8_t>(), plain<std::uint8_t>(Interpolation::Linear, 4, 2));
}

TEST_F(ZxAlignResamplerTest, TakesTheMostFrequentValueAsBackground)
{
  const auto value = [](int x, int y, int k, int c) { return y < 4 ? 10 * k + c + 3 : x; };
  module->setSetting("most-frequent-background", "on");
  for (const int channels : {1, 4}) {
    connect(module->portData, makeField<std::uint8_t>(kDims, channels, value));
    for (int k = 0; k < 3; ++k) setTransform(k, {100, 0, 0, false});
    press(1);
    for (std::size_t i = 0; i < values<std::uint8_t>().size(); i += 17)
      ASSERT_EQ(values<std::uint8_t>()[i],
                10 * (i / countOf(13, 7, channels)) + 3 + i % countOf(channels, 1));
    EXPECT_EQ(console.take()[1],
              channels == 1 ? "Background color slice 1: 13" : "Background color slice 1: 13 14 15 16");
  }
}

TEST_F(ZxAlignResamplerTest, MovesLabelsAsItMovesVoxels)
{
  // Labels take the way of voxels with nearest neighbour and keep their type.
  const auto check = [&](auto zero) {
    using T = decltype(zero);
    const auto field = makeField<T>(kDims, 1, greyAt);
    ZxFileGeometry{{7, 0, 0}, {1, 1, 1}, ""}.store(field->parameters());
    connect(module->portData, field);
    const auto labels = makeLabels<T>(kDims, greyAt);
    ZxFileGeometry{{-1, 0, 0}, {1, 1, 1}, ""}.store(labels->parameters());
    connect(module->portLabelField, labels);
    transformAll();
    setSize(18, 11);
    press(1);
    ASSERT_NE(result(1), nullptr);
    EXPECT_EQ(result(1)->getLattice()->primType(), mcPrimTypeOf<T>);
    EXPECT_EQ(values<T>(1), plain<T>(Interpolation::Nearest, 3, 2)) << mcNameOf(mcPrimTypeOf<T>);
    EXPECT_TRUE(module->getAppliedLabelSlices()[2] == module->getSlice(2));
    EXPECT_EQ(ZxFileGeometry::of(*result(1)).origin[0], 7 - 3);
    int applied = 0;
    EXPECT_TRUE(result(1)->parameters().findNums("AlignIsApplied", 1, &applied) && applied == 1);
    EXPECT_NE(result(1)->parameters().findBundle("AlignTransform"), nullptr);
  };
  check(std::uint8_t{});
  check(std::uint16_t{});
  check(std::int16_t{});
  check(std::int32_t{});

  // Values beyond the integers of a float; a field of other depths and sizes, connected after the input.
  const auto large = [](int x, auto...) { return (1 << 30) + x; };
  connect(module->portLabelField, makeLabels<std::int32_t>({13, 7, 5}, large));
  press(1);
  EXPECT_EQ(result(1)->getLattice()->getDims(), (ZxDims{18, 11, 3}));
  EXPECT_EQ(values<std::int32_t>(1)[countOf(18, 11) + countOf(18, 2) + 3 + 9], (1 << 30) + 9);
  connect(module->portLabelField, makeLabels<std::int32_t>({5, 7, 2}, large));
  press(1);
  EXPECT_EQ(values<std::int32_t>(1).back(), 0);
}

TEST_F(ZxAlignResamplerTest, MakesLabelsOfLabels)
{
  const auto labels = makeLabels<std::uint16_t>(kDims, greyAt);
  labels->parameters().setString("Material", "bone");
  connect(module->portData, labels);
  transformAll();
  setSize(17, 7);
  press(1); // linear is chosen, but labels are never mixed
  EXPECT_EQ(values<std::uint16_t>(), plain<std::uint16_t>(Interpolation::Nearest, 2, 0));
  EXPECT_EQ(result()->getTypeId().name(), "ZxUniformLabelField3");
  std::string material;
  EXPECT_TRUE(result()->parameters().findString("Material", material)); // parameters are those of the input
  EXPECT_EQ(result()->parameters().findBundle("AlignTransform"), nullptr);
  EXPECT_EQ(ZxFileGeometry::of(*result()).origin[0], -2);
}

TEST_F(ZxAlignResamplerTest, ReusesResultsThatFit)
{
  const std::string otherDims = "Previous result has different dimensions. Cannot reuse it.";
  connect(module->portData, greyStack(kDims));
  module->apply(true);
  EXPECT_EQ(console.take(), Lines{"No result."});
  press(2); // insensitive
  press(1);
  EXPECT_EQ(console.take(), Lines{});
  const ZxSpatialData* const first = result();
  transformAll();
  press(2);
  EXPECT_EQ(result(), first);
  EXPECT_EQ(values<std::uint8_t>(), plain<std::uint8_t>(Interpolation::Linear, 0, 0));
  setSize(14, 7);
  connect(module->portLabelField, makeLabels<std::uint8_t>(kDims, kNine));
  press(2);
  EXPECT_EQ(console.take(), (Lines{otherDims, "No input LabelLattice or no output LabelLattice."}));
  EXPECT_EQ(result()->getLattice()->getDims().width, 14);
  EXPECT_EQ(result(1), nullptr);
  press(1);
  const ZxSpatialData* const labels = result(1);
  press(2);
  EXPECT_EQ(result(1), labels);
  setSize(13, 7);
  press(2);
  EXPECT_EQ(console.take(), Lines(2, otherDims));

  // The box is that of the present input.
  const auto wide = greyStack(kDims);
  wide->getLattice()->setBoundingBox({0, 24, 0, 18, 0, 2});
  connect(module->portData, wide);
  press(2);
  EXPECT_EQ(console.take(), Lines{});
  EXPECT_EQ(result()->getLattice()->getBoundingBox().xmax, 24.0f);
  connect(module->portData, makeField<std::uint8_t>(kDims, 4, greyAt));
  press(2);
  EXPECT_EQ(console.take(), Lines{"Result lattice has different number of data variables."});
  module->setResult(0, mcMake<ZxSpatialData>().get());
  press(2);
  EXPECT_EQ(console.take(), Lines{"No result lattice."});
}

TEST_F(ZxAlignResamplerTest, RefusesSizesThatCannotBe)
{
  connect(module->portData, greyStack(kDims));
  for (const auto& [width, height] : {std::pair(0, 7), {13, -1}, {2147483647, 2147483647}}) {
    setSize(width, height);
    module->apply(false);
    EXPECT_EQ(console.take(), Lines{"Error creating result"});
    EXPECT_EQ(result(), nullptr);
  }
}

TEST_F(ZxAlignResamplerTest, StopsWhereItIsInterrupted)
{
  // Small slices are one band: one query each.
  const auto applyUntil = [this](int query, bool reuse) {
    work.interruptAtQuery(query ? work.getNumQueries() + query : 0);
    module->apply(reuse);
  };
  connect(module->portData, greyStack(kDims));
  connect(module->portLabelField, makeLabels<std::uint8_t>(kDims, kNine));
  applyUntil(2, false);
  EXPECT_EQ(result(), nullptr);
  EXPECT_EQ(work.steps().back().text, "Resampling slice 2 of 3");
  EXPECT_FALSE(work.isWorking());
  applyUntil(0, false);
  ASSERT_NE(result(1), nullptr);
  const std::vector<std::uint8_t> before = values<std::uint8_t>();
  for (int k = 0; k < 3; ++k) setTransform(k, {3, 0, 0, false});
  result()->setSaved();
  applyUntil(1, true); // after one slice, which stays
  const std::vector<std::uint8_t> after = values<std::uint8_t>();
  EXPECT_FALSE(std::equal(before.begin(), before.begin() + 91, after.begin()));
  EXPECT_TRUE(std::equal(before.begin() + 91, before.end(), after.begin() + 91));
  EXPECT_TRUE(result()->isUnsaved());
  applyUntil(4, true); // the image is whole, the labels stop after one slice
  EXPECT_NE(values<std::uint8_t>(), after);
  EXPECT_EQ(values<std::uint8_t>(1)[0], 0);
  EXPECT_EQ(values<std::uint8_t>(1)[91], 9);
  EXPECT_EQ(module->getAppliedLabelSlices()[0].translationX, 0.0f);
}

// On demand the same voxels come as from a result in memory, whole, in parts and in any order; what the
// module becomes later does not show.
TEST_F(ZxAlignResamplerTest, ComputesTheSameVolumeOnDemand)
{
  module->setSetting("most-frequent-background", "on");
  connect(module->portData, makeField<std::int16_t>(kDims, 1, greyAt));
  connect(module->portLabelField, makeLabels<std::uint16_t>(kDims, greyAt));
  transformAll();
  setSize(18, 11);
  press(1);
  const Lines told = console.take();
  const auto volume = module->alignedVolume(), labels = module->alignedLabels();
  EXPECT_EQ(valuesOf<std::uint16_t>(*labels->getLattice()), values<std::uint16_t>(1));
  transformAll(true);
  setSize(5, 5);
  module->setSetting("most-frequent-background", "off");
  EXPECT_EQ(valuesOf<std::int16_t>(*volume->getLattice()), values<std::int16_t>());
  EXPECT_EQ(console.take(), told);
  std::vector<std::int16_t> part(3 * 2 * 2), wanted;
  ASSERT_TRUE(volume->getLattice()->readBox({7, 4, 1, {3, 2, 2}}, part.data()));
  for (const int k : {1, 2})
    for (const int y : {4, 5})
      for (const int x : {7, 8, 9})
        wanted.push_back(values<std::int16_t>()[countOf(18, 11 * k) + countOf(18, y) + countOf(x, 1)]);
  EXPECT_EQ(part, wanted);
  for (const int slot : {0, 1}) {
    const ZxSpatialData& lazy = slot ? *labels : *volume;
    EXPECT_EQ(lazy.getLabel(), result(slot)->getLabel());
    EXPECT_EQ(lazy.getTypeId().name(), result(slot)->getTypeId().name());
    EXPECT_EQ(lazy.getLattice()->getBoundingBox().xmax, result(slot)->getLattice()->getBoundingBox().xmax);
    EXPECT_EQ(ZxFileGeometry::of(lazy).origin[0], ZxFileGeometry::of(*result(slot)).origin[0]);
    EXPECT_NE(lazy.parameters().findBundle("AlignTransform"), nullptr);
  }
  work.interruptAtQuery(work.getNumQueries() + 1);
  std::vector<std::int16_t> slice(countOf(18, 11));
  EXPECT_FALSE(volume->getLattice()->readSlice(2, slice.data()));
}
