#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Made-up data with a known answer.
namespace samples {

/// What a phantom looks like. The tissue depends on the seed alone: options that differ only in displacement
/// or noise show the same tissue.
struct PhantomOptions {
  int slices = 64;        ///< 1 ... 65535
  int size = 512;         ///< width and height of a slice in pixels, 16 ... 65535
  std::uint64_t seed = 1; ///< any value
  double maxShift = 12;   ///< displacement in x and in y, uniform within +-maxShift pixels, 0 ... size
  double maxAngle = 6;    ///< rotation, uniform within +-maxAngle degrees, 0 ... 180
  double noise = 5;       ///< standard deviation of the noise of a pixel in grey levels, 0 ... 128
};

/// Says whether a phantom can be made with these options.
///
/// @return an empty string if so, else one sentence that names the first option out of range and its limits
std::string check(const PhantomOptions& options);

/// The rigid transform that takes a pixel of a slice to its place in the tissue, which is the aligned frame.
///
/// With u = p - c, c = (size / 2, size / 2) in whole pixels, a = angleDegrees and y downwards:
/// T(p) = (u.x cos a + u.y sin a + tx + c.x, -u.x sin a + u.y cos a + ty + c.y).
/// It undoes the displacement of the slice: moving every pixel p to T(p) puts the stack into register.
struct PhantomTransform {
  float tx = 0.0f;           ///< pixels
  float ty = 0.0f;           ///< pixels
  float angleDegrees = 0.0f; ///< turns counterclockwise as seen on the screen
  bool flip = false;         ///< sections are never turned over
};

/// A stack of serial sections through made-up tissue, every section displaced by a known rigid transform.
///
/// The tissue is a continuous world without borders in x and y, given by formulas: densely packed processes
/// that drift, swell and end, cell bodies with nuclei, branching fibres and vessels that run along and across
/// the sections, organelles and texture. A slice samples it at T(p) in the depth of the slice, so nothing is
/// resampled and the edges of a slice show tissue as well. A section is about five pixels thick. Staining
/// (brightness and contrast) varies from slice to slice, and every pixel carries noise of its own.
///
/// The same options give the same bytes on every machine, with any number of threads, in any order of slices.
class Phantom {
public:
  /// Options out of range (see check) are moved to the nearest limit, NaN to the lower one.
  explicit Phantom(const PhantomOptions& options);

  /// The options in effect.
  const PhantomOptions& options() const noexcept { return m_options; }

  /// One transform per slice.
  const std::vector<PhantomTransform>& truth() const noexcept { return m_truth; }

  /// Renders slice k, 0 <= k < slices, into size * size bytes, row by row from the top. May be called from
  /// several threads at once; needs little memory beyond the result.
  void renderSlice(int k, std::uint8_t* pixels) const;

private:
  PhantomOptions m_options;
  std::vector<PhantomTransform> m_truth;
};

} // namespace samples
