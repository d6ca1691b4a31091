#pragma once

#include "zxalign/ZxAlignControl.h"

#include <span>
#include <string>

/// The settings of the module: of its automatic methods and of its output. Plain values with their defaults;
/// those marked "input" get theirs when an input is connected.
struct ZxAlignSettings {
  static constexpr int maxOutputSize = 1 << 20; ///< pixels along one side

  // Which moves are allowed at all.
  bool rotationAllowed = true;

  // Least-squares method.
  int maxIterations = 1000;
  float translationStep = 1.0f; ///< pixels
  float rotationStep = 1.0f;    ///< degrees; input: 360 / (pi * width), one pixel at half the width
  int resamplingLevels = 128;

  // Edge-detection method.
  int matrixDimension = 5;
  int percentage = 95;
  int rasterStep = 1;
  int imageRasterStep = 2;
  bool mirror = false;
  bool calculatedThreshold = false;
  int threshold = 200;
  float angularStep = 1.0f; ///< degrees
  bool brightBackground = false;

  // Resampled output.
  int outputWidth = 0;          ///< pixels; input
  int outputHeight = 0;         ///< pixels; input
  bool automaticOrigin = false; ///< places the slices by their common box instead of centring them
  float background = 0.0f;
  float backgroundColour[4] = {0.0f, 0.0f, 0.0f, 0.0f};
  bool mostFrequentBackground = false;

  /// The settings as tables, help and scripts show them.
  static std::span<const ZxAlignSetting> table();
  /// Sets one from text; empty, or a sentence that says what is wrong with it.
  std::string set(const std::string& name, const std::string& value);
  /// The value as text; empty for an unknown name.
  std::string get(const std::string& name) const;
};
