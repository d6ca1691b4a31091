#pragma once

#include "PairConfidence.h"
#include "TruthComparison.h"
#include "zx/ZxBox3.h"
#include "zxalign/ZxAlignControl.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace cli {

/// What an alignment run has done, for people and scripts that come later.
struct AlignReport {
  std::string version;             ///< of the program
  std::vector<std::string> inputs; ///< as given
  std::string output;              ///< as given
  /// The options and settings in effect, name and value as text, in the order of the manual. The number of
  /// threads is no part of them: it changes no result.
  std::vector<std::pair<std::string, std::string>> options;
  ZxDims dimensions;        ///< of the input
  std::string type;         ///< of the input's voxels, e.g. "uint8", "RGBA uint8"
  std::string method;       ///< its name
  std::string scale = "1";  ///< of the slices that were compared, against the input: "1/4"
  int reference = 0;        ///< slice that all others are aligned to
  bool interrupted = false; ///< stopped by the user before the last pair
  /// In the order in which they were aligned; transforms are those of slices of full size.
  std::vector<ZxAlignPairResult> pairs;
  /// Of the pairs, where the method has judged itself; as many as pairs, or none.
  std::vector<std::optional<PairConfidence>> confidences;
  std::vector<ZxAlignTransform> transforms; ///< of all slices, as they are at the end
  std::optional<TruthDistance> truth;       ///< where the true transforms were given

  /// Wall time of each phase.
  struct Seconds {
    double reading = 0.0;
    double aligning = 0.0;
    double resampling = 0.0;
    double writing = 0.0;
    double total = 0.0;
  } seconds;
};

/// The report as JSON text. Members whose name contains "seconds" are the only ones that differ between two
/// equal runs. Numbers are written so that they read back exactly.
std::string reportText(const AlignReport& report);

/// Writes the report beside its target and renames it into place. Throws io::Error.
void writeReport(const AlignReport& report, const std::string& path);

} // namespace cli
