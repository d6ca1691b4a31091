#pragma once

#include <cstddef>
#include <cstdint>

namespace kernels {

/// Blocks of factor x factor pixels along one row of an average.
struct BlockRow {
  const std::uint8_t* source = nullptr; ///< the first of the rows that are averaged
  std::size_t stride = 0;               ///< bytes of a row of the source
  std::size_t channels = 1;
  std::size_t factor = 2;
  std::size_t count = 0; ///< blocks in the row

  std::size_t values() const noexcept { return count * channels; }
};

/// The largest factor for which the sum of a column of a block fits 16 bits.
inline constexpr std::size_t kLargestColumn = 257;

/// Writes the truncated means of the blocks, channel by channel, for factors 1 ... kLargestColumn.
///
/// `sums` is room for sumsOf(row) numbers, of any value but set. Chooses the best code for this machine.
void averageBlocks(const BlockRow& row, std::uint16_t* sums, std::uint8_t* out);

/// Enough for all columns of a row and for vectors that end behind them.
inline std::size_t sumsOf(const BlockRow& row) noexcept { return row.values() * row.factor + 256; }

} // namespace kernels
