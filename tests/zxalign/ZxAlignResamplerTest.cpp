#include "AlignmentMatrix.h"
#include "ModuleTest.h"
#include "reference/PlainResample.h"

using kernels::Interpolation;

namespace {

constexpr ZxDims kDims{13, 7, 3};
constexpr int kPreview = 0;
// dx != dy, a sign, a flip and angles: one for every slice.
const SliceXForm kTransforms[] = {{2.25f, -1.5f, 17, false}, {}, {-3, 1, -130, true}};

class ZxAlignResamplerTest : public ModuleTest {
protected:
  void transformAll()
  {
    for (int k = 0; k < kDims.slices; ++k) setTransform(k, kTransforms[k]);
  }
  void setSize(int width, int height)
  {
    module->alignSettings().outputWidth = width;
    module->alignSettings().outputHeight = height;
  }
  ZxSpatialData* result(int slot = 0) { return dynamic_cast<ZxSpatialData*>(module->getResult(slot)); }
  template <class T>
  std::vector<T> resultValues(int slot = 0)
  {
    return result(slot) ? valuesOf<T>(*result(slot)->getLattice()) : std::vector<T>{};
  }

  /// The input as the plain loop resamples it.
  template <class T>
  std::vector<T> plain(ZxLattice& input, const std::vector<float>& background, int left, int top)
  {
    const ZxAlignSettings& s = module->alignSettings();
    const ZxDims& d = input.getDims();
    const bool linear = module->portResampleMethod.getValue() != kPreview;
    const std::vector<T> source = valuesOf<T>(input);
    const int channels = input.getNumDataVars();
    const std::size_t in = d.slicePixels() * static_cast<std::size_t>(channels);
    const std::size_t out = countOf(s.outputWidth, s.outputHeight, channels);
    std::vector<T> all(out * static_cast<std::size_t>(d.slices));
    for (int k = 0; k < d.slices; ++k) {
      QTransform m;
      module->getSlice(k).getInverseMatrix(m, static_cast<float>(d.width / 2),
                                           static_cast<float>(d.height / 2));
      reference::plainResample<T>({d.width, d.height, s.outputWidth, s.outputHeight, left, top, toAffine(m)},
                                  source.data() + in * static_cast<std::size_t>(k), channels,
                                  linear ? Interpolation::Linear : Interpolation::Nearest, background.data(),
                                  all.data() + out * static_cast<std::size_t>(k));
    }
    return all;
  }

  template <class T>
  void expectEveryModeRight(int channels)
  {
    const auto value = [](int x, int y, int k, int c) {
      return std::is_same_v<T, std::uint8_t> ? greyAt(x, y, k, c) : 100 * greyAt(x, y, k, c) - 9000;
    };
    auto field = makeField<T>(kDims, channels, value);
    connect(module->portData, field.get());
    for (const int method : {0, 1}) {
      module->portResampleMethod.setValue(method);
      transformAll();
      setSize(16, 4); // 3 more: 2 left and 1 right; 3 less: 2 of them on top
      press(1);
      EXPECT_EQ(resultValues<T>(), plain<T>(*field->getLattice(), backgroundOf(channels), 2, -2))
          << mcNameOf(mcPrimTypeOf<T>) << channels << method;
      ASSERT_NE(result(), nullptr);
      EXPECT_EQ(result()->getTypeId().name(), field->getTypeId().name());
      for (int k = 0; k < kDims.slices; ++k) setTransform(k, {});
      setSize(13, 7);
      press(1);
      if (method == kPreview) {
        EXPECT_EQ(resultValues<T>(), valuesOf<T>(*field->getLattice()));
      }
    }
  }
  std::vector<float> backgroundOf(int channels)
  {
    ZxAlignSettings& s = module->alignSettings();
    s.background = 41.5f;
    const float colour[] = {5, 66, 7, 200};
    std::copy(colour, colour + 4, s.backgroundColour);
    return channels == 1 ? std::vector<float>{41.5f} : std::vector<float>(colour, colour + 4);
  }
};

const auto kLabelAt = [](int x, int y, int k, int = 0) { return 70000 * (k + 1) + 300 * y + x + 1; };

} // namespace

TEST_F(ZxAlignResamplerTest, ResamplesEveryTypeLikeThePlainLoop)
{
  for (const int channels : {1, 4}) {
    backgroundOf(channels);
    expectEveryModeRight<std::uint8_t>(channels);
    expectEveryModeRight<std::int16_t>(channels);
    expectEveryModeRight<std::uint16_t>(channels);
    expectEveryModeRight<std::int32_t>(channels);
    expectEveryModeRight<float>(channels);
    expectEveryModeRight<double>(channels);
  }
  EXPECT_TRUE(console.lines.empty());
}

TEST_F(ZxAlignResamplerTest, DescribesTheResult)
{
  auto field = greyStack(kDims);
  ZxFileGeometry geometry;
  geometry.origin[0] = 100;
  geometry.origin[1] = -50;
  geometry.voxelSize[0] = 0.1;
  geometry.voxelSize[1] = 0.3;
  geometry.voxelSize[2] = 4;
  geometry.unit = "micron";
  geometry.store(field->parameters());
  field->getLattice()->setBoundingBox(geometry.box(kDims));
  connect(module->portData, field.get());
  transformAll();
  setSize(16, 4);
  field->setSaved();
  press(1);
  EXPECT_STREQ(result()->getLabel().getString(), "stack.align");
  int number = 0, size[2];
  EXPECT_TRUE(result()->parameters().findNums("AlignIsApplied", 1, &number) && number == 1);
  ASSERT_NE(result()->parameters().findBundle("AlignTransform"), nullptr);
  EXPECT_TRUE(result()->parameters().findBundle("AlignTransform")->findNums("ImageSize", 2, size));
  EXPECT_EQ(size[0], 13);
  EXPECT_TRUE(field->parameters().findNums("OutputImageWidth", 1, &number) && number == 16);
  EXPECT_TRUE(field->parameters().findNums("OutputImageHeigth", 1, &number) && number == 4);
  EXPECT_EQ(field->parameters().findBundle("AlignTransform"), nullptr);
  EXPECT_TRUE(field->isUnsaved());
  const ZxBox3f& box = result()->getLattice()->getBoundingBox();
  EXPECT_FLOAT_EQ(box.xmax, 1.5f);
  EXPECT_FLOAT_EQ(box.ymax, 0.9f);
  EXPECT_EQ(box.zmax, 8.0f);
  const ZxFileGeometry moved = ZxFileGeometry::of(*result());
  EXPECT_DOUBLE_EQ(moved.origin[0], 100 - 2 * 0.1);
  EXPECT_DOUBLE_EQ(moved.origin[1], -50 + 2 * 0.3);
  EXPECT_EQ(moved.voxelSize[0], 0.1);
  EXPECT_EQ(moved.unit, "micron");
  EXPECT_TRUE(result()->isUnsaved());
}

TEST_F(ZxAlignResamplerTest, PlacesSlicesByTheirCommonBox)
{
  auto field = greyStack(kDims);
  connect(module->portData, field.get());
  setTransform(0, {-4, -2, 0, false});
  setSize(17, 9);
  module->setSetting("automatic-origin", "on");
  module->portResampleMethod.setValue(kPreview);
  press(1);
  EXPECT_EQ(resultValues<std::uint8_t>(), plain<std::uint8_t>(*field->getLattice(), {0}, 4, 2));
  EXPECT_EQ(resultValues<std::uint8_t>()[0], greyAt(0, 0, 0));
}

TEST_F(ZxAlignResamplerTest, TakesTheMostFrequentValueAsBackground)
{
  const auto value = [](int x, int y, int k, int c) { return y < 4 ? 10 * k + c + 3 : x; };
  module->alignSettings().mostFrequentBackground = true;
  for (const int channels : {1, 4}) {
    connect(module->portData, makeField<std::uint8_t>(kDims, channels, value).get());
    for (int k = 0; k < 3; ++k) setTransform(k, {100, 0, 0, false});
    console.take();
    press(1);
    const std::vector<std::uint8_t> values = resultValues<std::uint8_t>();
    for (std::size_t i = 0; i < values.size(); ++i) {
      const int k = static_cast<int>(i / countOf(13, 7, channels));
      ASSERT_EQ(values[i], 10 * k + 3 + static_cast<int>(i) % channels);
    }
    EXPECT_EQ(console.take()[1],
              channels == 1 ? "Background color slice 1: 13" : "Background color slice 1: 13 14 15 16");
  }
}

TEST_F(ZxAlignResamplerTest, KeepsLabelsOfEveryWidth)
{
  const auto check = [&](auto zero) {
    using T = decltype(zero);
    auto labels = makeLabels<T>(kDims, kLabelAt);
    labels->parameters().setString("Material", "bone");
    ZxFileGeometry geometry;
    geometry.origin[0] = 7;
    geometry.store(labels->parameters());
    connect(module->portData, greyStack(kDims).get());
    connect(module->portLabelField, labels.get());
    transformAll();
    setSize(16, 9);
    press(1);
    ASSERT_NE(result(1), nullptr);
    ZxLattice& out = *result(1)->getLattice();
    EXPECT_EQ(out.primType(), mcPrimTypeOf<T>);
    EXPECT_EQ(out.getDims(), (ZxDims{16, 9, 3}));
    // The slice that stays in place lies 2 columns and 1 row inside.
    for (int y = 0; y < 7; ++y)
      for (int x = 0; x < 13; ++x)
        ASSERT_EQ(valuesOf<T>(out)[countOf(16, 9) + countOf(16, y + 1) + static_cast<std::size_t>(x) + 2],
                  static_cast<T>(kLabelAt(x, y, 1)));
    EXPECT_EQ(valuesOf<T>(out)[countOf(16, 9)], T{0});
    EXPECT_STREQ(result(1)->getLabel().getString(), "labels.align");
    EXPECT_EQ(ZxFileGeometry::of(*result(1)).origin[0], 5);
    int applied = 0;
    std::string material;
    EXPECT_TRUE(result(1)->parameters().findNums("AlignIsApplied", 1, &applied) && applied == 1);
    EXPECT_TRUE(result(1)->parameters().findString("Material", material));
    EXPECT_NE(result(1)->parameters().findBundle("AlignTransform"), nullptr);
    EXPECT_TRUE(sameXForm(module->getAppliedLabelSlices()[2], kTransforms[2]));
    ZxObjectPool::getThePool().clear();
  };
  check(std::uint8_t{});
  check(std::uint16_t{});
  check(std::int16_t{});
  check(std::int32_t{});
}

TEST_F(ZxAlignResamplerTest, MovesLabelsAsItMovesVoxels)
{
  // 16-bit labels within 24 bits take the same way as voxels do with nearest neighbour.
  auto field = makeField<std::uint16_t>(kDims, 1, greyAt);
  auto labels = makeLabels<std::uint16_t>(kDims, greyAt);
  connect(module->portData, field.get());
  connect(module->portLabelField, labels.get());
  transformAll();
  setSize(18, 11);
  module->portResampleMethod.setValue(kPreview);
  press(1);
  EXPECT_EQ(resultValues<std::uint16_t>(1), resultValues<std::uint16_t>(0));

  // A label field of another depth, connected after the input.
  connect(module->portLabelField, makeLabels<std::uint8_t>({13, 7, 5}, [](auto...) { return 9; }).get());
  press(1);
  EXPECT_EQ(result(1)->getLattice()->getDims(), (ZxDims{18, 11, 3}));
  connect(module->portLabelField, makeLabels<std::uint8_t>({5, 7, 2}, [](auto...) { return 9; }).get());
  press(1);
  EXPECT_EQ(resultValues<std::uint8_t>(1).back(), 0);
}

TEST_F(ZxAlignResamplerTest, MakesLabelsOfLabels)
{
  auto labels = makeLabels<std::uint16_t>(kDims, greyAt);
  labels->parameters().setString("Material", "bone");
  connect(module->portData, labels.get());
  transformAll();
  setSize(17, 7);
  press(1); // linear is chosen, but labels are never mixed
  module->portResampleMethod.setValue(kPreview);
  EXPECT_EQ(resultValues<std::uint16_t>(), plain<std::uint16_t>(*labels->getLattice(), {0}, 2, 0));
  EXPECT_EQ(result()->getTypeId().name(), "ZxUniformLabelField3");
  EXPECT_EQ(result()->parameters().findBundle("AlignTransform"), nullptr); // those of the input
  std::string material;
  EXPECT_TRUE(result()->parameters().findString("Material", material));
  EXPECT_EQ(ZxFileGeometry::of(*result()).origin[0], -2);
}

TEST_F(ZxAlignResamplerTest, ReusesResultsThatFit)
{
  const auto labelAt = [](auto...) { return 3; };
  const Lines otherDims{"Previous result has different dimensions. Cannot reuse it."};
  connect(module->portData, greyStack(kDims).get());
  module->apply(true);
  EXPECT_EQ(console.take(), Lines{"No result."});
  press(2); // insensitive
  EXPECT_TRUE(console.take().empty());
  press(1);
  ZxSpatialData* const first = result();
  transformAll();
  press(2);
  EXPECT_EQ(result(), first);
  EXPECT_EQ(resultValues<std::uint8_t>(), plain<std::uint8_t>(*module->getDataLattice(), {0}, 0, 0));
  setSize(14, 7);
  press(2);
  EXPECT_EQ(console.take(), otherDims);
  EXPECT_NE(result(), first);
  EXPECT_EQ(result()->getLattice()->getDims().width, 14);

  connect(module->portLabelField, makeLabels<std::uint8_t>(kDims, labelAt).get());
  press(2);
  EXPECT_EQ(console.take(), Lines{"No input LabelLattice or no output LabelLattice."});
  EXPECT_EQ(result(1), nullptr);
  press(1);
  ZxSpatialData* const labels = result(1);
  press(2);
  EXPECT_EQ(result(1), labels);
  setSize(13, 7);
  press(2);
  EXPECT_EQ(console.take(), Lines(2, otherDims[0]));
  EXPECT_NE(result(1), labels);

  // The box is that of the present input.
  auto wide = greyStack(kDims);
  wide->getLattice()->setBoundingBox({0, 24, 0, 18, 0, 2});
  connect(module->portData, wide.get());
  setSize(13, 7);
  press(2);
  EXPECT_TRUE(console.take().empty());
  EXPECT_EQ(result()->getLattice()->getBoundingBox().xmax, 24.0f);
  connect(module->portData, makeField<std::uint8_t>(kDims, 4, greyAt).get());
  press(2);
  EXPECT_EQ(console.take(), Lines{"Result lattice has different number of data variables."});
  module->setResult(0, mcMake<ZxSpatialData>().get());
  press(2);
  EXPECT_EQ(console.take(), Lines{"No result lattice."});
}

TEST_F(ZxAlignResamplerTest, RefusesSizesThatCannotBe)
{
  connect(module->portData, greyStack(kDims).get());
  for (const auto& [width, height] : {std::pair(0, 7), {13, -1}, {2147483647, 2147483647}}) {
    setSize(width, height);
    module->apply(false);
    EXPECT_EQ(console.take(), Lines{"Error creating result"});
    EXPECT_EQ(result(), nullptr);
  }
}

TEST_F(ZxAlignResamplerTest, StopsWhereItIsInterrupted)
{
  connect(module->portData, greyStack(kDims).get());
  connect(module->portLabelField, makeLabels<std::uint8_t>(kDims, [](auto...) { return 3; }).get());
  const int perSlice = 1; // small slices are one band
  work.interruptAtQuery(work.getNumQueries() + 2 * perSlice);
  module->apply(false);
  EXPECT_EQ(result(), nullptr);
  EXPECT_EQ(work.steps().back().text, "Resampling slice 2 of 3");
  EXPECT_FALSE(work.isWorking());

  work.interruptAtQuery(0);
  module->apply(false);
  ASSERT_NE(result(1), nullptr);
  const std::vector<std::uint8_t> before = resultValues<std::uint8_t>();
  transformAll();
  setTransform(1, {3, 0, 0, false});
  result()->setSaved();
  work.interruptAtQuery(work.getNumQueries() + 1);
  module->apply(true); // stopped after one slice, which stays
  const std::vector<std::uint8_t> after = resultValues<std::uint8_t>();
  EXPECT_FALSE(std::equal(before.begin(), before.begin() + 91, after.begin()));
  EXPECT_TRUE(std::equal(before.begin() + 91, before.end(), after.begin() + 91));
  EXPECT_TRUE(result()->isUnsaved());
  EXPECT_TRUE(sameXForm(module->getAppliedLabelSlices()[1], {}));

  work.interruptAtQuery(work.getNumQueries() + 3 * perSlice + 1);
  module->apply(false); // the image is whole, the labels stop after one slice
  EXPECT_NE(resultValues<std::uint8_t>(), after);
  EXPECT_EQ(resultValues<std::uint8_t>(1)[3 * 13 + 6], 3);
  EXPECT_TRUE(sameXForm(module->getAppliedLabelSlices()[1], {}));
}

TEST_F(ZxAlignResamplerTest, ReportsProgressThatRises)
{
  connect(module->portData, greyStack(kDims).get());
  module->apply(false);
  float last = 0;
  for (const auto& [text, fraction] : work.steps()) {
    EXPECT_GE(fraction, last);
    last = fraction;
  }
  EXPECT_EQ(last, 1.0f);
}
