#include "StoredBytes.h"

#include "FileError.h"
#include "NumberStream.h"

#include <algorithm>

namespace io {
namespace {

std::unique_ptr<ByteStream> openStream(const DataFile& file, StoredType type)
{
  std::unique_ptr<ByteStream> stream = openBytes(file.path, file.offset, file.packing);
  stream->skip(file.skip);
  switch (file.notation) {
  case Notation::Text:
    return std::make_unique<TextStream>(std::move(stream), file.path, type);
  case Notation::Hex:
    return std::make_unique<HexStream>(std::move(stream), file.path);
  default:
    return stream;
  }
}

} // namespace

StoredBytes::StoredBytes(std::vector<DataFile> files, std::uint64_t shareBytes, StoredType type)
  : m_files(std::move(files)), m_shareBytes(shareBytes), m_type(type),
    m_plain(std::all_of(m_files.begin(), m_files.end(), [](const DataFile& f) { return f.isPlain(); }))
{
  if (!m_plain) return;
  for (const DataFile& file : m_files) m_stamps.push_back(FileStamp::of(file.path));
  if (m_files.size() != 1) return;
  m_open = std::make_unique<PlainFile>(m_files.front().path);
  m_stamps.front() = m_open->stamp();
}

const PlainFile& StoredBytes::plainFile(std::size_t file)
{
  if (!m_open || m_file != file) {
    m_open.reset();
    m_open = std::make_unique<PlainFile>(m_files[file].path);
    m_file = file;
  }
  return *m_open;
}

void StoredBytes::checkUnchanged(std::uint64_t position)
{
  if (!m_plain) return;
  const std::size_t file = position / m_shareBytes;
  const PlainFile& open = plainFile(file);
  if (!(open.stamp() == m_stamps[file])) cannotRead(m_files[file].path, hasChanged);
  open.checkUnchanged();
}

void StoredBytes::read(std::uint64_t position, std::span<std::byte> bytes)
{
  while (!bytes.empty()) {
    const std::uint64_t within = position % m_shareBytes;
    const std::size_t n = std::min<std::uint64_t>(bytes.size(), m_shareBytes - within);
    readPart(position / m_shareBytes, within, bytes.first(n));
    bytes = bytes.subspan(n);
    position += n;
  }
}

void StoredBytes::readPart(std::size_t file, std::uint64_t within, std::span<std::byte> bytes)
{
  const DataFile& data = m_files[file];
  if (m_plain)
    plainFile(file).readAt(data.offset + data.skip + within, bytes);
  else
    readForward(file, within, bytes);
}

void StoredBytes::readForward(std::size_t file, std::uint64_t within, std::span<std::byte> bytes)
{
  if (!m_stream || m_file != file || within < m_within) {
    m_stream = openStream(m_files[file], m_type);
    m_file = file;
    m_within = 0;
  }
  m_stream->skip(within - m_within);
  m_within = within;
  if (m_stream->read(bytes.data(), bytes.size()) != bytes.size())
    cannotRead(m_files[file].path, "its data end too early");
  m_within += bytes.size();
  if (m_within == m_shareBytes) m_stream->finish();
}

} // namespace io
