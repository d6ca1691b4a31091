#include "TiffRemains.h"

#include "Continuation.h"
#include "FileError.h"
#include "PlainFile.h"

#include <tiff.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <filesystem>
#include <span>

namespace io {
namespace {

/// Sizes in bytes of what a directory is made of.
struct DirectoryLayout {
  std::uint64_t headerBytes;
  std::uint64_t firstLink; ///< where the header says where the first directory is
  std::uint64_t countBytes;
  std::uint64_t offsetBytes;
  std::uint64_t entryBytes() const noexcept { return 4 + 2 * offsetBytes; }
};
constexpr DirectoryLayout classic{8, 4, 2, 4}, big{16, 8, 8, 8};

/// A field of a page: so many values of a type from a place in the file on.
struct Entry {
  std::uint64_t tag = 0, valueBytes = 0, count = 0, at = 0;
  std::uint64_t end() const noexcept { return at + count * valueBytes; }
};

struct Directory {
  std::vector<Entry> entries;
  std::uint64_t link = 0; ///< place of the offset of the next one
  std::uint64_t end = 0;  ///< of the directory and of all values of its fields
};

std::uint64_t bytesOfType(std::uint64_t type)
{
  switch (type) {
  case TIFF_SHORT:
    return 2;
  case TIFF_LONG:
    return 4;
  case TIFF_RATIONAL:
  case TIFF_LONG8:
  case TIFF_DOUBLE:
    return 8;
  default:
    return 1;
  }
}

/// Reads directories in this machine's byte order. Throws Error for what does not lie in the file.
class DirectoryReader {
public:
  DirectoryReader(const PlainFile& file, const DirectoryLayout& layout) : m_file(file), m_layout(layout) {}

  std::uint64_t number(std::uint64_t at, std::uint64_t bytes) const
  {
    std::uint64_t value = 0;
    auto* first = reinterpret_cast<std::byte*>(&value);
    if constexpr (std::endian::native == std::endian::big) first += sizeof value - bytes;
    m_file.readAt(at, {first, bytes});
    return value;
  }
  std::uint64_t offset(std::uint64_t at) const { return number(at, m_layout.offsetBytes); }

  Directory directory(std::uint64_t at) const
  {
    constexpr std::uint64_t most = 64; // A page that we write has 15 fields.
    Directory result;
    const std::uint64_t count = std::min(number(at, m_layout.countBytes), most);
    for (std::uint64_t i = 0; i < count; ++i)
      result.entries.push_back(entry(at + m_layout.countBytes + i * m_layout.entryBytes()));
    result.link = at + m_layout.countBytes + count * m_layout.entryBytes();
    result.end = result.link + m_layout.offsetBytes;
    for (const Entry& e : result.entries) result.end = std::max(result.end, e.end());
    return result;
  }

  /// The values of a field of whole numbers; none when the page has no such field.
  std::vector<std::uint64_t> values(const Directory& directory, std::uint64_t tag) const
  {
    std::vector<std::uint64_t> result;
    const auto found = find(directory, tag);
    if (found == directory.entries.end() || found->end() > m_file.size()) return result;
    for (std::uint64_t i = 0; i < found->count; ++i)
      result.push_back(number(found->at + i * found->valueBytes, found->valueBytes));
    return result;
  }
  std::string text(const Directory& directory, std::uint64_t tag) const
  {
    const auto found = find(directory, tag);
    if (found == directory.entries.end() || found->end() > m_file.size() || found->count == 0) return {};
    std::string result(found->count, '\0');
    m_file.readAt(found->at, std::as_writable_bytes(std::span(result)));
    result.pop_back(); // It ends in a zero.
    return result;
  }

private:
  static std::vector<Entry>::const_iterator find(const Directory& directory, std::uint64_t tag)
  {
    return std::find_if(directory.entries.begin(), directory.entries.end(),
                        [tag](const Entry& entry) { return entry.tag == tag; });
  }
  Entry entry(std::uint64_t at) const
  {
    Entry entry{.tag = number(at, 2), .valueBytes = bytesOfType(number(at + 2, 2))};
    entry.count = offset(at + 4);
    entry.at = at + 4 + m_layout.offsetBytes;
    // What does not fit into the entry stands elsewhere.
    if (entry.count > m_layout.offsetBytes / entry.valueBytes) entry.at = offset(entry.at);
    if (entry.count > m_file.size()) entry.count = m_file.size();
    return entry;
  }

  const PlainFile& m_file;
  const DirectoryLayout& m_layout;
};

/// The layout of a file in this machine's byte order, else null.
const DirectoryLayout* layoutOf(const PlainFile& file)
{
  std::uint16_t beginning[2] = {};
  file.readAt(0, std::as_writable_bytes(std::span(beginning)));
  const bool native =
      beginning[0] == (std::endian::native == std::endian::little ? TIFF_LITTLEENDIAN : TIFF_BIGENDIAN);
  if (!native) return nullptr;
  return beginning[1] == TIFF_VERSION_CLASSIC ? &classic : beginning[1] == TIFF_VERSION_BIG ? &big : nullptr;
}

/// What is kept of a file.
struct Remains {
  int pages = 0;
  std::uint64_t link = 0; ///< place of the offset of what follows
  std::uint64_t end = 0;
  std::uint64_t offsetBytes = 0;
};

class PageChecker {
public:
  PageChecker(const PlainFile& file, const DirectoryLayout& layout, const TiffPlan& plan)
    : m_size(file.size()), m_reader(file, layout), m_layout(layout), m_plan(plan)
  {
  }

  /// Follows the pages as far as they are whole.
  void follow(Remains& remains) const
  {
    remains = {0, m_layout.firstLink, m_layout.headerBytes, m_layout.offsetBytes};
    while (remains.pages < m_plan.slices) {
      const std::uint64_t at = m_reader.offset(remains.link);
      if (at == 0) return;
      const Directory page = m_reader.directory(at);
      std::uint64_t end = page.end;
      if (!isOfPlan(page, remains.pages == 0) || !holdsSlice(page, end) || end > m_size) return;
      remains.link = page.link;
      remains.end = std::max(remains.end, end);
      ++remains.pages;
    }
  }

private:
  bool isOfPlan(const Directory& page, bool first) const
  {
    const auto isThere = [&](const TiffField& field) {
      return m_reader.values(page, field.tag) == std::vector<std::uint64_t>(field.count, field.value);
    };
    return std::all_of(m_plan.fields.begin(), m_plan.fields.end(), isThere) &&
           (!first || m_reader.text(page, TIFFTAG_IMAGEDESCRIPTION) == m_plan.description);
  }
  /// Whether all strips of a slice are there; moves end behind them.
  bool holdsSlice(const Directory& page, std::uint64_t& end) const
  {
    const auto offsets = m_reader.values(page, TIFFTAG_STRIPOFFSETS);
    const auto counts = m_reader.values(page, TIFFTAG_STRIPBYTECOUNTS);
    if (offsets.size() != counts.size()) return false;
    std::uint64_t all = 0;
    for (std::size_t i = 0; i < offsets.size(); ++i) {
      if (offsets[i] > m_size || counts[i] > m_size - offsets[i]) return false;
      all += counts[i];
      end = std::max(end, offsets[i] + counts[i]);
    }
    return all == m_plan.sliceBytes;
  }

  std::uint64_t m_size;
  DirectoryReader m_reader;
  const DirectoryLayout& m_layout;
  const TiffPlan& m_plan;
};

Remains remainsOf(const std::string& path, const TiffPlan& plan)
{
  Remains remains;
  try {
    const PlainFile file(path);
    if (const DirectoryLayout* layout = layoutOf(file)) PageChecker(file, *layout, plan).follow(remains);
  } catch (const Error&) { // The page that was being followed is not whole.
  }
  return remains;
}

} // namespace

int keepWholePages(const std::string& path, const TiffPlan& plan)
{
  std::error_code error;
  if (!std::filesystem::exists(path, error)) return 0;
  const Remains remains = remainsOf(path, plan);
  if (remains.pages == 0) return 0;
  const std::vector<std::byte> nothing(remains.offsetBytes);
  overwrite(path, path, remains.link, nothing);
  cutOff(path, remains.end);
  return remains.pages;
}

} // namespace io
