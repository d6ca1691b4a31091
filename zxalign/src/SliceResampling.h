#pragma once

#include "AlignmentGeometry.h"
#include "kernels/Resample.h"
#include "zx/ZxLattice.h"
#include "zxalign/SliceXForm.h"

#include <array>
#include <functional>
#include <vector>

class ZxAlignSlices;

/// How the slices of a volume are resampled: a copy of the module's transforms and settings, which later
/// changes of the module do not reach.
class SliceResampling {
public:
  /// Takes the output of the module's size, with the input placed in it by the borders.
  SliceResampling(const ZxAlignSlices& module, const OutputBorders& borders);

  int width() const noexcept { return m_width; }
  int height() const noexcept { return m_height; }
  const OutputBorders& borders() const noexcept { return m_borders; }

  /// Where slice k of a lattice of these dimensions lies in the output.
  kernels::ResampleFrame frame(int k, const ZxDims& dims) const;
  /// The values where slice k does not reach, at least 4. With tell the console hears of those that were
  /// found in the slice.
  enum class Tell { Yes, No };
  std::vector<float> background(int k, const void* source, const ZxLatticeShape& input, Tell tell) const;

  /// Called with the rows that are done, after about 10 ms of work each; false stops.
  using BandDone = std::function<bool(int rows)>;
  /// Resamples the rows of a frame from a slice of the input to target. Labels are never mixed. False when it
  /// was stopped.
  bool image(const kernels::ResampleFrame& frame, const ZxLattice& input, const void* source,
             const std::vector<float>& background, void* target, const BandDone& done) const;
  /// The same for labels of a label field, nearest neighbour.
  static void labels(const kernels::ResampleFrame& frame, McPrimType type, const void* source, void* target);

private:
  std::vector<SliceXForm> m_transforms;
  OutputBorders m_borders;
  int m_width;
  int m_height;
  bool m_linear;
  bool m_mostFrequentBackground;
  float m_background;
  std::array<float, 4> m_backgroundColour;
};

/// True for a lattice of labels.
bool holdsLabels(const ZxLattice& lattice);
