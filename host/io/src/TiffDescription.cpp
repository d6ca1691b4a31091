#include "TiffDescription.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <set>
#include <utility>

namespace io {
namespace {

template <class T>
std::optional<T> number(std::string_view text, int base = 10)
{
  T value{};
  std::from_chars_result result{};
  if constexpr (std::is_floating_point_v<T>)
    result = std::from_chars(text.data(), text.data() + text.size(), value);
  else
    result = std::from_chars(text.data(), text.data() + text.size(), value, base);
  if (result.ec != std::errc{} || result.ptr != text.data() + text.size()) return std::nullopt;
  return value;
}

constexpr std::string_view space = " \t\r\n";

std::string_view trimmed(std::string_view text)
{
  const std::size_t first = text.find_first_not_of(space);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(space) - first + 1);
}

/// A character of the basic plane as UTF-8.
void appendUtf8(std::string& out, unsigned code)
{
  if (code < 0x80) {
    out += static_cast<char>(code);
  } else if (code < 0x800) {
    out += {static_cast<char>(0xC0 | code >> 6), static_cast<char>(0x80 | (code & 0x3F))};
  } else {
    out += {static_cast<char>(0xE0 | code >> 12), static_cast<char>(0x80 | (code >> 6 & 0x3F)),
            static_cast<char>(0x80 | (code & 0x3F))};
  }
}

/// A unit of ImageJ: "\u00B5m" stands for a micro sign, and so does the byte B5 of Latin-1.
std::string unitText(std::string_view text)
{
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto escaped =
        text.substr(i, 2) == "\\u" ? number<unsigned>(text.substr(i + 2, 4), 16) : std::nullopt;
    const auto byte = static_cast<unsigned char>(text[i]);
    const bool afterLead = i > 0 && static_cast<unsigned char>(text[i - 1]) >= 0xC0;
    if (escaped) {
      appendUtf8(out, *escaped);
      i += 5;
    } else if (byte >= 0x80 && byte < 0xC0 && !afterLead) {
      appendUtf8(out, byte);
    } else {
      out += text[i];
    }
  }
  return out;
}

/// The start tag of the first element of a name from a position on, without its brackets, and what follows
/// it.
struct Tag {
  std::string_view attributes;
  std::size_t end = 0;
  bool isEmpty = false; ///< has no contents: <name .../>
};

std::optional<Tag> findTag(std::string_view xml, std::string_view name, std::size_t from = 0)
{
  for (std::size_t at = xml.find('<', from); at != std::string_view::npos; at = xml.find('<', at + 1)) {
    std::string_view rest = xml.substr(at + 1);
    // A prefix of a namespace does not matter.
    const std::size_t word = rest.find_first_of(" \t\r\n/>");
    if (const std::size_t colon = rest.find(':'); colon < word) rest.remove_prefix(colon + 1);
    if (!rest.starts_with(name) || rest.find_first_of(" \t\r\n/>") != name.size()) continue;
    const std::size_t close = rest.find('>');
    if (close == std::string_view::npos) return std::nullopt;
    const std::string_view attributes = rest.substr(name.size(), close - name.size());
    return Tag{attributes, static_cast<std::size_t>(rest.data() + close + 1 - xml.data()),
               attributes.ends_with('/')};
  }
  return std::nullopt;
}

std::string_view attribute(const Tag& tag, std::string_view name)
{
  for (std::size_t at = tag.attributes.find(name); at != std::string_view::npos;
       at = tag.attributes.find(name, at + 1)) {
    const std::string_view before = tag.attributes.substr(0, at);
    std::string_view rest = trimmed(tag.attributes.substr(at + name.size()));
    const bool isWord = !before.empty() && space.find(before.back()) != std::string_view::npos;
    if (!isWord || !rest.starts_with('=')) continue;
    rest = trimmed(rest.substr(1));
    if (rest.empty() || (rest.front() != '"' && rest.front() != '\'')) return {};
    return rest.substr(1, rest.find(rest.front(), 1) - 1);
  }
  return {};
}

std::size_t count(const Tag& tag, std::string_view name, std::size_t fallback)
{
  return number<std::size_t>(attribute(tag, name)).value_or(fallback);
}

/// A block of pages in the order of the dimensions of an OME image.
struct PageBlock {
  std::size_t page = 0;
  std::size_t pages = 0;
  std::array<std::size_t, 3> first{}; ///< z, c, t
  std::string_view fileName;
};

std::vector<PageBlock> pageBlocks(std::string_view pixels, std::size_t filePages)
{
  std::vector<PageBlock> blocks;
  for (auto tag = findTag(pixels, "TiffData"); tag; tag = findTag(pixels, "TiffData", tag->end)) {
    const bool hasPage = !attribute(*tag, "IFD").empty();
    PageBlock block;
    block.page = count(*tag, "IFD", 0);
    block.pages = count(*tag, "PlaneCount", hasPage ? 1 : filePages);
    block.first = {count(*tag, "FirstZ", 0), count(*tag, "FirstC", 0), count(*tag, "FirstT", 0)};
    const std::size_t end = pixels.find('<', tag->end);
    const auto uuid = tag->isEmpty ? std::nullopt : findTag(pixels, "UUID", end);
    if (uuid && end != std::string_view::npos &&
        uuid->attributes.data() < pixels.data() + pixels.find('>', end)) {
      block.fileName = attribute(*uuid, "FileName");
    }
    blocks.push_back(block);
  }
  if (blocks.empty()) blocks.push_back({.page = 0, .pages = filePages, .first = {}, .fileName = {}});
  return blocks;
}

/// Moves on to the next plane in the order of the dimensions, such as "ZCT": the first runs fastest.
void advance(std::array<std::size_t, 3>& zct, const std::array<std::size_t, 3>& sizes, std::string_view order)
{
  for (const char axis : order) {
    const std::size_t i = std::string_view("ZCT").find(axis);
    if (i > 2) continue;
    if (++zct[i] < sizes[i]) return;
    zct[i] = 0;
  }
}

std::vector<std::size_t> findFirstVolume(const std::vector<PageBlock>& blocks,
                                         const std::array<std::size_t, 3>& sizes, std::string_view order,
                                         std::size_t filePages)
{
  std::set<std::string_view> files;
  for (const PageBlock& block : blocks) files.insert(block.fileName);
  if (files.size() > 1) return {}; // The slices are spread over several files.
  constexpr std::size_t none = SIZE_MAX;
  std::vector<std::size_t> pageOf(sizes[0], none);
  for (const PageBlock& block : blocks) {
    std::array<std::size_t, 3> zct = block.first;
    for (std::size_t i = 0; i < block.pages && block.page + i < filePages; ++i) {
      if (zct[0] < sizes[0] && zct[1] == 0 && zct[2] == 0) pageOf[zct[0]] = block.page + i;
      advance(zct, sizes, order);
    }
  }
  for (const std::size_t page : pageOf) {
    if (page == none) return {};
  }
  return pageOf;
}

} // namespace

std::optional<ImageJDescription> ImageJDescription::parse(std::string_view description)
{
  if (!description.starts_with("ImageJ=")) return std::nullopt;
  ImageJDescription result;
  while (!description.empty()) {
    const std::string_view line = description.substr(0, description.find('\n'));
    description.remove_prefix(std::min(line.size() + 1, description.size()));
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) continue;
    const std::string_view key = line.substr(0, equals);
    const std::string_view value = trimmed(line.substr(equals + 1));
    if (key == "images")
      result.images = number<std::size_t>(value).value_or(1);
    else if (key == "channels")
      result.channels = number<std::size_t>(value).value_or(1);
    else if (key == "frames")
      result.frames = number<std::size_t>(value).value_or(1);
    else if (key == "spacing")
      result.spacing = number<double>(value);
    else if (key == "unit")
      result.unit = unitText(value);
  }
  return result;
}

std::optional<OmeDescription> OmeDescription::parse(std::string_view description, std::size_t pages)
{
  const auto tag = findTag(description, "Pixels");
  if (!findTag(description, "OME") || !tag) return std::nullopt;
  const std::string_view pixels =
      description.substr(tag->end, description.find("Pixels>", tag->end) - tag->end);
  OmeDescription ome;
  ome.sizeZ = count(*tag, "SizeZ", 1);
  ome.sizeC = count(*tag, "SizeC", 1);
  ome.sizeT = count(*tag, "SizeT", 1);
  if (const auto channel = findTag(pixels, "Channel")) {
    const std::size_t samples = count(*channel, "SamplesPerPixel", 1);
    if (samples > 1 && ome.sizeC % samples == 0) ome.sizeC /= samples;
  }
  const std::pair<const char*, const char*> axes[] = {{"PhysicalSizeX", "PhysicalSizeXUnit"},
                                                      {"PhysicalSizeY", "PhysicalSizeYUnit"},
                                                      {"PhysicalSizeZ", "PhysicalSizeZUnit"}};
  for (int i = 0; i < 3; ++i) {
    ome.physicalSize[i] = number<double>(attribute(*tag, axes[i].first)).value_or(0.0);
    const std::string_view unit = attribute(*tag, axes[i].second);
    ome.units[i] = unit.empty() ? "\u00B5m" : std::string(unit);
  }
  if (ome.sizeZ == 0 || ome.sizeC == 0 || ome.sizeT == 0 || ome.sizeZ > pages) return ome;
  ome.firstVolume = findFirstVolume(pageBlocks(pixels, pages), {ome.sizeZ, ome.sizeC, ome.sizeT},
                                    attribute(*tag, "DimensionOrder"), pages);
  return ome;
}

} // namespace io
