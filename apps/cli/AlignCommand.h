#pragma once

#include "AlignReport.h"
#include "Command.h"
#include "InputOptions.h"
#include "PlugInOptions.h"
#include "ResampleOptions.h"

#include <optional>
#include <string>
#include <vector>

namespace cli {

class AlignModule;
class OutputFiles;

/// `zxalign align`: aligns every slice of a stack to its neighbour and writes the aligned volume, or the
/// transforms alone.
class AlignCommand : public Command {
public:
  void declare(CLI::App& options) override;
  void run(Console& console) override;

private:
  void declareSearch(CLI::App& options);
  void declareOutputs(CLI::App& options);

  bool writesTable() const;
  void check(const io::VolumeInfo& info) const;
  void announce(const io::VolumeInfo& info, OutputFiles& files) const;

  void connect(AlignModule& module, ZxField3& volume, const io::VolumeInfo& info, Console& console) const;
  void setOptions(AlignModule& module, const ZxLatticeShape& shape, Console& console) const;
  void setStart(AlignModule& module, const io::VolumeInfo& info) const;
  void align(AlignModule& module, int method, AlignReport& report, Console& console) const;
  void compareWithTruthTable(AlignReport& report) const;

  void write(AlignModule& module, ZxField3& volume, AlignReport& report, OutputFiles& files) const;
  void writeVolumes(AlignModule& module, ZxField3& volume, const AlignReport& report,
                    OutputFiles& files) const;
  std::vector<std::pair<std::string, std::string>> effectiveOptions(AlignModule& module) const;

  InputOptions m_input;
  PlugInOptions m_plugIns;
  ResampleOptions m_resample;
  std::string m_output;
  std::string m_method = "least-squares";
  std::vector<std::string> m_settings; ///< NAME=VALUE
  std::optional<int> m_reference;      ///< none: the module's
  bool m_noRotation = false;
  std::string m_iterations, m_translationStep, m_rotationStep, m_levels, m_neighbours;
  std::vector<std::string> m_window;
  std::string m_mask;
  std::string m_startFrom;
  std::string m_landmarks;
  bool m_transformsOnly = false;
  std::string m_report;
  std::string m_picture;
  std::string m_truth;
};

} // namespace cli
