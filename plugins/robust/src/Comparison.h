#pragma once

#include "Pyramid.h"
#include "RigidMotion.h"

#include <array>

namespace robust {

/// Which values of a level are compared.
enum class Values { Plain, Flat };

/// A part of a level's grid: columns left ... right - 1, rows top ... bottom - 1.
struct Window {
  int left = 0, top = 0, right = 0, bottom = 0;
};

/// How well two slices match under a motion.
struct Match {
  double correlation = 0.0; ///< normalised cross-correlation on the overlap, all channels; -1 to 1
  double overlap = 0.0;     ///< share of what the slice that shows less has to show that counts, 0 to 1
};

/// Two slices at one resolution, the moved one brought onto the grid of the reference by a motion.
///
/// A pixel counts where both slices are valid and one of them is relevant.
class Comparison {
public:
  Comparison(const Level& reference, const Level& moved, Values values);

  /// Size of a pixel of this resolution in pixels of the slice.
  double pixel() const noexcept { return m_reference.pixel; }

  int width() const noexcept { return m_reference.width; }
  int height() const noexcept { return m_reference.height; }

  /// From the next moveTo() on, only pixels of the reference within this window count. All do at first.
  void watch(const Window& window) { m_window = window; }

  /// Samples the moved slice under a motion (in pixels of the slice).
  void moveTo(const RigidMotion& motion);

  Match match() const;

  /// What counts, and its middle.
  struct Spread {
    double weight = 0.0;
    int middleX = 0, middleY = 0;
  };
  Spread spread() const;
  double weightIn(const Window& window) const;

  /// One step of Gauss-Newton on turn and displacement, with gains and offsets of the channels eliminated and
  /// pixels that do not fit weighed down. Returns the motion that follows the present one on the reference.
  ///
  /// Tissue grows or shrinks a little from slice to slice. Outlines of uneven contrast would turn that into a
  /// displacement, so the growth about the middle of what overlaps is an unknown, too, and dropped at the
  /// end.
  RigidMotion step(bool turns) const;

private:
  struct Gain {
    double gain = 1.0, offset = 0.0;
    double spread = 1.0;    ///< standard deviation of what is left
    double certainty = 0.0; ///< weight of the channel: what it explains by what it leaves
    bool counts = false;
  };
  using Sums = std::array<double, 6>;    // of one channel: w, r, m, rr, mm, rm
  using Normal = std::array<double, 29>; // of one channel: J'J, 6 x 6 upper triangle; J'r; sums of x and of y

  std::size_t bands() const;
  void sampleRow(const RigidMotion& motion, int y);
  Sums sumsOf(std::size_t channel) const;
  Gain gainOf(const Sums& sums) const;
  void addRow(std::size_t channel, const Gain& gain, int y, Normal& normal) const;

  const Level& m_reference;
  const Level& m_moved;
  const std::vector<Field>& m_referenceValues;
  const std::vector<Field>& m_movedValues;
  std::vector<Field> m_sampled; ///< the moved slice on the reference's grid
  Field m_weight;
  Window m_window;
  double m_fullWeight; ///< of the slice that shows less
};

} // namespace robust
