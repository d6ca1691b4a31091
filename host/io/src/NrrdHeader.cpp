#include "NrrdHeader.h"

#include "ByteStream.h"
#include "DataFileName.h"
#include "FileError.h"

namespace io {

namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// Field names match without regard to case and to blanks ("data file", "datafile").
std::string fieldName(const std::string& text)
{
  std::string name;
  for (const char c : text)
    if (c != ' ' && c != '\t') name.push_back(lower(c));
  return name == "centerings" ? "centers" : name;
}

std::string unescaped(const std::string& text)
{
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char next = i + 1 < text.size() ? text[i + 1] : '\0';
    const bool escape = text[i] == '\\' && (next == 'n' || next == '\\');
    if (escape) ++i;
    result.push_back(escape && next == 'n' ? '\n' : text[i]);
  }
  return result;
}

} // namespace

NrrdHeader NrrdHeader::read(const std::string& path)
{
  NrrdHeader header;
  header.m_path = path;
  if (fileSize(path) == 0) cannotRead(path, "the file is empty");
  const std::unique_ptr<ByteStream> stream = openBytes(path, 0, Packing::None);
  LineReader lines(*stream, path);
  std::string line;
  if (!lines.next(line) || line.size() != 8 || !line.starts_with("NRRD000"))
    cannotRead(path, "it does not begin like an NRRD file");
  if (line[7] < '1' || line[7] > '5') cannotRead(path, "its NRRD version \"" + line + "\" is not known");
  bool inList = false;
  while (lines.next(line)) {
    if (line.empty()) {
      header.m_bytes = lines.position();
      return header;
    }
    if (inList)
      header.m_list.push_back(trimmed(line));
    else
      header.parseLine(line);
    inList = saysList(header.field("datafile"));
  }
  // A detached header may end with the file.
  if (!header.has("datafile")) cannotRead(path, "its header has no end");
  return header;
}

void NrrdHeader::parseLine(const std::string& line)
{
  if (line.starts_with('#')) return;
  const std::size_t field = line.find(": ");
  const std::size_t pair = line.find(":=");
  if (pair < field) {
    m_pairs.emplace_back(unescaped(line.substr(0, pair)), unescaped(line.substr(pair + 2)));
  } else if (field != std::string::npos) {
    m_fields[fieldName(line.substr(0, field))] = trimmed(line.substr(field + 2));
  } else if (!line.ends_with(':')) { // an empty field whose blank an editor has taken away is passed over
    cannotRead(m_path, "its header holds a line that is neither field nor key");
  }
}

const std::string& NrrdHeader::field(const std::string& name) const
{
  static const std::string none;
  const auto found = m_fields.find(name);
  return found == m_fields.end() ? none : found->second;
}

std::int64_t NrrdHeader::integer(const std::string& name, std::int64_t missing) const
{
  if (!has(name)) return missing;
  std::int64_t value = 0;
  if (!parseInteger(field(name), value)) cannotRead(m_path, "its field \"" + name + "\" is no whole number");
  return value;
}

std::vector<std::string> NrrdHeader::split(const std::string& text) const
{
  std::vector<std::string> words;
  std::string word;
  bool quoted = false, inWord = false;
  int depth = 0;
  for (const char c : text + " ") {
    const bool blank = (c == ' ' || c == '\t') && !quoted && depth == 0;
    if (blank && inWord) {
      words.push_back(word);
      word.clear();
    }
    inWord = !blank;
    if (blank) continue;
    if (c == '"')
      quoted = !quoted;
    else
      word.push_back(c);
    if (c == '(' && !quoted) ++depth;
    if (c == ')' && !quoted) --depth;
  }
  return words;
}

std::vector<std::string> NrrdHeader::words(const std::string& name, std::size_t axes) const
{
  std::vector<std::string> result = split(field(name));
  if (!result.empty() && result.size() != axes)
    cannotRead(m_path, "its field \"" + name + "\" holds " + std::to_string(result.size()) + " entries for " +
                           std::to_string(axes) + " axes");
  return result;
}

std::string NrrdHeader::firstWord(const std::string& name) const
{
  const std::vector<std::string> all = split(field(name));
  return all.empty() ? std::string() : all.front();
}

std::vector<double> NrrdHeader::numbers(const std::string& name, std::size_t axes) const
{
  std::vector<double> result;
  for (const std::string& word : words(name, axes)) {
    result.emplace_back();
    if (!parseReal(word, result.back())) cannotRead(m_path, "its field \"" + name + "\" holds no numbers");
  }
  return result;
}

NrrdHeader::Direction NrrdHeader::parseVector(const std::string& text) const
{
  Direction direction;
  if (text == "none") return direction;
  std::string numbers = text;
  if (numbers.size() < 2 || numbers.front() != '(' || numbers.back() != ')')
    cannotRead(m_path, "its header holds a vector that is none");
  for (char& c : numbers)
    if (c == '(' || c == ')' || c == ',') c = ' ';
  std::size_t i = 0;
  for (const std::string& word : splitWords(numbers)) {
    double value = 0.0;
    if (!parseReal(word, value)) cannotRead(m_path, "its header holds a vector without numbers");
    if (i < direction.vector.size()) direction.vector[i++] = value;
  }
  direction.present = true;
  return direction;
}

std::vector<NrrdHeader::Direction> NrrdHeader::directions(std::size_t axes) const
{
  std::vector<Direction> result;
  for (const std::string& word : words("spacedirections", axes)) result.push_back(parseVector(word));
  return result;
}

std::array<double, 3> NrrdHeader::spaceOrigin() const
{
  return has("spaceorigin") ? parseVector(field("spaceorigin")).vector : std::array<double, 3>{0, 0, 0};
}

} // namespace io
