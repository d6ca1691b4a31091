#include "io/ParameterJson.h"

#include "FileError.h"
#include "PercentEncoding.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>
#include <utility>

namespace io {
namespace {

using Json = nlohmann::ordered_json;

/// Bundles are copied and deleted by recursion: a hostile file must not nest them without end.
constexpr int maxDepth = 64;

/// What is wrong with a file, without its name.
struct Damage {
  std::string reason;
};

bool isUtf8(const std::string& text)
{
  try {
    static_cast<void>(Json(text).dump());
    return true;
  } catch (const nlohmann::detail::type_error&) {
    return false;
  }
}

std::string nameToJson(const std::string& name)
{
  const bool valid = isUtf8(name);
  return percentEncode(name, [valid](char c) { return c != '%' && (valid || (c >= ' ' && c <= '~')); });
}

Json realToJson(double value)
{
  if (std::isfinite(value)) return value;
  const char* name = std::isnan(value) ? "nan" : "inf";
  return std::signbit(value) ? "-" + std::string(name) : std::string(name);
}

Json bundleToJson(const ZxParamBundle& bundle);

Json valueToJson(const ZxParamBundle::Value& value)
{
  if (const auto* ints = std::get_if<ZxParamBundle::Ints>(&value)) {
    return ints->empty() ? Json::array({"int"}) : Json(*ints);
  }
  if (const auto* reals = std::get_if<ZxParamBundle::Reals>(&value)) {
    if (reals->empty()) return Json::array({"real"});
    Json array = Json::array();
    for (const double real : *reals) array.push_back(realToJson(real));
    return array;
  }
  if (const auto* text = std::get_if<std::string>(&value)) {
    if (isUtf8(*text)) return *text;
    return Json::array(
        {"bytes", percentEncode(*text, [](char c) { return c >= ' ' && c <= '~' && c != '%'; })});
  }
  return bundleToJson(*std::get<ZxParamBundle::Bundle>(value));
}

Json bundleToJson(const ZxParamBundle& bundle)
{
  Json object = Json::object();
  for (const ZxParamBundle::Entry& entry : bundle.entries()) {
    object[nameToJson(entry.name)] = valueToJson(entry.value);
  }
  return object;
}

double realFromJson(const Json& value)
{
  if (value.is_number()) return value.get<double>();
  constexpr double inf = std::numeric_limits<double>::infinity();
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  const std::pair<const char*, double> names[] = {
      {"nan", nan}, {"-nan", std::copysign(nan, -1.0)}, {"inf", inf}, {"-inf", -inf}};
  for (const auto& [name, real] : names) {
    if (value == name) return real;
  }
  throw Damage{"an array holds " + value.dump(-1, ' ', true, Json::error_handler_t::replace) +
               " where a number is expected"};
}

bool isInt(const Json& value)
{
  if (!value.is_number_integer()) return false;
  if (value.is_number_unsigned()) return value.get<std::uint64_t>() <= std::numeric_limits<int>::max();
  return std::in_range<int>(value.get<std::int64_t>());
}

void arrayFromJson(const std::string& name, const Json& array, ZxParamBundle& bundle)
{
  if (array == Json::array({"int"})) return bundle.setNums(name, {});
  if (array == Json::array({"real"})) return bundle.setReals(name, {});
  if (array.size() == 2 && array[0] == "bytes" && array[1].is_string()) {
    auto bytes = percentDecode(array[1].get_ref<const std::string&>());
    if (!bytes) throw Damage{"the percent-encoded text of '" + name + "' is damaged"};
    return bundle.setString(name, std::move(*bytes));
  }
  if (!array.empty() && std::all_of(array.begin(), array.end(), isInt)) {
    return bundle.setNums(name, array.get<ZxParamBundle::Ints>());
  }
  ZxParamBundle::Reals reals;
  for (const Json& value : array) reals.push_back(realFromJson(value));
  bundle.setReals(name, std::move(reals));
}

void bundleFromJson(const Json& object, ZxParamBundle& bundle, int depth)
{
  if (depth > maxDepth) throw Damage{"its bundles are nested too deeply"};
  for (const auto& [key, value] : object.items()) {
    const std::string name = percentDecode(key).value_or(key);
    if (value.is_object()) {
      if (ZxParamBundle* inner = bundle.getBundle(name)) bundleFromJson(value, *inner, depth + 1);
    } else if (value.is_string()) {
      bundle.setString(name, value.get<std::string>());
    } else if (value.is_array()) {
      arrayFromJson(name, value, bundle);
    } else {
      throw Damage{"'" + name + "' is neither an object, a string nor an array"};
    }
  }
}

/// Refuses nesting while parsing: the library's tree is also deleted level by level.
Json parse(const std::string& text)
{
  bool tooDeep = false;
  const auto guard = [&](int depth, Json::parse_event_t, Json&) {
    tooDeep = tooDeep || depth > maxDepth + 2;
    return !tooDeep;
  };
  Json json = Json::parse(text, guard);
  if (tooDeep) throw Damage{"its bundles are nested too deeply"};
  return json;
}

} // namespace

std::string toJson(const ZxParamBundle& parameters) { return bundleToJson(parameters).dump(1) + '\n'; }

ZxParamBundle fromJson(const std::string& text, const std::string& fileName)
{
  ZxParamBundle bundle;
  try {
    const Json json = parse(text);
    if (!json.is_object()) throw Damage{"it does not hold a JSON object"};
    bundleFromJson(json, bundle, 0);
  } catch (const nlohmann::detail::parse_error& error) {
    cannotRead(fileName, "it is no valid JSON at byte " + std::to_string(error.byte));
  } catch (const nlohmann::detail::exception&) {
    cannotRead(fileName, "a number in it is too large");
  } catch (const Damage& damage) {
    cannotRead(fileName, damage.reason);
  }
  return bundle;
}

} // namespace io
