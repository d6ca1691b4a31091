#pragma once

#include "Command.h"
#include "InputOptions.h"

#include <string>
#include <vector>

class ZxParamBundle;

namespace cli {

class AlignModule;

/// Quality (0 to 1) of the slices lower and lower + 1.
struct PairQuality {
  int lower = 0;
  double quality = 0.0;
  bool worst = false; ///< one of the worst tenth
};

/// Marks the worst tenth, at least one pair; of equal ones the lower slices first.
void markWorstTenth(std::vector<PairQuality>& pairs);

/// `zxalign quality`: prints how well neighbouring slices match under the alignment stored in the volume.
class QualityCommand : public Command {
public:
  void declare(CLI::App& options) override;
  void run(Console& console) override;

private:
  std::vector<PairQuality> measure(AlignModule& module, Console& console) const;
  /// What a method has said about the pair as it lies, or nothing.
  static std::string remarkOn(const ZxParamBundle& parameters, ZxAlignControl& control, int lower);

  InputOptions m_input;
  std::string m_mask;
  std::vector<float> m_window;
  bool m_sorted = false;
};

} // namespace cli
