#pragma once

#include "phantom/PhantomBodies.h"
#include "phantom/PhantomNeuropil.h"
#include "phantom/PhantomNoise.h"
#include "phantom/PhantomRegion.h"

namespace samples {

/// The tissue in the depth of one slice, unbounded in x and y.
///
/// It is made area by area: gather finds the objects that reach into an area, focus those of a part of it,
/// grey gives the grey level at a place of that part.
class PhantomSection {
public:
  PhantomSection(std::uint64_t seed, int slice);

  void gather(const Disc& area);
  void focus(const Disc& part);
  double grey(double x, double y);

private:
  double bodyGrey(const PhantomBody& body, double depth, double x, double y, double grain,
                  double blotch) const;
  static double cellGrey(const PhantomBody& cell, double cellDepth, double x, double y, double grain,
                         double blotch);

  PhantomRegion m_region;
  PhantomNeuropil m_neuropil;
  PhantomBodies m_bodies;
  PhantomNoise m_bendX, m_bendY; ///< displace the tissue so that no outline is straight or round
  PhantomNoise m_waveX, m_waveY; ///< the same on a smaller scale
  PhantomNoise m_tint;           ///< slow changes of density
  PhantomNoise m_blotch;         ///< clumps of some pixels
  PhantomNoise m_grain;          ///< the finest structure
};

} // namespace samples
