#include "Formats.h"

#include "ByteStream.h"
#include "FileError.h"
#include "FormatNames.h"
#include "SliceWriter.h"
#include "io/ParameterJson.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <vector>

namespace io {
namespace {

std::vector<std::byte> readHead(const std::string& path)
{
  constexpr std::size_t n = 4096;
  if (fileSize(path) == 0) cannotRead(path, "the file is empty");
  std::ifstream in(path, std::ios::binary);
  std::vector<std::byte> head(n);
  in.read(reinterpret_cast<char*>(head.data()), static_cast<std::streamsize>(n));
  if (!in.is_open() || in.bad()) cannotRead(path, std::generic_category().message(errno));
  head.resize(static_cast<std::size_t>(in.gcount()));
  return head;
}

} // namespace

const std::vector<std::unique_ptr<Format>>& allFormats()
{
  // In the order in which they are asked: those with unmistakable first bytes come first.
  static const std::vector<std::unique_ptr<Format>> formats = [] {
    std::vector<std::unique_ptr<Format>> list;
    list.push_back(makeTiffFormat());
    list.push_back(makePictureFormat());
    list.push_back(makeNrrdFormat());
    list.push_back(makeNiftiFormat());
    list.push_back(makeMetaImageFormat());
    list.push_back(makeMrcFormat());
    return list;
  }();
  return formats;
}

const Format& formatOfFile(const std::string& path)
{
  const std::vector<std::byte> head = readHead(path);
  for (const auto& format : allFormats()) {
    if (format->claims(path, head)) return *format;
  }
  cannotRead(path, "it is in no known format");
}

std::unique_ptr<VolumeReader> openFile(const std::string& path) { return formatOfFile(path).open(path); }

const Format* formatOfName(const std::string& path)
{
  const Format* found = nullptr;
  std::size_t longest = 0;
  for (const auto& format : allFormats()) {
    for (const std::string& ending : format->endings()) {
      if (ending.size() <= longest || !hasEnding(path, ending)) continue;
      longest = ending.size();
      found = format.get();
    }
  }
  return found;
}

std::string writableEndings()
{
  std::string text;
  for (const auto& format : allFormats()) {
    for (const std::string& ending : format->endings()) text += (text.empty() ? "" : ", ") + ending;
  }
  return text;
}

std::string parametersText(const ZxSpatialData& data)
{
  ZxParamBundle parameters = data.parameters();
  parameters.remove(ZxFileGeometry::bundleName);
  const ZxFileGeometry geometry = ZxFileGeometry::of(data);
  const ZxFileGeometry unknown;
  const bool isKnown = !geometry.unit.empty() || !std::ranges::equal(geometry.origin, unknown.origin) ||
                       !std::ranges::equal(geometry.voxelSize, unknown.voxelSize);
  if (isKnown) geometry.store(parameters);
  return parameters.entries().empty() ? std::string() : toJson(parameters);
}

std::string readText(const std::string& path)
{
  constexpr std::uint64_t limit = std::uint64_t{1} << 28;
  const std::uint64_t size = fileSize(path);
  if (size > limit) cannotRead(path, "it is too large for a file of parameters");
  std::string text(size, '\0');
  std::ifstream in(path, std::ios::binary);
  in.read(text.data(), static_cast<std::streamsize>(size));
  if (!in) cannotRead(path, std::generic_category().message(errno));
  return text;
}

void writeText(const std::string& text, const std::string& target, const std::string& path)
{
  OutputFile file(path, target);
  file.write(text);
  file.close();
}

void writeParameters(const ZxSpatialData& data, const std::string& path)
{
  const std::string parameters = parametersText(data);
  if (!parameters.empty()) return writeText(parameters, path, path);
  std::error_code error;
  std::filesystem::remove(path, error);
}

} // namespace io
