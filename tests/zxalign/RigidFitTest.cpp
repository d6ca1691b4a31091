#include "RigidFit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

using Points = McDArray<QPoint>;

double determinant(const QTransform& m) { return m.m11() * m.m22() - m.m12() * m.m21(); }

/// Turned in the toolkit's sense (x' = x cos a - y sin a) and shifted.
Points turned(const Points& points, double degrees, QPoint shift)
{
  const double a = degrees * std::numbers::pi / 180.0;
  Points out;
  for (const QPoint& p : points)
    out.append(QPoint(static_cast<int>(std::lround(p.x() * std::cos(a) - p.y() * std::sin(a))),
                      static_cast<int>(std::lround(p.x() * std::sin(a) + p.y() * std::cos(a)))) +
               shift);
  return out;
}

void expectRotation(const QTransform& m, double degrees, double tolerance)
{
  EXPECT_NEAR(std::remainder(std::atan2(m.m12(), m.m11()) * 180.0 / std::numbers::pi - degrees, 360.0), 0.0,
              tolerance)
      << degrees;
  EXPECT_NEAR(determinant(m), 1.0, 1e-5) << degrees;
}

} // namespace

TEST(RigidFit, FewPointsGiveTheRotationAlone)
{
  EXPECT_TRUE(fitRigidMotion({}, {}).isIdentity());
  EXPECT_TRUE(fitRigidMotion({{3, 4}}, {{-7, 1}}).isIdentity());
  const QTransform m = fitRigidMotion({{0, 0}, {10, 0}}, {{0, 0}, {0, 10}});
  expectRotation(m, 90.0, 1e-4);
  EXPECT_EQ(QPointF(m.dx(), m.dy()), QPointF());
}

TEST(RigidFit, RecoversTheAngleOfTurnedPoints)
{
  const Points cloud{{-9000, -2000}, {8000, -5000}, {3000, 11000}, {-1000, 400}, {6000, 7000}};
  const Points pair{{-9000, -2000}, {8000, 5000}};
  for (const double angle : {0.0, 10.0, -35.0, 90.0, 120.0, -179.0}) {
    const QPoint shift(300, -4000);
    expectRotation(fitRigidMotion(cloud, turned(cloud, angle, shift)), angle, 0.01);
    expectRotation(fitRigidMotion(pair, turned(pair, angle, shift)), angle, 0.02);
  }
}

TEST(RigidFit, TranslatesByTheDifferenceOfTheCentroids)
{
  const Points a{{1, 5}, {7, 2}, {4, 11}};
  const QTransform same = fitRigidMotion(a, a);
  expectRotation(same, 0.0, 1e-4);
  EXPECT_EQ(QPointF(same.dx(), same.dy()), QPointF());
  // A mean of -2.5 rounds to -2, one of 2.5 to 3.
  const QTransform m =
      fitRigidMotion({{-4, 4}, {-3, 3}, {-2, 2}, {-1, 1}}, {{1, 0}, {-1, 0}, {0, 9}, {0, -9}});
  EXPECT_EQ(QPointF(m.dx(), m.dy()), QPointF(-2, 3));
}

TEST(RigidFit, IsAProperRotationForMirroredAndCollinearPoints)
{
  const Points a{{-90, -20}, {80, -50}, {30, 110}, {-10, 40}};
  Points mirrored;
  for (const QPoint& p : a) mirrored.append({-p.x(), p.y()});
  EXPECT_NEAR(determinant(fitRigidMotion(a, mirrored)), 1.0, 1e-5);
  for (const Points& line : {Points{{-4000, 0}, {0, 0}, {4000, 0}}, Points{{0, -4000}, {0, 0}, {0, 4000}},
                             Points{{-3000, -6000}, {0, 0}, {3000, 6000}}})
    for (const double angle : {0.0, 90.0, 180.0, 30.0})
      expectRotation(fitRigidMotion(line, turned(line, angle, {5, 9})), angle, 0.05);
}
