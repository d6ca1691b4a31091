// Parts of Eigen that are under another licence than MPL-2 do not compile with this.
#define EIGEN_MPL2_ONLY
#include <Eigen/SparseCholesky>

#include "StackSolver.h"

#include "mc/McMath.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace robust {
namespace {

constexpr int kRounds = 30;
constexpr double kStillness = 1e-6; // pixels
// Links that miss by this many pixels count half; at least, and in medians of what the links miss by.
constexpr double kLeastScale = 1.0, kMedians = 2.0;

/// The difference of a link: where the moved slice lies against where the link puts it.
struct Difference {
  double turn = 0.0; ///< pixels on the circle
  Point shift;
  Point lever; ///< the displacement of the link, turned as the reference is
};

Difference differenceOf(const Link& link, const Placements& placements, double radius)
{
  const RigidMotion& moved = placements.at(link.moved);
  const RigidMotion& reference = placements.at(link.reference);
  const RigidMotion wanted = reference.after(link.motion);
  const double degrees = std::remainder(moved.degrees - wanted.degrees, 360.0);
  return {degrees * mc::kPi / 180.0 * radius,
          {moved.shift.x - wanted.shift.x, moved.shift.y - wanted.shift.y},
          {wanted.shift.x - reference.shift.x, wanted.shift.y - reference.shift.y}};
}

double sizeOf(const Difference& d)
{
  return std::sqrt(d.turn * d.turn + d.shift.x * d.shift.x + d.shift.y * d.shift.y);
}

/// The links whose flips agree with those of the placements.
std::vector<Link> usable(const std::vector<Link>& links, const Placements& placements)
{
  std::vector<Link> kept;
  std::copy_if(links.begin(), links.end(), std::back_inserter(kept), [&](const Link& link) {
    const auto moved = placements.find(link.moved), reference = placements.find(link.reference);
    return moved != placements.end() && reference != placements.end() && link.weight > 0.0 &&
           moved->second.mirrored == (reference->second.mirrored != link.motion.mirrored);
  });
  return kept;
}

/// The normal equations of all links at some placements. Unknowns of a slice: its turn in pixels on the
/// circle and its shift.
class Equations {
public:
  Equations(const std::map<int, int>& unknowns, double radius)
    : m_unknowns(unknowns), m_radius(radius),
      m_right(Eigen::VectorXd::Zero(static_cast<Eigen::Index>(unknowns.size() * 3)))
  {
  }

  void add(const Link& link, const Difference& d, double weight)
  {
    // d changes by +1 with the moved slice; with the reference by -1, and its turn swings the lever along.
    const std::array<std::array<double, 3>, 3> moved{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    const std::array<std::array<double, 3>, 3> reference{
        {{-1, 0, 0}, {-d.lever.y / m_radius, -1, 0}, {d.lever.x / m_radius, 0, -1}}};
    const std::array<double, 3> rest{d.turn, d.shift.x, d.shift.y};
    addBlocks(link.moved, moved, link.reference, reference, rest, weight);
  }

  /// The changes of all unknowns. A little weight on staying keeps what no link holds.
  Eigen::VectorXd solve()
  {
    const Eigen::Index n = m_right.size();
    for (Eigen::Index i = 0; i < n; ++i) m_entries.emplace_back(i, i, 1e-9);
    Eigen::SparseMatrix<double> matrix(n, n);
    matrix.setFromTriplets(m_entries.begin(), m_entries.end());
    const Eigen::SimplicialLDLT<Eigen::SparseMatrix<double>> factors(matrix);
    return factors.solve(m_right);
  }

private:
  using Block = std::array<std::array<double, 3>, 3>;

  void addBlocks(int moved, const Block& a, int reference, const Block& b, const std::array<double, 3>& rest,
                 double weight)
  {
    const std::array<std::pair<int, const Block*>, 2> sides{{{moved, &a}, {reference, &b}}};
    for (const auto& [row, rowBlock] : sides) {
      if (!m_unknowns.contains(row)) continue;
      for (const auto& [column, columnBlock] : sides)
        if (m_unknowns.contains(column)) addProduct(row, *rowBlock, column, *columnBlock, weight);
      for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t k = 0; k < 3; ++k) m_right[index(row, i)] -= weight * (*rowBlock)[k][i] * rest[k];
    }
  }

  void addProduct(int row, const Block& a, int column, const Block& b, double weight)
  {
    for (std::size_t i = 0; i < 3; ++i)
      for (std::size_t j = 0; j < 3; ++j) {
        double sum = 0.0;
        for (std::size_t k = 0; k < 3; ++k) sum += a[k][i] * b[k][j];
        if (sum != 0.0) m_entries.emplace_back(index(row, i), index(column, j), weight * sum);
      }
  }

  Eigen::Index index(int slice, std::size_t part) const
  {
    return 3 * static_cast<Eigen::Index>(m_unknowns.at(slice)) + static_cast<Eigen::Index>(part);
  }

  const std::map<int, int>& m_unknowns;
  double m_radius;
  Eigen::VectorXd m_right;
  std::vector<Eigen::Triplet<double>> m_entries;
};

/// The distance in pixels at which a link counts half.
double scaleOf(const std::vector<Link>& links, const Placements& placements, double radius)
{
  std::vector<double> sizes;
  for (const Link& link : links) sizes.push_back(residualOf(link, placements, radius));
  if (sizes.empty()) return kLeastScale;
  std::nth_element(sizes.begin(), sizes.begin() + static_cast<std::ptrdiff_t>(sizes.size() / 2), sizes.end());
  return std::max(kLeastScale, kMedians * sizes[sizes.size() / 2]);
}

/// One step; returns how far the slice that moves most has moved.
double improve(Placements& placements, const std::vector<Link>& links, const std::map<int, int>& unknowns,
               double radius)
{
  const double scale = scaleOf(links, placements, radius);
  Equations equations(unknowns, radius);
  for (const Link& link : links) {
    const Difference d = differenceOf(link, placements, radius);
    const double outlying = sizeOf(d) / scale, damped = 1.0 / (1.0 + outlying * outlying);
    equations.add(link, d, link.weight * damped * damped);
  }
  const Eigen::VectorXd change = equations.solve();
  double largest = 0.0;
  for (const auto& [slice, unknown] : unknowns) {
    const Eigen::Index i = 3 * static_cast<Eigen::Index>(unknown);
    RigidMotion& placement = placements.at(slice);
    placement.degrees = withinCircle(placement.degrees + change[i] / radius * 180.0 / mc::kPi);
    placement.shift.x += change[i + 1];
    placement.shift.y += change[i + 2];
    for (Eigen::Index k = 0; k < 3; ++k) largest = std::max(largest, std::abs(change[i + k]));
  }
  return largest;
}

} // namespace

double residualOf(const Link& link, const Placements& placements, double radius)
{
  return sizeOf(differenceOf(link, placements, radius));
}

Placements solveStack(const Placements& start, const std::vector<Link>& links, int fixed, double radius)
{
  Placements placements = start;
  const std::vector<Link> kept = usable(links, start);
  std::map<int, int> unknowns;
  for (const auto& [slice, placement] : start)
    if (slice != fixed) unknowns.emplace(slice, static_cast<int>(unknowns.size()));
  if (unknowns.empty() || kept.empty()) return placements;
  for (int round = 0; round < kRounds; ++round)
    if (improve(placements, kept, unknowns, radius) < kStillness) break;
  return placements;
}

} // namespace robust
