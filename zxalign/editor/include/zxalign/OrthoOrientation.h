#pragma once

/// The planes perpendicular to the slices in which the stack is shown.
enum class OrthoOrientation {
  Sagittal = 0, ///< x = constant: y against z (yz)
  Coronal = 1,  ///< y = constant: x against z (xz)
  Both = 2
};

/// Which coordinate a line through a slice keeps constant.
enum class OrthoCoordinate {
  X = 0, ///< the line x = position
  Y = 1  ///< the line y = position
};
