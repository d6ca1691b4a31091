#include "StackSolver.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace robust;

void expectSame(const RigidMotion& a, const RigidMotion& b, double tolerance)
{
  EXPECT_LT(cornerDistance(a, b, 201, 133), tolerance) << a.degrees << " " << a.shift.x << " " << a.shift.y;
  EXPECT_EQ(a.mirrored, b.mirrored);
}

// Mirrored slices in between turn the sense of angles: a composition that forgets it misses by degrees.
TEST(RigidMotion, ComposesAndInvertsAlsoMirrored)
{
  const RigidMotion a{33.0, {7.0, -4.0}, true}, b{-120.0, {-2.5, 11.0}, false};
  for (const auto& [first, second] : {std::pair{a, b}, std::pair{b, a}, std::pair{a, a}}) {
    const Point p{31.0, -17.0}, direct = second.map(first.map(p)), composed = second.after(first).map(p);
    EXPECT_NEAR(direct.x, composed.x, 1e-9);
    EXPECT_NEAR(direct.y, composed.y, 1e-9);
    const Point back = first.inverse().map(first.map(p)), inverse = first.mapInverse(first.map(p));
    EXPECT_NEAR(back.x, p.x, 1e-9);
    EXPECT_NEAR(back.y, p.y, 1e-9);
    EXPECT_NEAR(inverse.x, p.x, 1e-9);
    EXPECT_NEAR(inverse.y, p.y, 1e-9);
  }
}

/// Twelve slices at places of their own, two of them mirrored, with links to three slices before each.
class StackSolver : public testing::Test {
protected:
  void SetUp() override
  {
    for (int k = 0; k < 12; ++k)
      truth[k] = {withinCircle(47.0 * k), {3.0 * k - 11.0, 20.0 - 5.5 * (k % 4)}, k == 3 || k == 8};
    for (int k = 1; k < 12; ++k)
      for (int j = std::max(0, k - 3); j < k; ++j)
        links.push_back({k, j, truth[j].inverse().after(truth[k]), 1.0});
    // Starts that are wrong by degrees and pixels; the fixed slice is where it belongs.
    for (const auto& [k, placement] : truth) start[k] = RigidMotion{2.5, {4.0, -6.0}, false}.after(placement);
    start[5] = truth[5];
  }

  Placements truth, start;
  std::vector<Link> links;
};

TEST_F(StackSolver, FindsPlacementsThatFitAllLinks)
{
  const Placements found = solveStack(start, links, 5, 100.0);
  for (const auto& [k, placement] : truth) expectSame(found.at(k), placement, 1e-4);
}

// The links of a damaged slice say anything; those around it hold the chain together.
TEST_F(StackSolver, IsNotBentByLinksThatContradictTheOthers)
{
  for (Link& link : links)
    if (link.moved == 7 && link.reference == 6) link.motion = {80.0, {60.0, -30.0}, link.motion.mirrored};
  const Placements found = solveStack(start, links, 5, 100.0);
  for (const auto& [k, placement] : truth) expectSame(found.at(k), placement, 0.05);
}

TEST_F(StackSolver, LeavesOutLinksOfAnotherFlipAndKeepsSlicesWithoutLinks)
{
  for (Link& link : links)
    if (link.moved == 2) link.motion.mirrored = true;
  std::erase_if(links, [](const Link& link) { return link.reference == 2; });
  const Placements found = solveStack(start, links, 5, 100.0);
  expectSame(found.at(2), start.at(2), 1e-6);
  expectSame(found.at(11), truth.at(11), 1e-4);
}

TEST_F(StackSolver, SharesAContradictionAmongEqualLinks)
{
  const Placements two{{0, {}}, {1, {}}};
  const std::vector<Link> both{{1, 0, {0.0, {1.0, 0.0}, false}, 1.0}, {1, 0, {0.0, {2.0, 0.0}, false}, 1.0}};
  EXPECT_NEAR(solveStack(two, both, 0, 50.0).at(1).shift.x, 1.5, 1e-3);
}

} // namespace
