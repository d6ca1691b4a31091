#pragma once

#include "io/Error.h"
#include "zx/ZxField3.h"

#include <string>
#include <vector>

/// Reading and writing volumes. Everything here throws io::Error (io::Interrupted when the work area was
/// interrupted) and reports its progress to the current work area when a working phase is on.
namespace io {

/// What is known of a volume before its voxels are read.
struct VolumeInfo {
  std::string
      format; ///< "TIFF", "NRRD", "MRC", "MetaImage", "NIfTI", "PNG" ...; of a sequence that of its slices
  ZxLatticeShape shape;     ///< as it will be in memory
  std::string storedType;   ///< as the file says, e.g. "int8", "RGB uint8"
  ZxFileGeometry geometry;  ///< voxel size, origin, unit
  ZxParamBundle parameters; ///< that travel with the file
  std::vector<std::string>
      remarks; ///< what a user should know, one sentence each: "... holds 2 volumes, the first one is read."
};

/// What to do with slices of unequal size in a sequence.
enum class UnequalSlices { Refuse, PadToLargest };

struct ReadOptions {
  UnequalSlices unequalSlices = UnequalSlices::Refuse;
};

/// Inputs are one volume file, one folder of slices, or a list of slice files. A folder is taken in natural
/// order of its names (2 before 10), and so is a list in the order of its bytes, which is what a shell makes
/// of a pattern like *.png; any other list keeps the order given.
VolumeInfo readInfo(const std::vector<std::string>& inputs, const ReadOptions& options = {});

/// Reads a volume. The label of the result is the file's name without its folder. Remarks go to the message
/// console.
McHandle<ZxField3> readVolume(const std::vector<std::string>& inputs, const ReadOptions& options = {});

/// Reads a label field: one integer per voxel of 8, 16 or 32 bits; other types are refused.
McHandle<ZxUniformLabelField3> readLabels(const std::vector<std::string>& inputs,
                                          const ReadOptions& options = {});

/// Reads what a file was saved as: labels when its parameters say so (ZxFileAccess::contentParameter) and its
/// voxels can be labels, else a volume.
McHandle<ZxSpatialData> readAnything(const std::vector<std::string>& inputs, const ReadOptions& options = {});

/// Writes a volume with its parameters in the format of the name: .tif .tiff .nrrd .nhdr .mrc .mha .mhd .nii
/// .nii.gz; a name with a number pattern (aligned_%04d.tif) or one that ends in '/' gives one file a slice.
/// Files are written beside their target and renamed into place.
void writeVolume(const ZxSpatialData& data, const std::string& path);

/// Empty when a volume of this shape can be written under that name, else the sentence that writeVolume()
/// would throw: unknown name ending, a type that the format cannot hold, a folder that does not exist or is
/// not writable. Asked before long work, so that it does not end in vain.
std::string checkWritable(const ZxLatticeShape& shape, const std::string& path);

} // namespace io
