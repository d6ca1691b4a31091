#include "ModuleTest.h"

#include <array>
#include <cmath>

namespace {

constexpr int kLeastSquares = 1;

struct Image {
  int width, height, channels;
  std::vector<std::uint8_t> bytes;
};

/// Whole blocks of f x f, sums truncated.
Image reduced(const Image& image, int f)
{
  Image out{image.width / f, image.height / f, image.channels, {}};
  for (int y = 0; y < out.height; ++y)
    for (int x = 0; x < out.width; ++x)
      for (int c = 0; c < image.channels; ++c) {
        int sum = 0;
        for (int i = 0; i < f * f; ++i)
          sum += image.bytes[countOf((y * f + i / f) * image.width + x * f + i % f, image.channels) +
                             static_cast<std::size_t>(c)];
        out.bytes.push_back(static_cast<std::uint8_t>(sum / (f * f)));
      }
  return out;
}

/// The search in its plainest form. Its state has the names of the description: f, sT, sR, lo, hi.
struct PlainSearch {
  const ZxAlignSlices& module;
  Image fullReference, fullEditable;
  SliceXForm reference, editable;
  int budget = 0; // iterations until an interruption
  std::vector<SliceXForm> accepted{};

  Image smallReference{}, smallEditable{};
  float best = 0;

  float quality(const SliceXForm& x) const
  {
    return module.computeQuality(smallReference.bytes.data(), smallEditable.bytes.data(),
                                 smallReference.width, smallReference.height, smallReference.channels,
                                 reference, x);
  }
  static void scale(SliceXForm& x, float s)
  {
    x.translationX *= s;
    x.translationY *= s;
  }

  void run()
  {
    const ZxAlignSettings& set = module.alignSettings();
    int f = 1;
    if (set.resamplingLevels > 0 && fullReference.width > 99)
      for (int k = 0; fullReference.height / f > 99;) {
        f *= 2;
        if (++k >= set.resamplingLevels || fullReference.width / f <= 99) break;
      }
    scale(reference, 1.0f / static_cast<float>(f));
    scale(editable, 1.0f / static_cast<float>(f));
    float sT = set.translationStep * static_cast<float>(f), sR = 10;
    int lo = -17, hi = 18, halvings = 0;
    bool again = true, momentum = false;
    std::array<float, 3> last{};
    for (int n = 0; n < std::min(set.maxIterations, budget); ++n) {
      if (again) {
        smallReference = reduced(fullReference, f);
        smallEditable = reduced(fullEditable, f);
        best = quality(editable);
        again = false;
      }
      if (momentum) {
        SliceXForm x = editable;
        x.translationX += last[0];
        x.translationY += last[1];
        x.rotate(last[2], x.translationX, x.translationY);
        const float q = quality(x);
        if (q > best) {
          accept(x, q);
          continue;
        }
        momentum = false;
      }
      float candidateQuality = best;
      SliceXForm candidate;
      const auto tryOne = [&](const SliceXForm& x, std::array<float, 3> move) {
        const float q = quality(x);
        if (q > candidateQuality) candidateQuality = q, candidate = x, last = move;
      };
      if (halvings < 2) {
        std::vector<std::pair<float, float>> offsets;
        if (hi > 1)
          for (int i = -24; i <= 22; i += 2)
            for (int j = -24; j <= 22; j += 2)
              offsets.emplace_back(static_cast<float>(i) * sT, static_cast<float>(j) * sT);
        for (const auto& [x, y] : {std::pair(sT, 0.f), {-sT, 0.f}, {0.f, sT}, {0.f, -sT}})
          offsets.emplace_back(x, y);
        for (const auto& [dx, dy] : offsets) {
          SliceXForm x = editable;
          x.translationX += dx;
          x.translationY += dy;
          tryOne(x, {dx, dy, 0});
        }
      }
      if (set.rotationAllowed)
        for (int k = lo; k <= hi; ++k) {
          if (k == 0) continue;
          SliceXForm x = editable;
          x.rotate(static_cast<float>(k) * sR, x.translationX, x.translationY);
          tryOne(x, {0, 0, static_cast<float>(k) * sR});
        }
      if (candidateQuality > best) {
        accept(candidate, candidateQuality);
        momentum = f == 1;
      } else if (f > 1) {
        f /= 2;
        scale(reference, 2);
        scale(editable, 2);
        sR = static_cast<float>(f) * set.rotationStep;
        sT = static_cast<float>(f) * set.translationStep;
        again = true;
        lo = -1, hi = 1;
      } else {
        ++halvings;
        if (halvings > 2 || fullReference.width > 1024) break;
        sT /= 2;
        sR /= 2;
      }
    }
    scale(editable, static_cast<float>(f));
  }

  void accept(const SliceXForm& x, float q)
  {
    editable = x;
    best = q;
    accepted.push_back(x);
  }
};

/// Blobs and a slope of seeded random shape: smooth enough to be climbed, nothing symmetric.
class Scene {
public:
  explicit Scene(std::uint32_t seed)
  {
    Random random(seed);
    for (auto& b : m_blobs)
      b = {random.real(-60, 60), random.real(-50, 50), random.real(3, 16), random.real(-90, 90)};
  }
  int at(double x, double y, int c) const
  {
    double v = 120 + 0.2 * x - 0.1 * y;
    for (const auto& [bx, by, r, height] : m_blobs)
      v += height * std::exp(-((x - bx) * (x - bx) + (y - by) * (y - by)) / (r * r)) * (1 + 0.2 * c);
    return static_cast<int>(std::clamp(v, 0.0, 255.0));
  }

private:
  std::array<std::array<double, 4>, 14> m_blobs;
};

/// Slice 0 shows the scene, slice 1 the same scene as it lies under a transform: applying that transform to
/// slice 1 puts it back.
McHandle<ZxField3> displacedPair(const ZxDims& dims, int channels, std::uint32_t seed,
                                 const SliceXForm& truth)
{
  const Scene scene(seed);
  const float cx = static_cast<float>(dims.width / 2), cy = static_cast<float>(dims.height / 2);
  return makeField<std::uint8_t>(dims, channels, [&](int x, int y, int k, int c) {
    McVec2f p{static_cast<float>(x), static_cast<float>(y)};
    if (k == 1) p = truth.map(p, cx, cy);
    return scene.at(p.x - cx, p.y - cy, c);
  });
}

class ZxOptimizeAlignMethodTest : public ModuleTest {
protected:
  Image image(int k)
  {
    const ZxDims& d = module->getDataLattice()->getDims();
    const bool colour = module->sliceData().isColorField();
    ZxAlignData& data = module->sliceData();
    const unsigned char* p = k == module->getEditableSlice()
                                 ? (colour ? data.getEditableColorPtr() : data.getEditableSlicePtr())
                                 : (colour ? data.getReferenceColorPtr() : data.getReferenceSlicePtr());
    return {d.width, d.height, colour ? 4 : 1, {p, p + countOf(d.width, d.height, colour ? 4 : 1)}};
  }
  /// Runs the plain search on the current pair; the module itself stays as it is.
  PlainSearch plain(int budget = 1 << 20)
  {
    PlainSearch search{*module,
                       image(module->getReferenceSlice()),
                       image(module->getEditableSlice()),
                       module->getSlice(module->getReferenceSlice()),
                       module->getSlice(module->getEditableSlice()),
                       budget};
    search.run();
    return search;
  }
  void set(const char* name, const std::string& value) { ASSERT_EQ(module->setSetting(name, value), ""); }
};

/// What the whole-stack operations make of a target.
SliceXForm applied(SliceXForm present, const SliceXForm& target)
{
  present.rotate(target.rotation - present.rotation, present.translationX, present.translationY);
  present.translationX += target.translationX - present.translationX;
  present.translationY += target.translationY - present.translationY;
  return present;
}

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
    connect(module->portData, displacedPair(c.dims, c.channels, ++seed, c.truth).get());
    set("levels", c.levels);
    set("iterations", c.iterations);
    set("rotation", c.rotation);
    setTransform(0, {0.25f, -1, 4, false});
    setTransform(1, c.start);
    module->setModified(false);
    const PlainSearch search = plain();
    if (std::string(c.iterations) == "1000") {
      EXPECT_GT(search.accepted.size(), 3U) << seed;
    } // no trivial case
    EXPECT_EQ(module->doLayout(kLeastSquares), 1);
    EXPECT_TRUE(sameXForm(module->getSlice(1), applied(c.start, search.editable))) << seed;
    EXPECT_TRUE(sameXForm(module->getSlice(0), {0.25f, -1, 4, false}));
    EXPECT_TRUE(module->isModified());
  }
}

TEST_F(ZxOptimizeAlignMethodTest, EndsEarlyOnWideSlices)
{
  // Above 1024 pixels no step is halved: the first iteration without improvement is the last.
  for (const int width : {1024, 1025}) {
    connect(module->portData, displacedPair({width, 12, 2}, 1, 5, {2, 0, 0, false}).get());
    set("rotation", "off");
    const PlainSearch search = plain();
    const int before = work.getNumQueries();
    module->doLayout(kLeastSquares);
    EXPECT_TRUE(sameXForm(module->getSlice(1), applied({}, search.editable)));
    const float fraction = module->getSlice(1).translationX - std::floor(module->getSlice(1).translationX);
    if (width > 1024) {
      EXPECT_EQ(fraction, 0.0f);
    }
    EXPECT_GT(work.getNumQueries(), before);
  }
}

TEST_F(ZxOptimizeAlignMethodTest, KeepsTheBestOfAnInterruptedSearch)
{
  // Stopped anywhere, the transform is in pixels of the full image and no worse than before.
  const SliceXForm start(1.5f, -2, 0, false);
  float before = 0;
  for (const int query : {1, 2, 100, 590, 640, 700, 1200}) {
    connect(module->portData, displacedPair({128, 103, 2}, 1, 21, {8, -6, 5, false}).get());
    setTransform(1, start);
    before = module->computeQuality();
    work.interruptAtQuery(work.getNumQueries() + query);
    EXPECT_EQ(module->doLayout(kLeastSquares), 1);
    work.interruptAtQuery(0);
    if (query == 1) {
      EXPECT_TRUE(sameXForm(module->getSlice(1), start));
    }
    EXPECT_GE(module->computeQuality(), before - 0.01f) << query;
  }
  EXPECT_FALSE(sameXForm(module->getSlice(1), start));
}

TEST_F(ZxOptimizeAlignMethodTest, RecoversShiftAndAngle)
{
  std::uint32_t seed = 30;
  for (const SliceXForm& truth : {SliceXForm(9, -4, 0, false), {-5, 11, 7, false}, {2, 3, -12, false}})
    for (const int side : {+1, -1}) {
      connect(module->portData, displacedPair({150, 121, 2}, 1, ++seed, truth).get());
      module->setEditableSide(side);
      module->setReferenceSlice(side == 1 ? 0 : 1);
      module->setSlice(side == 1 ? 1 : 0);
      module->doLayout(kLeastSquares);
      // The corners of the upper slice under both transforms, seen from the lower one.
      for (const McVec2f corner : {McVec2f{0, 0}, {149, 0}, {0, 120}, {149, 120}}) {
        const McVec2f there = module->getSlice(1).map(corner, 75, 60);
        const McVec2f back = module->getSlice(0).mapInverse(there, 75, 60);
        const McVec2f right = truth.map(corner, 75, 60);
        EXPECT_NEAR(back.x, right.x, 1.0f) << seed;
        EXPECT_NEAR(back.y, right.y, 1.0f) << seed;
      }
    }
}

TEST_F(ZxOptimizeAlignMethodTest, CarriesTheFollowingSlices)
{
  const auto field = displacedPair({60, 50, 4}, 1, 40, {4, -3, 0, false});
  connect(module->portData, field.get());
  module->setReferenceSlice(0);
  module->setSlice(1);
  for (int k = 2; k < 4; ++k) setTransform(k, {10, 1, 0, false});
  set("rotation", "off");
  module->doLayout(kLeastSquares);
  const SliceXForm moved = module->getSlice(1);
  EXPECT_FALSE(sameXForm(moved, {}));
  for (int k = 2; k < 4; ++k)
    EXPECT_TRUE(sameXForm(module->getSlice(k), {10 + moved.translationX, 1 + moved.translationY, 0, false}));
}
