#pragma once

#include "zx/ZxData.h"

#include <cstddef>
#include <functional>
#include <span>
#include <string>

namespace io {

/// Throws Interrupted when the user asked the current work to stop.
void throwIfInterrupted();

/// A file that is written from front to back, packed with gzip or not. Throws Error as soon as bytes cannot
/// be stored.
class OutputFile {
public:
  enum class Packing { None, Gzip };
  enum class Start { Anew, AtEnd };

  /// Creates the file, or goes on at the end of the one that is there. The messages name the target, which is
  /// what the user knows.
  OutputFile(const std::string& path, std::string target, Packing packing = Packing::None,
             Start start = Start::Anew);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();
  void write(std::span<const std::byte> bytes);
  void write(const std::string& text) { write(std::as_bytes(std::span(text))); }
  /// Ends the file. Without it the file counts as not written.
  void close();

private:
  std::string m_target;
  void* m_file;
};

/// Calls f for every slice of a volume from the first one on in rising order, as it lies in memory; between
/// slices the work area is shown the progress and asked for an interruption. Throws Error when a slice cannot
/// be read.
void forEachSlice(const ZxSpatialData& data, const std::string& target,
                  const std::function<void(std::span<const std::byte>)>& f, int first = 0);

/// Writes all slices from the first one on to an open file, or all of them to a file of their own.
void writeVoxels(const ZxSpatialData& data, const std::string& target, OutputFile& file, int first = 0);
void writeVoxels(const ZxSpatialData& data, const std::string& target, const std::string& temporary);

} // namespace io
