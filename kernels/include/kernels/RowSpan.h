#pragma once

#include <cstdint>

namespace kernels {

/// Columns [begin, end) of one row of the grid; none when begin >= end.
struct RowSpan {
  std::int32_t begin = 0;
  std::int32_t end = 0;

  std::int32_t size() const noexcept { return begin < end ? end - begin : 0; }
};

} // namespace kernels
