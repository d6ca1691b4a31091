#pragma once

#include "zx/ZxData.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// One file format as a dialog offers it.
struct ZxFileFormat {
  std::string name;                 ///< "NRRD"
  std::vector<std::string> endings; ///< with their dot, lower case; the first one is the usual one
};

/// What becomes of volumes of integers.
enum class ZxReadAs {
  Automatic, ///< labels where the file's parameters say that it was saved as labels, else a field
  Field,
  Labels ///< refused for anything but one integer of 8, 16 or 32 bits a voxel
};

/// What becomes of slices of unequal size.
enum class ZxUnequalSlices { Refuse, PadToLargest };

/// What is to be read: one volume.
struct ZxReadRequest {
  std::vector<std::string> inputs; ///< one volume file, one folder of slices, or a list of slice files
  ZxReadAs as = ZxReadAs::Automatic;
  ZxUnequalSlices unequalSlices = ZxUnequalSlices::Refuse;
};

/// How reading or writing has ended.
struct ZxFileOutcome {
  enum class State { Done, Failed, Stopped };
  State state = State::Done;
  McHandle<ZxSpatialData> data; ///< what was read; not yet in the pool
  std::string problem;          ///< one sentence when failed or stopped: what, which file, why
};

/// The door through which the host reads and writes files. What is behind it is installed by the program, so
/// that window and scripts need not know it.
///
/// Everything reports its progress to the current work area of the calling thread and its remarks to the
/// message console of the calling thread; nothing is thrown.
class ZxFileAccess {
public:
  virtual ~ZxFileAccess();

  /// Never null: where nothing is installed one that knows no format.
  static ZxFileAccess* getTheFileAccess();
  static void setTheFileAccess(std::unique_ptr<ZxFileAccess> access);

  /// Parameter that says what a file of integers was saved as: "Labels". Travels with the file.
  static constexpr const char* contentParameter = "ContentType";
  static constexpr const char* labelContent = "Labels";

  /// The formats that are read, in the order in which a dialog lists them.
  virtual std::vector<ZxFileFormat> readableFormats() const = 0;
  /// The formats that volumes are written in.
  virtual std::vector<ZxFileFormat> writableFormats() const = 0;
  /// Empty when the data can be written under that name, else the sentence that writing would end with.
  virtual std::string checkWritable(const ZxSpatialData& data, const std::string& path) const = 0;

  /// Reads a volume in the calling thread. The range of its values is known afterwards.
  ZxFileOutcome read(const ZxReadRequest& request);
  /// Writes data in the calling thread. They count as saved afterwards and know the name of their file.
  ZxFileOutcome write(ZxSpatialData& data, const std::string& path);

  /// The name to write to when a format is asked for by its name or one of its endings (any case, the dot may
  /// be missing): the path itself when its ending is one of the format's, else with the usual ending added.
  /// Empty when there is no such format.
  std::string pathFor(const std::string& path, std::string_view format) const;

private:
  friend class ZxFileJob;
  /// Writes into the parameters whether the data are labels.
  static void noteContent(ZxSpatialData& data);
  virtual ZxFileOutcome readVolume(const ZxReadRequest& request) = 0;
  virtual ZxFileOutcome writeVolume(const ZxSpatialData& data, const std::string& path) = 0;
};
