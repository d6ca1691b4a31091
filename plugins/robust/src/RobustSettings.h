#pragma once

#include "zxalign/ZxAlignControl.h"

#include <optional>
#include <span>
#include <string>

namespace robust {

/// The settings of the method: elements of the interpreter's array kVariable, by the names of the table.
struct RobustSettings {
  bool flip = false;             ///< mirrored slices are looked for, too
  double largestAngle = 180.0;   ///< degrees, to both sides of where the slice lies
  double largestShift = 50.0;    ///< percent of the width, from where the slice lies
  double leastConfidence = 0.75; ///< below it the pair is left as it is
  int neighbours = 1;            ///< slices before that a slice is matched with

  static constexpr const char* kVariable = "::zxalign_robust";

  /// The settings as help and manual show them.
  static std::span<const ZxAlignSetting> table();
  /// Sets one from text; empty, or a sentence that says what is wrong with it.
  std::string set(const std::string& name, const std::string& value);
  /// set() on values that nobody uses.
  static std::string check(const std::string& name, const std::string& value);
  /// As the interpreter has them. None, with the sentence in problem, when one of them is wrong.
  static std::optional<RobustSettings> current(std::string& problem);
};

} // namespace robust
