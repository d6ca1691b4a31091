#pragma once

#include "zx/ZxMutex.h"

#include <cstdint>
#include <vector>

class ZxLabelLattice;
class ZxLattice;

/// How the slices of a volume become 8-bit images. Borrows what it names; the mutex is held while voxels are
/// read and images written.
struct SliceMapping {
  ZxLattice* lattice = nullptr;
  ZxLabelLattice* mask = nullptr; ///< null: every pixel counts
  float min = 0.0f;               ///< the value that becomes black
  float max = 255.0f;             ///< the value that becomes white

  /// 255 over the width of the window; 255 for an empty one.
  float scale() const noexcept { return max == min ? 255.0f : 255.0f / (max - min); }
};

/// Bit y * width + x (lowest bit of a byte first) is set where the mask's label is not 0; empty without a
/// mask.
std::vector<std::uint8_t> readMaskBits(ZxLabelLattice* mask, int slice, ZxMutex& mutex);

/// Maps one slice of the stack to grey values and, where it is in colour, copies it; pixels outside of the
/// mask become 0. raw and grey are room for one slice as it is stored, colour too, or it is null. False,
/// with black images, when the slice cannot be read.
bool mapSlice(const SliceMapping& mapping, int slice, ZxMutex& mutex, unsigned char* raw, unsigned char* grey,
              unsigned char* colour);
