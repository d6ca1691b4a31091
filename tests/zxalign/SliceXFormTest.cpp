#include "zxalign/SliceInfo.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

namespace {

// dx != dy with opposite signs, angles that are no multiples of 90, a centre off the diagonal: swapped axes,
// a lost sign, a wrong order or a wrong centre each move a point by more than the tolerance.
const std::vector<SliceXForm> kTransforms{{},
                                          {7.25f, -2.5f, 0.0f, false},
                                          {0.0f, 0.0f, 17.0f, false},
                                          {7.25f, -2.5f, 17.0f, false},
                                          {-3.0f, 5.0f, -130.0f, true},
                                          {4.0f, 1.0f, 17.0f, true}};
const std::vector<McVec2f> kPoints{{0, 0}, {24, 15}, {47.5f, 3}, {-6, 30}};
constexpr float cx = 24.0f;
constexpr float cy = 15.0f;

McVec2f turned(double x, double y, double degrees)
{
  const double a = degrees * std::numbers::pi / 180.0;
  return {static_cast<float>(x * std::cos(a) + y * std::sin(a)),
          static_cast<float>(-x * std::sin(a) + y * std::cos(a))};
}

McVec2f plainMap(const SliceXForm& t, McVec2f p)
{
  const McVec2f u = p - McVec2f{cx, cy};
  return turned(t.flip ? -u.x : u.x, u.y, t.rotation) + McVec2f{t.translationX + cx, t.translationY + cy};
}

void expectNear(McVec2f a, McVec2f b)
{
  EXPECT_NEAR(a.x, b.x, 1e-4f);
  EXPECT_NEAR(a.y, b.y, 1e-4f);
}

} // namespace

TEST(SliceXForm, MapsAboutTheCentreAndBackAgain)
{
  for (const SliceXForm& t : kTransforms)
    for (const McVec2f p : kPoints) {
      expectNear(t.map(p, cx, cy), plainMap(t, p));
      expectNear(t.mapInverse(t.map(p, cx, cy), cx, cy), p);
      expectNear(t.map(t.mapInverse(p, cx, cy), cx, cy), p);
    }
}

TEST(SliceXForm, IsExactForIdentityFlipAndQuarterTurns)
{
  EXPECT_EQ(SliceXForm().map({3.5f, -7.25f}, 11, 4), (McVec2f{3.5f, -7.25f}));
  EXPECT_EQ(SliceXForm(0, 0, 0, true).map({cx + 3, 9}, cx, cy), (McVec2f{cx - 3, 9}));
  EXPECT_EQ(SliceXForm(0, 0, 90, false).map({cx + 3, cy + 1}, cx, cy), (McVec2f{cx + 1, cy - 3}));
  EXPECT_EQ(SliceXForm(0, 0, -90, false).map({cx + 3, cy + 1}, cx, cy), (McVec2f{cx - 1, cy + 3}));
  EXPECT_EQ(SliceXForm(0, 0, 180, true).mapInverse({cx + 3, cy + 1}, cx, cy), (McVec2f{cx + 3, cy - 1}));
}

TEST(SliceXForm, RotateTurnsTheWholePlaneAboutThePivot)
{
  const McVec2f pivot{-4, 9};
  for (const SliceXForm& t : kTransforms) {
    SliceXForm r = t;
    r.rotate(35, pivot.x, pivot.y);
    EXPECT_EQ(r.rotation, t.rotation + 35);
    EXPECT_EQ(r.flip, t.flip);
    for (const McVec2f p : kPoints) {
      const McVec2f q = t.map(p, cx, cy) - McVec2f{cx, cy} - pivot;
      expectNear(r.map(p, cx, cy), turned(q.x, q.y, 35) + pivot + McVec2f{cx, cy});
    }
    SliceXForm inPlace = t;
    inPlace.rotate(35, t.translationX, t.translationY);
    EXPECT_EQ(inPlace.translationX, t.translationX);
    EXPECT_EQ(inPlace.translationY, t.translationY);
  }
}

TEST(SliceXForm, AfterDoesOneAndThenTheOther)
{
  for (const bool f1 : {false, true})
    for (const bool f2 : {false, true}) {
      const SliceXForm first(7.25f, -2.5f, 17.0f, f1), second(-3.0f, 11.0f, -140.0f, f2);
      const McVec2f p(5.0f, 40.0f);
      const McVec2f twice = second.map(first.map(p, 48, 31), 48, 31);
      const McVec2f once = second.after(first).map(p, 48, 31);
      EXPECT_NEAR(once.x, twice.x, 1e-4f);
      EXPECT_NEAR(once.y, twice.y, 1e-4f);
    }
}

TEST(SliceXForm, InvNegatesTheNumbersOnly)
{
  SliceXForm t(3, -4, 10, true);
  testing::internal::CaptureStdout();
  t.inverse().print();
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "translation X = -3.000000\ntranslation Y = 4.000000\nrotation = -10.000000\n\n");
  t.inv();
  EXPECT_TRUE(SliceInfo(t) == SliceInfo(-3, 4, -10, true));
}

TEST(SliceInfo, MirrorsPixelsOfDisplayedLandmarks)
{
  SliceInfo info(1, 2, 3, false);
  info.landmarks = {{0, 5}, {99, 7}, {30, 0}};
  McDArray<QPoint> shown{{1, 1}};
  info.getLandmarks(shown, 100);
  EXPECT_EQ(shown, info.landmarks);
  info.flip = true;
  info.getLandmarks(shown, 100);
  EXPECT_EQ(shown, (McDArray<QPoint>{{99, 5}, {0, 7}, {69, 0}}));
  EXPECT_EQ(info.landmarks[0], QPoint(0, 5));
}

TEST(SliceInfo, EqualsByTransformAndLandmarks)
{
  SliceInfo a(1, 2, 3, true);
  a.landmarks = {{4, 5}};
  EXPECT_TRUE(a == SliceInfo(a));
  for (int i = 0; i < 6; ++i) {
    SliceInfo b = a;
    if (i == 0) b.translationX = 0;
    if (i == 1) b.translationY = 0;
    if (i == 2) b.rotation = std::numeric_limits<float>::quiet_NaN();
    if (i == 3) b.flip = false;
    if (i == 4) b.landmarks.append({4, 5});
    if (i == 5) b.landmarks[0].setY(6);
    EXPECT_FALSE(a == b) << i;
    EXPECT_EQ(b == SliceInfo(b), i != 2) << i;
  }
}
