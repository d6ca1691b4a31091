#pragma once

#include "mc/McPrimType.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace io {

/// What one value can be in a file. More than the types of a voxel in memory.
enum class StoredType { Int8, UInt8, Int16, UInt16, Int32, UInt32, Int64, UInt64, Half, Float, Double };

std::size_t sizeOf(StoredType type) noexcept;
/// Name for messages: "int8", "half float", "double" ...
const char* nameOf(StoredType type) noexcept;

/// Smallest and largest value of integers.
struct IntegerRange {
  std::int64_t min = 0;
  std::uint64_t max = 0; ///< 0 also when all values are negative
};

/// The smallest type of a voxel that holds all values of a range exactly; nothing when there is none (beyond
/// 2^53).
std::optional<McPrimType> smallestTypeFor(const IntegerRange& range) noexcept;

/// How the voxels of a file are stored: values side by side, and what they mean.
struct StoredVoxels {
  StoredType type = StoredType::UInt8;
  int channels = 1;     ///< 1, or 3 or 4 for colours of 8 bits
  bool swapped = false; ///< stored in the other byte order than this machine's
  double slope = 1.0;   ///< a value means slope * stored + intercept
  double intercept = 0.0;

  bool isScaled() const noexcept { return slope != 1.0 || intercept != 0.0; }
  std::size_t bytes() const noexcept { return sizeOf(type) * static_cast<std::size_t>(channels); }
  /// "RGB uint8"
  std::string describe() const;
  /// The type in memory; nothing for an integer type whose values have to be looked at first.
  std::optional<McPrimType> typeInMemory() const noexcept;
  /// True when stored voxels are what is needed in memory.
  bool isPlain(McPrimType target) const noexcept;
  /// Widens a range by the values of so many voxels of an integer type. Swaps them in place.
  void extendRange(void* voxels, std::size_t count, IntegerRange& range) const;
  /// Converts count voxels to values of a type in memory, three channels to four with alpha 255. Swaps the
  /// stored ones in place.
  void convert(void* voxels, std::size_t count, McPrimType target, void* dst) const;
};

} // namespace io
