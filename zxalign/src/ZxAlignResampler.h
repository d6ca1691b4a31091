#pragma once

#include "SliceResampling.h"
#include "zx/ZxField3.h"

#include <memory>

class ZxAlignData;
class ZxAlignSlices;

/// One resampling: makes the aligned volume and, when a label field is connected, the aligned labels, from
/// the module's input, transforms and settings as they are when this object is made.
class ZxAlignResampler {
public:
  explicit ZxAlignResampler(ZxAlignSlices& module);
  /// Resamples into results of the module; reuse writes into the existing ones where they fit.
  void run(bool reuse);
  /// The same results with slices that are computed when they are read. Of the labels none, after a message,
  /// without a label field.
  McHandle<ZxSpatialData> volumeOnDemand();
  McHandle<ZxSpatialData> labelsOnDemand();

private:
  enum class Outcome { Done, Stopped };

  McHandle<ZxSpatialData> obtainResult(bool reuse);
  McHandle<ZxSpatialData> existingResult(bool& failed);
  ZxLatticeShape resultShape() const;
  McHandle<ZxSpatialData> createResult(std::unique_ptr<ZxVoxelSource> voxels);
  void describeResult(ZxSpatialData& result);
  /// The parameters of labels are those of the input's labels.
  void inheritParameters(ZxSpatialData& result);
  Outcome resampleImage(ZxLattice& output);
  Outcome resampleSlice(int k, ZxLattice& output);
  McHandle<ZxSpatialData> labelField() const;
  void resampleLabels(bool reuse);
  McHandle<ZxUniformLabelField3> obtainLabels(const ZxSpatialData& input, bool reuse);
  ZxLatticeShape labelShape(const ZxSpatialData& input) const;
  McHandle<ZxUniformLabelField3> createLabels(const ZxSpatialData& input,
                                              std::unique_ptr<ZxVoxelSource> voxels);
  void describeLabels(const ZxSpatialData& input, ZxSpatialData& result);
  Outcome resampleLabelSlices(ZxLattice& input, ZxLattice& output);
  OutputBorders bordersOf() const;
  void showProgress(int k, int row);
  /// Where the output of an input lies in the frame of the input's file.
  void storeGeometry(const ZxSpatialData& input, ZxParamBundle& parameters) const;

  ZxAlignSlices& m_module;
  ZxAlignData& m_data;
  McHandle<ZxSpatialData> m_inputData; // Pending events may drop the module's own hold on it.
  ZxLattice& m_input;
  bool m_inputIsLabels;
  SliceResampling m_how;
};
