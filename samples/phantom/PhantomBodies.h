#pragma once

#include "phantom/PhantomGeometry.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace samples {

/// A cell body, a fibre or a vessel.
struct PhantomBody {
  enum class Kind { Cell, Fibre, Vessel };
  Kind kind = Kind::Cell;
  double tone = 0; ///< grey level of its inside
  Place nucleus;   ///< of a cell only
  double nucleusRadius = 0;
};

/// What lies in the neuropil, cut by one slice: cell bodies with nuclei, branching fibres and vessels.
///
/// All are made of rounded pieces: one for a cell, a tree of them for a fibre or a vessel, which runs mostly
/// along or mostly across the slices, bends, branches, and closes at its ends. Bodies that meet share the
/// space half and half.
class PhantomBodies {
public:
  struct Hit {
    const PhantomBody* body =
        nullptr;      ///< the one that the place lies in or nearest to, null when none is near
    double depth = 0; ///< pixels from the place to its surface, negative outside
  };

  /// @param regionKey the noise that says where cell bodies crowd, see regionAt
  PhantomBodies(std::uint64_t key, std::uint64_t regionKey, int slice);

  /// Finds all bodies that reach into the area. Call before focus.
  void gather(const Disc& area);
  /// Narrows the pieces down to those that matter within a part of the area. Call before find.
  void focus(const Disc& part);
  Hit find(double x, double y) const;

private:
  /// From start to start + along, with a radius that changes evenly.
  struct Piece {
    Place start, along;
    double radius, radiusChange;
    std::size_t body;
  };
  struct Growth;
  struct Tip;

  void gatherTrees(const Growth& growth, const Disc& area);
  void gatherCells(const Disc& area);
  void growTree(const Growth& growth, PhantomRandom& random, Place root, const Disc& area);
  static void step(const Growth& growth, PhantomRandom& random, bool across, Tip& tip);
  static double distance(const Piece& piece, double x, double y);

  std::uint64_t m_key;
  std::uint64_t m_regionKey;
  int m_slice;
  std::vector<PhantomBody> m_bodies;
  std::vector<Piece> m_gathered; ///< the pieces of one body follow each other
  std::vector<Piece> m_focused;
};

} // namespace samples
