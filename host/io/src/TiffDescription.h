#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace io {

/// What ImageJ writes into the description of the first page: lines of key=value.
struct ImageJDescription {
  std::size_t images = 1; ///< slices x channels x frames
  std::size_t channels = 1;
  std::size_t frames = 1;
  std::optional<double> spacing; ///< distance of slices in unit
  std::string unit;              ///< UTF-8; empty when unknown

  static std::optional<ImageJDescription> parse(std::string_view description);
};

/// What OME-XML in the description of the first page says of the first image of a file.
struct OmeDescription {
  std::size_t sizeZ = 1;
  std::size_t sizeC = 1; ///< channels that have pages of their own: colours in one page are one
  std::size_t sizeT = 1;
  double physicalSize[3] = {0, 0, 0}; ///< 0 where it is not given
  std::string units[3];               ///< of the sizes, UTF-8
  /// Page (counted from 0) of each slice of channel 0 at time 0; empty when the pages do not hold all of
  /// them.
  std::vector<std::size_t> firstVolume;

  /// Null when the description holds no OME-XML or sizes that no file can have.
  static std::optional<OmeDescription> parse(std::string_view description, std::size_t pages);
};

} // namespace io
