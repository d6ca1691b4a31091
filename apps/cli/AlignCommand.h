#pragma once

#include "AlignReport.h"
#include "Command.h"
#include "InputOptions.h"
#include "PlugInOptions.h"
#include "ResampleOptions.h"
#include "SliceScale.h"

#include <optional>
#include <string>
#include <vector>

namespace cli {

class AlignModule;
class OutputFiles;
class PartialOutput;

/// `zxalign align`: aligns every slice of a stack to its neighbour and writes the aligned volume, or the
/// transforms alone.
class AlignCommand : public Command {
public:
  void declare(CLI::App& options) override;
  void run(Console& console) override;

private:
  void declareSearch(CLI::App& options);
  void declareOutputs(CLI::App& options);

  /// What is aligned. With a scale `compared` is the volume with its slices reduced, else the volume itself.
  struct Stack {
    io::VolumeInfo info;
    McHandle<ZxField3> volume;
    McHandle<ZxField3> compared;
    McHandle<ZxSpatialData> mask;                     ///< of the size of the compared slices
    std::vector<std::vector<ZxAlignPoint>> landmarks; ///< of the volume's slices
  };

  bool writesTable() const;
  void check(const std::string& method, const io::VolumeInfo& info) const;
  void announce(const io::VolumeInfo& info, OutputFiles& files) const;

  AlignReport newReport(AlignModule& module, int method, const io::VolumeInfo& info) const;
  Stack open(const io::VolumeInfo& info) const;
  void connect(AlignModule& module, Stack& stack, Console& console);
  /// Goes on with reduced slices, which start where the slices of the volume do.
  void connectReduced(AlignModule& module, Stack& stack, Console& console) const;
  void connectMask(AlignModule& module, Stack& stack) const;
  /// Goes back to the volume with what has been found on reduced slices.
  void applyAtFullSize(AlignModule& module, const Stack& stack, AlignReport& report) const;
  RunFacts facts(AlignModule& module, const io::VolumeInfo& info, const AlignReport& report) const;
  void setOptions(AlignModule& module, const ZxLatticeShape& shape, Console& console) const;
  void setStart(AlignModule& module, const io::VolumeInfo& info) const;
  /// Takes over what a stopped run has finished. Returns the number of pairs.
  int takeUp(AlignModule& module, const Stack& stack, const AlignReport& report, PartialOutput& partial,
             Console& console) const;
  void align(AlignModule& module, int method, const Stack& stack, AlignReport& report, PartialOutput& partial,
             Console& console) const;
  void compareWithTruthTable(AlignReport& report) const;

  void remarkOnParameters(const Stack& stack, Console& console) const;
  void write(AlignModule& module, const Stack& stack, AlignReport& report, OutputFiles& files,
             PartialOutput& partial, Console& console) const;
  /// Writes the outputs that can be long. Returns the aligned volume, if one is made.
  McHandle<ZxSpatialData> writeVolumes(AlignModule& module, const Stack& stack, AlignReport& report,
                                       OutputFiles& files, PartialOutput& partial, Console& console) const;
  void writePictureOf(AlignModule& module, const Stack& stack, const AlignReport& report,
                      const McHandle<ZxSpatialData>& aligned, OutputFiles& files) const;
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
  std::string m_scaleText;
  SliceScale m_scale;
  bool m_resume = false;
  bool m_transformsOnly = false;
  std::string m_report;
  std::string m_picture;
  std::string m_truth;
};

} // namespace cli
