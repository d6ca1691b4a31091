#pragma once

#include "phantom/PhantomGeometry.h"

#include <cstdint>
#include <vector>

namespace samples {

/// The densely packed processes between the cell bodies, cut by one slice.
///
/// Every process runs through some slices around its middle: it drifts sideways with a velocity of its own,
/// swells towards the middle and is squeezed out by its neighbours towards the ends. The slice is shared out
/// as a power diagram: a pixel belongs to the process with the least (squared distance - weight), and a
/// membrane runs where two processes meet.
class PhantomNeuropil {
public:
  PhantomNeuropil(std::uint64_t key, int slice) : m_key(key), m_slice(slice) {}

  /// Finds all processes that reach into the area. Call before focus.
  void gather(const Disc& area);
  /// Narrows the processes down to those that matter within a part of the area. Call before grey.
  void focus(const Disc& part);
  /// Grey level at a place of the part in focus.
  double grey(double x, double y) const;

private:
  /// A mitochondrion: an ellipse within the process that it belongs to. No mitochondrion: length 0.
  struct Organelle {
    double x = 0, y = 0, length = 0, width = 0;
    Place heading;
  };
  struct Process {
    double x, y, weight, tone;
    bool hasVesicles;
    Organelle organelle;
  };

  /// @param depth slices from the middle of the process to this slice
  void addProcess(PhantomRandom& random, double depth, double x, double y, const Disc& area);
  static Organelle makeOrganelle(PhantomRandom& random, double depth, double x, double y);
  static double organelleGrey(const Organelle& organelle, double x, double y, double around);
  double vesicleShade(double x, double y) const;
  double distanceToWall(const Process& owner, double power, double x, double y) const;

  std::uint64_t m_key;
  int m_slice;
  std::vector<Process> m_gathered;
  std::vector<Process> m_focused;
};

} // namespace samples
