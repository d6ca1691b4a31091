#pragma once

#include "zx/ZxLattice.h"
#include "zxalign/ZxAlignControl.h"

#include <QImage>
#include <span>
#include <vector>

namespace cli {

/// A cut through a stack, across all of its slices.
///
/// Rows are slices, the first on top; columns are pixels along x or along y. Grey cuts hold values as they
/// are stored, NaN where there is nothing; colour cuts hold red, green, blue with alpha 0 where there is
/// nothing.
struct PictureCut {
  int width = 0;
  int slices = 0;
  std::vector<float> grey;
  std::vector<QRgb> colour;

  bool isColour() const noexcept { return !colour.empty(); }
};

/// The cuts through the middle row (along x) and the middle column (along y).
struct PictureCuts {
  PictureCut alongX;
  PictureCut alongY;
};

/// Cuts a volume as it is, slice after slice. Throws io::Error when it cannot be read, io::Interrupted when
/// it was stopped.
PictureCuts cutStack(ZxLattice& lattice);

/// Cuts a volume as its slices lie after the transforms, nearest neighbour, in the size of the volume. Throws
/// alike.
PictureCuts cutThroughTransforms(ZxLattice& lattice, std::span<const ZxAlignTransform> transforms);

/// Grey values shown black and white.
struct GreyWindow {
  float min = 0.0f;
  float max = 0.0f;
};

/// The window that leaves the darkest and the brightest half percent of the cuts out.
GreyWindow chooseWindow(const PictureCuts& cuts);

/// The cut as an image, one pixel per voxel; transparent where there is nothing.
QImage cutImage(const PictureCut& cut, const GreyWindow& window);

} // namespace cli
