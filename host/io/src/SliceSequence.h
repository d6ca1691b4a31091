#pragma once

#include "Format.h"
#include "NumberPattern.h"
#include "PlainFile.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Volumes whose slices are files of their own.
namespace io {

/// The pictures in a folder (TIFF, PNG, JPEG, BMP by their names) in natural order; hidden and other files
/// are passed over. Throws Error when there is none.
std::vector<std::string> slicesInFolder(const std::string& folder);

/// The order in which a list of files is read: as given, but a list in the order of its bytes, which is what
/// a shell makes of a pattern like *.png, is put into natural order.
std::vector<std::string> orderOfList(std::vector<std::string> files);

/// Files read one after the other as one volume. A file with several slices gives all of them. All files must
/// have the same type; their sizes may differ (sliceSize()). Voxel size and origin are those of the first.
class SliceSequence final : public VolumeReader {
public:
  explicit SliceSequence(const std::vector<std::string>& files);
  void readSlice(int k, void* dst) override;
  bool readsInAnyOrder() const override { return m_inAnyOrder; }
  bool readRows(int k, int y, int rows, void* dst) override;
  void checkUnchanged(int k) override;
  SliceSize sliceSize(int k) const override;
  std::string sliceName(int k) const override;

private:
  struct Slice {
    std::size_t file;
    int index; ///< in its file
    SliceSize size;
  };
  void add(std::size_t file, const VolumeReader& reader);
  /// Opens the file of a slice, unless it is open.
  VolumeReader& fileOf(const Slice& slice);

  std::vector<std::string> m_files;
  std::vector<FileStamp> m_stamps;
  bool m_inAnyOrder = true;
  std::vector<Slice> m_slices;
  std::unique_ptr<VolumeReader> m_open;
  std::size_t m_openFile = 0;
};

/// Brings slices of unequal size to the largest width and height: each in the middle, with voxels of value 0
/// around it. Where the difference is odd the right or lower border is one wider.
class PaddedReader final : public VolumeReader {
public:
  explicit PaddedReader(std::unique_ptr<VolumeReader> reader);
  void readSlice(int k, void* dst) override;
  bool readsInAnyOrder() const override { return m_reader->readsInAnyOrder(); }
  void checkUnchanged(int k) override { m_reader->checkUnchanged(k); }

private:
  std::unique_ptr<VolumeReader> m_reader;
  std::vector<std::byte> m_slice;
};

/// Null when all slices have one size, else the number of the first slice that differs from slice 0.
std::optional<int> firstUnequalSlice(const VolumeReader& reader);

/// Where a sequence is written: a folder and the pattern of the names in it, numbers from 0.
struct SequenceTarget {
  std::string folder; ///< ends in '/', or empty for the current one
  std::string text;   ///< of the pattern, "aligned_%04d.tif"
  NumberPattern pattern;

  /// What a path means: "folder/" stands for "folder/slice_%04d.tif". Nothing for a path of a single file.
  /// Throws Error for a pattern that is none.
  static std::optional<SequenceTarget> of(const std::string& path);
  /// Empty, or why a sequence of so many slices cannot be written there.
  std::string problem(int slices) const;
  void write(const ZxSpatialData& data, const Format& format) const;
  /// Writes straight under the final names and takes over the files from slice 0 on that an earlier call has
  /// written, but for the last one there: it may be written in part. Returns the number of slices taken over.
  int continueWriting(const ZxSpatialData& data, const Format& format) const;

private:
  /// Calls writeSlice(slice, name of its file) for the slices from the first one on.
  void writeSlices(const ZxSpatialData& data, int first,
                   const std::function<void(const ZxSpatialData&, const std::string&)>& writeSlice) const;
  /// The slices from 0 on that are there as files of a shape, without the last one.
  int wholeSlices(ZxLatticeShape shape) const;
};

/// The file beside the slices that holds the parameters of a sequence, found by the pattern it is called
/// after. Nothing, and a remark, unless the files are exactly the slices 0, 1, 2, ... of that pattern.
std::optional<std::string> parametersOfSequence(const std::vector<std::string>& files,
                                                std::vector<std::string>& remarks);

} // namespace io
