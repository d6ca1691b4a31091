#pragma once

#include "StackSolver.h"

#include <vector>

class ZxAlignSlices;

namespace robust {

/// What a run over a stack has measured so far, and where it has put the slices.
///
/// A method object lives for one pair, a run for many; so the chain is kept for the module between them. It
/// starts anew when a pair does not go on from slices that it knows, or when somebody has moved one of them
/// in the meantime.
class Chain {
public:
  /// The chain of a module, which begins with the module's reference slice when nothing of it goes on.
  static Chain& of(ZxAlignSlices& module);

  /// Slices of the chain that a slice can be matched with, the nearest first: those within so many on the
  /// side that the run comes from.
  std::vector<int> predecessors(int slice, int side, int count) const;

  /// Takes a slice up with the links that were measured for it. Without any it keeps its place relative to
  /// the slice that it follows.
  void add(int slice, const RigidMotion& start, const std::vector<Link>& links, const Link& present);

  /// The placements that fit all links.
  Placements solve(double radius) const { return solveStack(m_placements, m_links, m_fixed, radius); }
  /// Takes over what has become of them in the module.
  void keep(const ZxAlignSlices& module);

  int fixed() const noexcept { return m_fixed; }

private:
  bool goesOn(const ZxAlignSlices& module) const;
  void begin(const ZxAlignSlices& module);

  const void* m_lattice = nullptr; // only compared, never followed
  int m_fixed = 0;
  Placements m_placements;
  std::vector<Link> m_links;
};

} // namespace robust
