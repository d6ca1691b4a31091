#pragma once

#include "AlignmentGeometry.h"
#include "kernels/Resample.h"
#include "zx/ZxField3.h"

#include <vector>

class ZxAlignData;
class ZxAlignSlices;

/// One run of the resampling: makes the aligned volume and, when a label field is connected, the aligned
/// labels, from the module's input, transforms and settings.
class ZxAlignResampler {
public:
  explicit ZxAlignResampler(ZxAlignSlices& module);
  /// reuse writes into the module's existing results where they fit.
  void run(bool reuse);

private:
  enum class Outcome { Done, Stopped };

  McHandle<ZxSpatialData> obtainResult(bool reuse);
  McHandle<ZxSpatialData> existingResult(bool& failed);
  McHandle<ZxSpatialData> createResult();
  void describeResult(ZxSpatialData& result);
  Outcome resampleImage(ZxLattice& output);
  Outcome resampleSlice(int k, ZxLattice& output);
  std::vector<float> backgroundOf(int k, const unsigned char* source);
  void resampleLabels(bool reuse);
  McHandle<ZxUniformLabelField3> obtainLabels(const ZxSpatialData& input, bool reuse);
  Outcome resampleLabelSlices(ZxLattice& input, ZxLattice& output);
  kernels::ResampleFrame frameOf(int k, int width, int height) const;
  void showProgress(int k, int row);
  /// Where the output of an input lies in the frame of the input's file.
  void storeGeometry(const ZxSpatialData& input, ZxParamBundle& parameters) const;
  int bandRows() const;

  ZxAlignSlices& m_module;
  ZxAlignData& m_data;
  McHandle<ZxSpatialData> m_inputData; // Pending events may drop the module's own hold on it.
  ZxLattice& m_input;
  bool m_inputIsLabels;
  OutputBorders m_borders;
  int m_width; // of the output
  int m_height;
};
