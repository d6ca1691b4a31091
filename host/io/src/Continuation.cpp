#include "Continuation.h"

#include "FileError.h"
#include "Formats.h"
#include "SliceWriter.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace io {
namespace fs = std::filesystem;
namespace {

std::span<const char> charsOf(std::span<const std::byte> bytes)
{
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

} // namespace

std::vector<std::byte> beginningOf(const std::string& path, std::size_t size)
{
  std::vector<std::byte> bytes(size);
  std::ifstream in(path, std::ios::binary);
  in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
  bytes.resize(in.is_open() ? static_cast<std::size_t>(in.gcount()) : 0);
  return bytes;
}

void cutOff(const std::string& path, std::uint64_t bytes)
{
  std::error_code error;
  fs::resize_file(path, bytes, error);
  if (error) cannotWrite(path, error.message());
}

int keepWholeSlices(const std::string& path, std::span<const std::byte> header, std::uint64_t sliceBytes,
                    int slices)
{
  std::error_code error;
  const std::uint64_t size = fs::exists(path, error) ? fs::file_size(path, error) : 0;
  const bool begun =
      !error && size >= header.size() && std::ranges::equal(beginningOf(path, header.size()), header);
  if (!begun) {
    OutputFile file(path, path);
    file.write(header);
    file.close();
    return 0;
  }
  const std::uint64_t whole =
      std::min((size - header.size()) / sliceBytes, static_cast<std::uint64_t>(slices));
  if (size > 0) cutOff(path, header.size() + whole * sliceBytes);
  return static_cast<int>(whole);
}

void overwrite(const std::string& path, const std::string& target, std::uint64_t offset,
               std::span<const std::byte> bytes)
{
  errno = 0;
  std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
  file.seekp(static_cast<std::streamoff>(offset));
  file.write(charsOf(bytes).data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) cannotWrite(target, std::generic_category().message(errno ? errno : EIO));
}

int continueVoxels(const ZxSpatialData& data, const std::string& path, std::span<const std::byte> header)
{
  const ZxLatticeShape& shape = data.getLattice()->shape();
  const int first = keepWholeSlices(path, header, shape.sliceBytes(), shape.dims.slices);
  OutputFile file(path, path, OutputFile::Packing::None, OutputFile::Start::AtEnd);
  writeVoxels(data, path, file, first);
  file.close();
  return first;
}

int continueVoxelsBeside(const ZxSpatialData& data, const std::string& headerPath, const std::string& header,
                         const std::string& voxelsPath)
{
  const auto wanted = std::as_bytes(std::span(header));
  if (!std::ranges::equal(beginningOf(headerPath, header.size() + 1), wanted)) {
    std::error_code error;
    fs::remove(voxelsPath, error);
    writeText(header, headerPath, headerPath);
  }
  return continueVoxels(data, voxelsPath, {});
}

} // namespace io
