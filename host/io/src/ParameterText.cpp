#include "ParameterText.h"

#include "PercentEncoding.h"
#include "zx/ZxData.h"

#include <charconv>
#include <optional>
#include <string_view>

namespace io {
namespace {

enum class Place { Name, Text };

bool isPlain(char c, Place place)
{
  if (c <= ' ' || c > '~' || c == '%' || c == '\\') return c == ' ' && place == Place::Text;
  return place == Place::Text || (c != '/' && c != ':' && c != '=');
}

std::string encode(std::string_view text, Place place)
{
  const char* last = text.data() + text.size() - 1;
  const char* at = text.data();
  return percentEncode(text, [&](char c) {
    const bool outerSpace = c == ' ' && (at == text.data() || at == last);
    ++at;
    return isPlain(c, place) && !outerSpace;
  });
}

/// An empty name has to leave a mark in a path: a lone '%', which is no encoded character.
std::string encodeName(std::string_view name) { return name.empty() ? "%" : encode(name, Place::Name); }

template <class T>
std::string numbersText(const char* type, const std::vector<T>& values)
{
  std::string text = type;
  for (const T value : values) {
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    text += ' ';
    text.append(buffer, result.ptr);
  }
  return text;
}

template <class T>
std::optional<std::vector<T>> parseNumbers(std::string_view text)
{
  std::vector<T> values;
  while (!text.empty()) {
    if (text.front() != ' ') return std::nullopt;
    text.remove_prefix(1);
    T value{};
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{}) return std::nullopt;
    values.push_back(value);
    text.remove_prefix(static_cast<std::size_t>(stop - text.data()));
  }
  return values;
}

/// A value split into the word of its type and the rest with its leading space.
struct Typed {
  std::string_view type;
  std::string_view rest;
};

std::optional<Typed> splitType(std::string_view value)
{
  for (const std::string_view type : {"int", "real", "string", "bundle"}) {
    if (!value.starts_with(type)) continue;
    const std::string_view rest = value.substr(type.size());
    if (rest.empty() || rest.front() == ' ') return Typed{type, rest};
  }
  return std::nullopt;
}

/// True when a string at the top can stand as it is, like a pair of another program.
bool standsUnencoded(std::string_view name, std::string_view text)
{
  return !name.empty() && !text.empty() && name.find_first_of(" :=%\\") == std::string_view::npos &&
         encode(name, Place::Text) == name && encode(text, Place::Text) == text && !splitType(text);
}

void flattenInto(TextPairs& out, const ZxParamBundle& bundle, const std::string& folder)
{
  for (const ZxParamBundle::Entry& entry : bundle.entries()) {
    const std::string path = folder + encodeName(entry.name);
    if (const auto* ints = std::get_if<ZxParamBundle::Ints>(&entry.value)) {
      out.emplace_back(path, numbersText("int", *ints));
    } else if (const auto* reals = std::get_if<ZxParamBundle::Reals>(&entry.value)) {
      out.emplace_back(path, numbersText("real", *reals));
    } else if (const auto* text = std::get_if<std::string>(&entry.value)) {
      if (folder.empty() && standsUnencoded(entry.name, *text))
        out.emplace_back(entry.name, *text);
      else
        out.emplace_back(path, text->empty() ? "string" : "string " + encode(*text, Place::Text));
    } else if (const auto& inner = *std::get<ZxParamBundle::Bundle>(entry.value); inner.entries().empty()) {
      out.emplace_back(path, "bundle");
    } else {
      flattenInto(out, inner, path + '/');
    }
  }
}

/// Bundles are copied and deleted by recursion: a hostile path must not nest them without end.
constexpr int maxDepth = 64;

/// The bundle that a path leads to, created on the way, and the last name. Null when the path is damaged or
/// one of its folders is taken by a plain value.
ZxParamBundle* openPath(std::string_view path, ZxParamBundle& top, std::string& name)
{
  ZxParamBundle* bundle = &top;
  for (int depth = 0; bundle && depth < maxDepth; ++depth) {
    const std::size_t slash = path.find('/');
    const std::string_view part = path.substr(0, slash);
    const std::optional<std::string> decoded = part == "%" ? std::string() : percentDecode(part);
    if (!decoded || part.empty()) return nullptr;
    if (slash == std::string_view::npos) {
      name = *decoded;
      return bundle;
    }
    bundle = bundle->getBundle(*decoded);
    path.remove_prefix(slash + 1);
  }
  return nullptr;
}

bool setTyped(ZxParamBundle& bundle, const std::string& name, const Typed& typed)
{
  if (typed.type == "int") {
    auto values = parseNumbers<int>(typed.rest);
    if (values) bundle.setNums(name, std::move(*values));
    return values.has_value();
  }
  if (typed.type == "real") {
    auto values = parseNumbers<double>(typed.rest);
    if (values) bundle.setReals(name, std::move(*values));
    return values.has_value();
  }
  if (typed.type == "bundle") return typed.rest.empty() && bundle.getBundle(name);
  auto text = percentDecode(typed.rest.empty() ? typed.rest : typed.rest.substr(1));
  if (text) bundle.setString(name, std::move(*text));
  return text.has_value();
}

} // namespace

TextPairs flatten(const ZxParamBundle& parameters)
{
  ZxParamBundle travelling = parameters;
  travelling.remove(ZxFileGeometry::bundleName);
  TextPairs pairs;
  flattenInto(pairs, travelling, {});
  return pairs;
}

void unflatten(const TextPairs& pairs, ZxParamBundle& parameters)
{
  for (const auto& [key, value] : pairs) {
    const std::optional<Typed> typed = splitType(value);
    std::string name;
    ZxParamBundle* bundle = typed ? openPath(key, parameters, name) : nullptr;
    if (!bundle || !setTyped(*bundle, name, *typed)) parameters.setString(key, value);
  }
}

} // namespace io
