#include "SliceWriter.h"

#include "FileError.h"
#include "zx/ZxWorkArea.h"

#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <vector>

namespace io {

namespace {

gzFile handle(void* file) { return static_cast<gzFile>(file); }

std::string lastError() { return std::generic_category().message(errno ? errno : EIO); }

} // namespace

void throwIfInterrupted()
{
  if (ZxWorkArea::getTheWorkArea()->wasInterrupted(1)) throw Interrupted();
}

OutputFile::OutputFile(const std::string& path, std::string target, Packing packing, Start start)
  : m_target(std::move(target))
{
  errno = 0;
  std::string mode = start == Start::Anew ? "wb" : "ab";
  if (packing == Packing::None) mode += 'T'; // as it is
  m_file = gzopen(path.c_str(), mode.c_str());
  if (!m_file) cannotWrite(m_target, lastError());
}

OutputFile::~OutputFile()
{
  if (m_file) gzclose_w(handle(m_file));
}

void OutputFile::write(std::span<const std::byte> bytes)
{
  constexpr std::size_t step = 1 << 24; // zlib counts in 32 bits
  while (!bytes.empty()) {
    const std::size_t n = std::min(bytes.size(), step);
    errno = 0;
    if (gzwrite(handle(m_file), bytes.data(), static_cast<unsigned>(n)) != static_cast<int>(n))
      cannotWrite(m_target, lastError());
    bytes = bytes.subspan(n);
  }
}

void OutputFile::close()
{
  void* const file = m_file;
  m_file = nullptr;
  errno = 0;
  if (gzclose_w(handle(file)) != Z_OK) cannotWrite(m_target, lastError());
}

void forEachSlice(const ZxSpatialData& data, const std::string& target,
                  const std::function<void(std::span<const std::byte>)>& f, int first)
{
  // Reading a slice does not change the voxels, but a source in a file moves on.
  ZxLattice& lattice = *const_cast<ZxSpatialData&>(data).getLattice();
  const std::size_t sliceBytes = lattice.shape().sliceBytes();
  const int slices = lattice.getDims().slices;
  std::vector<std::byte> buffer;
  ZxWorkArea* area = ZxWorkArea::getTheWorkArea();
  for (int k = first; k < slices; ++k) {
    throwIfInterrupted();
    // A slice of its own is a step of someone else's work.
    if (area->isWorking() && slices > 1)
      area->setProgressFraction(static_cast<float>(k) / static_cast<float>(slices));
    const void* slice = lattice.sliceInMemory(k);
    if (!slice) {
      buffer.resize(sliceBytes);
      if (!lattice.readSlice(k, buffer.data()))
        cannotWrite(target, "slice " + std::to_string(k) + " of the volume could not be read");
      slice = buffer.data();
    }
    f({static_cast<const std::byte*>(slice), sliceBytes});
  }
}

void writeVoxels(const ZxSpatialData& data, const std::string& target, OutputFile& file, int first)
{
  forEachSlice(
      data, target, [&](std::span<const std::byte> slice) { file.write(slice); }, first);
}

void writeVoxels(const ZxSpatialData& data, const std::string& target, const std::string& temporary)
{
  OutputFile file(temporary, target);
  writeVoxels(data, target, file);
  file.close();
}

} // namespace io
