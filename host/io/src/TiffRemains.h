#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace io {

/// A field of a page: so many times one value.
struct TiffField {
  std::uint32_t tag = 0;
  std::uint64_t value = 0;
  std::size_t count = 1;
};

/// What is known of the pages of a file that is to be continued.
struct TiffPlan {
  int slices = 0;
  std::uint64_t sliceBytes = 0;
  std::vector<TiffField> fields; ///< of every page
  std::string description;       ///< of the first page
};

/// Cuts a TIFF file that was not finished off behind its last whole page. Pages count as whole when they
/// have the fields of the plan and hold all strips of a slice. Returns their number, at most that of the
/// slices; the file is left as it is when there is none, or no such file. Throws Error when it cannot be
/// changed.
int keepWholePages(const std::string& path, const TiffPlan& plan);

} // namespace io
