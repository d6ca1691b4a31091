#pragma once

#include "PlugInOptions.h"
#include "zx/ZxField3.h"
#include "zx/ZxModule.h"
#include "zxalign/ZxAlignControl.h"

#include <string>

namespace cli {

class Console;

enum class Interpolation { Nearest, Linear };

/// The alignment module as the program drives it: loads the package, makes a module, connects it, and turns
/// what the module says about a refusal into a Failure.
class AlignModule {
public:
  /// With the methods of the plug-ins that are installed beside the package, and of those asked for. Shows
  /// which of them were not loaded.
  explicit AlignModule(Console& console, const PlugInOptions& plugIns = {});
  ~AlignModule();
  AlignModule(const AlignModule&) = delete;
  AlignModule& operator=(const AlignModule&) = delete;

  ZxAlignControl& control() noexcept { return *m_control; }

  /// Connects the volume to be aligned. Shows what the module has to say about it.
  void connectInput(ZxSpatialData& input);
  /// Connects something that belongs to the input ("mask", "LabelField", "reference").
  void connect(const char* port, ZxSpatialData& data);

  void set(const std::string& setting, const std::string& value);
  /// The grey values that count as black and white in the comparison of slices.
  void setWindow(float min, float max);
  float windowMin() const;
  float windowMax() const;
  void setInterpolation(Interpolation interpolation);

  /// Writes the transforms into the parameters of the input.
  void storeAlignment();
  /// Resamples the input, and the label field when one is connected, with the transforms as they are. Throws
  /// Stopped when the user stopped it.
  void resample();
  /// What resample() has made; null before it.
  ZxSpatialData* result() const;
  ZxSpatialData* labelResult() const;

private:
  template <class Port>
  Port& port(const char* name) const;

  Console& m_console;
  McHandle<ZxCompModule> m_module;
  ZxAlignControl* m_control = nullptr; // the module itself
};

} // namespace cli
