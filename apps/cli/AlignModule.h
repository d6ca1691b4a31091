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

  /// Where the grey values come from that count as black and white.
  enum class Window {
    OfInput, ///< stored with it, or its range, for which all of it is read
    Later    ///< setWindow() follows, or nobody compares slices
  };
  /// Connects the volume to be aligned. Shows what the module has to say about it.
  void connectInput(ZxSpatialData& input, Window window = Window::OfInput);
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
  /// The input, and the connected label field, under the transforms and settings as they are; their slices
  /// are made when they are read.
  McHandle<ZxSpatialData> alignedVolume();
  McHandle<ZxSpatialData> alignedLabels();

private:
  template <class Port>
  Port& port(const char* name) const;

  Console& m_console;
  McHandle<ZxCompModule> m_module;
  ZxAlignControl* m_control = nullptr; // the module itself
};

} // namespace cli
