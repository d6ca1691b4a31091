#pragma once

#include "zx/ZxLattice.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace io {

/// True when a name ends in an ending (given in lower case) in any case.
bool hasEnding(const std::string& path, std::string_view ending) noexcept;
/// True when the first bytes of a file are these.
bool beginsWith(std::span<const std::byte> head, std::string_view bytes) noexcept;

/// Empty for a volume of grey values or of colours, else why a format cannot hold it.
std::string neitherGreyNorColour(const char* format, const ZxLatticeShape& shape);

} // namespace io
