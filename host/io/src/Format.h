#pragma once

#include "io/Volume.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

/// What every file format gives to the library. Private to host/io.
namespace io {

/// Width and height of one slice in pixels.
struct SliceSize {
  int width = 0;
  int height = 0;
  friend bool operator==(const SliceSize&, const SliceSize&) = default;
};

/// An open volume file whose header has been checked against the file: sizes are plausible, the data are
/// there in full where that can be known without decoding.
class VolumeReader {
public:
  virtual ~VolumeReader() = default;
  const VolumeInfo& info() const noexcept { return m_info; }
  /// Reads slice k (counted from 0) in the type of info().shape into dst. Throws Error when the data are
  /// damaged or short.
  virtual void readSlice(int k, void* dst) = 0;
  /// True when any slice can be read for about the cost of that slice; else slices are to be asked for in
  /// rising order.
  virtual bool readsInAnyOrder() const { return m_info.shape.dims.slices == 1; }
  /// Reads some rows of slice k from row y on, all of them inside the slice. False, with dst unspecified,
  /// when that would be no cheaper than the whole slice. Throws Error like readSlice().
  virtual bool readRows(int, int, int, void*) { return false; }
  /// Throws Error when the file that holds slice k is known to have changed since it was opened.
  virtual void checkUnchanged(int) {}
  /// Size of slice k. Where slices differ info().shape has the largest width and height, and readSlice()
  /// gives each in its own size.
  virtual SliceSize sliceSize(int) const { return {m_info.shape.dims.width, m_info.shape.dims.height}; }
  /// Slice k for a sentence to the user: "page 3 of stack.tif".
  virtual std::string sliceName(int k) const { return "slice " + std::to_string(k); }

protected:
  VolumeInfo m_info;
};

/// One file format; stateless.
class Format {
public:
  virtual ~Format() = default;
  virtual const char* name() const noexcept = 0;
  /// Name endings with their dot, lower case; the longest match of all formats decides when writing.
  virtual std::vector<std::string> endings() const = 0;
  /// True when a file that begins like this is of this format, or its name says so and its contents do not
  /// say otherwise.
  virtual bool claims(const std::string& path, std::span<const std::byte> head) const = 0;
  /// Opens a file. Nothing of the size of the volume is allocated. Throws Error.
  virtual std::unique_ptr<VolumeReader> open(const std::string& path) const = 0;

  /// Empty, or why a volume of this shape cannot be held ("MRC cannot hold 32-bit integers").
  virtual std::string cannotHold(const ZxLatticeShape& shape) const = 0;
  /// True when the parameters are written into the file itself; else they go into <file>.params.json.
  virtual bool holdsParameters() const noexcept { return false; }
  /// Writes the volume. target is the final name (for headers that name a second file); temporary is the
  /// name to write to: the same folder, and a prefix of its own before the same name. A second file is
  /// written with the same prefix too (".zx-7-b.mhd" and ".zx-7-b.raw" become "b.mhd" and "b.raw"): the
  /// caller renames all files with the prefix when everything is written, and removes them on failure.
  /// Polls the work area between slices. Throws Error, also when the disk is full.
  virtual void write(const ZxSpatialData& data, const std::string& target,
                     const std::string& temporary) const = 0;
  /// Writes the volume straight under its name and takes over the slices that an earlier call has left there
  /// whole, as far as the format can tell (see continueVolume()). Returns their number. Throws Error.
  virtual int continueWriting(const ZxSpatialData& data, const std::string& path) const
  {
    write(data, path, path);
    return 0;
  }
};

std::unique_ptr<Format> makeTiffFormat();
std::unique_ptr<Format> makeNrrdFormat();
std::unique_ptr<Format> makeMrcFormat();
std::unique_ptr<Format> makeMetaImageFormat();
std::unique_ptr<Format> makeNiftiFormat();
/// PNG, JPEG and BMP pictures: one slice a file.
std::unique_ptr<Format> makePictureFormat();

} // namespace io
