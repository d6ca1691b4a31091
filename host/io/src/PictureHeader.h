#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace io {

enum class PictureKind { None, Png, Jpeg, Bmp };

/// The kind of picture that a file begins like.
PictureKind pictureKindOf(std::span<const std::byte> head) noexcept;

/// What the header of a picture says.
struct PictureHeader {
  PictureKind kind = PictureKind::None;
  int width = 0;
  int height = 0;
  bool alphaIsUnused = false; ///< a fourth byte a pixel that means nothing

  /// Reads and checks the header: the size is possible, the file is not cut off and holds as many data as the
  /// size needs. The decoders themselves fill up what is missing without a word. Throws Error, also for
  /// variants that are not supported.
  static PictureHeader read(const std::string& path);
};

} // namespace io
