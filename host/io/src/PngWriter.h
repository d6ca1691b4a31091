#pragma once

#include "zx/ZxLattice.h"

#include <cstddef>
#include <span>
#include <string>

namespace io {

/// Writes one slice as a PNG picture: grey of 8 or 16 bits, or four values of 8 bits. Messages name the file
/// as target. Throws Error, also when the disk is full.
void writePng(const ZxLatticeShape& shape, std::span<const std::byte> slice, const std::string& target,
              const std::string& path);

} // namespace io
