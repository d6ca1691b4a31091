#include "MetaImageHeader.h"

#include "ByteStream.h"
#include "DataFileName.h"
#include "FileError.h"

#include <algorithm>
#include <string_view>

namespace io {

namespace {

/// Before keys that would be taken for fields of the format, and before those that begin with it themselves.
constexpr std::string_view prefix = "Zx_";
/// Parts of a pair that is too long: "Zx_Part12_0", "Zx_Part12_1" ... with their text in quotes.
constexpr std::string_view partPrefix = "Zx_Part";
constexpr std::size_t longestKey = 120;
constexpr std::size_t longestValue = 3000;

bool isReserved(std::string_view key)
{
  static constexpr std::string_view names[] = {"ObjectType",
                                               "ObjectSubType",
                                               "NDims",
                                               "Name",
                                               "ID",
                                               "ParentID",
                                               "Comment",
                                               "AcquisitionDate",
                                               "Color",
                                               "BinaryData",
                                               "BinaryDataByteOrderMSB",
                                               "ElementByteOrderMSB",
                                               "CompressedData",
                                               "CompressedDataSize",
                                               "CompressionLevel",
                                               "TransformType",
                                               "TransformMatrix",
                                               "Rotation",
                                               "Orientation",
                                               "Offset",
                                               "Position",
                                               "Origin",
                                               "CenterOfRotation",
                                               "DistanceUnits",
                                               "AnatomicalOrientation",
                                               "ElementSpacing",
                                               "ElementOrigin",
                                               "ElementDirection",
                                               "DimSize",
                                               "HeaderSize",
                                               "Modality",
                                               "SequenceID",
                                               "ImagePosition",
                                               "ElementMin",
                                               "ElementMax",
                                               "ElementNumberOfChannels",
                                               "ElementSize",
                                               "ElementNBits",
                                               "ElementType",
                                               "ElementDataFile",
                                               "ElementToIntensityFunctionSlope",
                                               "ElementToIntensityFunctionOffset",
                                               "Form",
                                               "FormTypeName",
                                               "EndObject",
                                               MetaImageHeader::unitField};
  return std::find(std::begin(names), std::end(names), key) != std::end(names);
}

/// The part's stem ("Zx_Part12") when a key is one, else nothing.
std::string_view partStem(std::string_view key)
{
  if (!key.starts_with(partPrefix)) return {};
  return key.substr(0, key.find('_', partPrefix.size()));
}

} // namespace

MetaImageHeader MetaImageHeader::read(const std::string& path)
{
  MetaImageHeader header;
  header.m_path = path;
  if (fileSize(path) == 0) cannotRead(path, "the file is empty");
  const std::unique_ptr<ByteStream> stream = openBytes(path, 0, Packing::None);
  LineReader lines(*stream, path);
  std::string line;
  while (header.m_fields.count("ElementDataFile") == 0) {
    if (!lines.next(line)) cannotRead(path, "its header does not name its data (ElementDataFile)");
    if (!header.parseLine(line)) cannotRead(path, "its header holds a line that is no MetaImage field");
  }
  header.m_bytes = lines.position();
  if (!saysList(header.field("ElementDataFile"))) return header;
  while (lines.next(line))
    if (!trimmed(line).empty()) header.m_list.push_back(trimmed(line));
  return header;
}

bool MetaImageHeader::parseLine(const std::string& line)
{
  if (trimmed(line).empty()) return true;
  const std::size_t separator = line.find_first_of("=:");
  if (separator == std::string::npos) return false;
  const std::string key = trimmed(line.substr(0, separator)), value = trimmed(line.substr(separator + 1));
  if (isReserved(key))
    m_fields[key] = value;
  else
    addPair(key, value);
  return true;
}

void MetaImageHeader::addPair(const std::string& key, const std::string& value)
{
  const std::string stem(partStem(key));
  if (stem.empty()) {
    m_pairs.emplace_back(key.starts_with(prefix) ? key.substr(prefix.size()) : key, value);
    return;
  }
  const bool quoted = value.size() >= 2 && value.front() == '"' && value.back() == '"';
  const std::string part = quoted ? value.substr(1, value.size() - 2) : value;
  if (stem == m_partStem)
    m_pairs.pop_back();
  else
    m_parts.clear();
  m_partStem = stem;
  m_parts += part;
  const std::size_t end = std::min(m_parts.find('='), m_parts.size());
  m_pairs.emplace_back(m_parts.substr(0, end), end < m_parts.size() ? m_parts.substr(end + 1) : "");
}

const std::string& MetaImageHeader::field(const std::string& name) const
{
  static const std::string none;
  const auto found = m_fields.find(name);
  return found == m_fields.end() ? none : found->second;
}

const std::string& MetaImageHeader::firstOf(std::initializer_list<const char*> names) const
{
  for (const char* name : names)
    if (!field(name).empty()) return field(name);
  return field("");
}

bool MetaImageHeader::isTrue(const std::string& name, bool missing) const
{
  const std::string& text = field(name);
  if (text.empty()) return missing;
  return text[0] == 'T' || text[0] == 't' || text[0] == '1';
}

std::int64_t MetaImageHeader::integer(const std::string& name, std::int64_t missing) const
{
  std::int64_t value = missing;
  if (!field(name).empty() && !parseInteger(field(name), value))
    cannotRead(m_path, "its field " + name + " is no whole number");
  return value;
}

std::vector<double> MetaImageHeader::numbers(const std::string& text)
{
  std::vector<double> values;
  for (const std::string& word : splitWords(text))
    if (!parseReal(word, values.emplace_back())) return {};
  return values;
}

std::string MetaImageHeader::pairLines(const std::string& key, const std::string& value, std::size_t index)
{
  const bool escaped = isReserved(key) || key.starts_with(prefix);
  const std::string name = (escaped ? std::string(prefix) : "") + key;
  if (name.size() <= longestKey && value.size() <= longestValue) return name + " = " + value + "\n";
  const std::string pair = key + "=" + value; // a key holds no '='
  std::string lines;
  for (std::size_t at = 0, part = 0; at < pair.size(); at += longestValue, ++part)
    lines += std::string(partPrefix) + std::to_string(index) + "_" + std::to_string(part) + " = \"" +
             pair.substr(at, longestValue) + "\"\n";
  return lines;
}

} // namespace io
