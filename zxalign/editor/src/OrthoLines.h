#pragma once

#include "kernels/Affine.h"
#include "mc/McBox2i.h"
#include "zx/ZxLattice.h"
#include "zxalign/OrthoOrientation.h"
#include "zxalign/SliceXForm.h"

#include <vector>

/// Lines of the aligned frame through one slice under its transform: what they can touch, and the columns of
/// the orthogonal views that are taken along them.
///
/// The rotation centre is the slice centre in whole pixels. Any thread.
class OrthoLines {
public:
  OrthoLines(const ZxLatticeShape& shape, const SliceXForm& transform);

  /// The voxels that the line, between the first and the last row (x = position) or column (y = position) of
  /// the frame, can touch. The smaller ends are cut off and the larger ones rounded. False when it misses the
  /// slice.
  bool boxOf(OrthoCoordinate constant, int position, McBox2i& box) const;

  /// Writes the voxels nearest to that line to `pixels`, zeros where it is outside of the slice. No more than
  /// the box, from boxOf(), is read, through `buffer` where the slice is not in memory. False when it could
  /// not be read.
  bool cut(ZxLattice& lattice, int z, OrthoCoordinate constant, int position, const McBox2i& box,
           std::vector<unsigned char>& buffer, unsigned char* pixels) const;

  /// Writes to the pixels first ... last of a column the maximum-intensity projections along the lines at
  /// these positions. Each line is followed through the whole slice, also outside of the frame, so that a
  /// move along it changes nothing.
  void project(const void* slice, OrthoCoordinate constant, int first, int last, unsigned char* pixels) const;

private:
  ZxLatticeShape m_shape;
  kernels::Affine m_inverse;
};
