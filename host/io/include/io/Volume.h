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
  std::vector<std::string> files; ///< all that voxels and parameters are read from, headers first
};

/// What to do with slices of unequal size in a sequence.
enum class UnequalSlices { Refuse, PadToLargest };

/// What to do with a volume that is to be read into memory and does not fit into what is free.
enum class TooLarge {
  Refuse,
  LeaveInFile ///< as openVolume() does, with a remark, where the files allow it
};

struct ReadOptions {
  UnequalSlices unequalSlices = UnequalSlices::Refuse;
  TooLarge tooLarge = TooLarge::Refuse;
};

/// Inputs are one volume file, one folder of slices, or a list of slice files. A folder is taken in natural
/// order of its names (2 before 10), and so is a list in the order of its bytes, which is what a shell makes
/// of a pattern like *.png; any other list keeps the order given.
VolumeInfo readInfo(const std::vector<std::string>& inputs, const ReadOptions& options = {});

/// Reads a volume. The label of the result is the file's name without its folder. Remarks go to the message
/// console.
McHandle<ZxField3> readVolume(const std::vector<std::string>& inputs, const ReadOptions& options = {});

/// Like readVolume(), but the voxels stay in their files and are read slice by slice, in any order, while the
/// field lives: a ZxExternalData. Where a file can only be read from its start to its end (packed by gzip or
/// bzip2, numbers as text) the field holds its voxels in memory, as from readVolume().
///
/// The source keeps a few slices and reads the next one ahead on a thread of its own; its readSlice() and
/// readBox() may be called from several threads. A slice that cannot be read, or a file that has changed
/// since, gives false and one sentence on the message console. A single file stays open: one that is replaced
/// by another of its name is read as it was. Files of a sequence are opened as their slices are asked for.
McHandle<ZxField3> openVolume(const std::vector<std::string>& inputs, const ReadOptions& options = {});

/// Reads a label field: one integer per voxel of 8, 16 or 32 bits; other types are refused.
McHandle<ZxUniformLabelField3> readLabels(const std::vector<std::string>& inputs,
                                          const ReadOptions& options = {});

/// Like readLabels(), but the voxels stay in their files where they can, as for openVolume().
McHandle<ZxUniformLabelField3> openLabels(const std::vector<std::string>& inputs,
                                          const ReadOptions& options = {});

/// Reads what a file was saved as: labels when its parameters say so (ZxFileAccess::contentParameter) and its
/// voxels can be labels, else a volume.
McHandle<ZxSpatialData> readAnything(const std::vector<std::string>& inputs, const ReadOptions& options = {});

/// Writes a volume with its parameters in the format of the name: .tif .tiff .nrrd .nhdr .mrc .mha .mhd .nii
/// .nii.gz; a name with a number pattern (aligned_%04d.tif) or one that ends in '/' gives one file a slice.
/// Files are written beside their target and renamed into place.
void writeVolume(const ZxSpatialData& data, const std::string& path);

/// Like writeVolume(), but written straight under that name, in a folder that belongs to the caller: nothing
/// is renamed into place, and a stop or a failure leaves what has been written so far. What stands there from
/// an earlier call is taken over as far as its slices are whole, and only the remaining slices are asked of
/// the data. That holds also when the earlier process was killed. Anything else that stands under that name
/// is overwritten. The data have to be those of the earlier call; only their header is compared. A file that
/// is packed as a whole (.nii.gz) is always written anew.
///
/// Returns the number of slices taken over.
int continueVolume(const ZxSpatialData& data, const std::string& path);

/// Empty when a volume of this shape can be written under that name, else the sentence that writeVolume()
/// would throw: unknown name ending, a type that the format cannot hold, a folder that does not exist or is
/// not writable. Asked before long work, so that it does not end in vain.
std::string checkWritable(const ZxLatticeShape& shape, const std::string& path);

} // namespace io
