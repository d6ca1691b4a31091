#include "RunState.h"

#include "UniquePath.h"
#include "io/Error.h"
#include "io/ParameterJson.h"

#include <sys/stat.h>

#include <algorithm>
#include <nlohmann/json.hpp>

namespace cli {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kContent = "stopped run 1"; // the number is that of this layout

constexpr std::string_view kFile = "file ";

void addFile(const std::string& path, RunFacts& facts)
{
  struct stat about {};
  if (stat(path.c_str(), &about) != 0 || !S_ISREG(about.st_mode)) return;
  facts.push_back({std::string(kFile) + pathFact(path),
                   std::to_string(about.st_size) + " bytes of " + std::to_string(about.st_mtim.tv_sec) + "." +
                       std::to_string(about.st_mtim.tv_nsec),
                   path});
}

std::string valueOf(const RunFacts& facts, const std::string& name)
{
  const auto found =
      std::find_if(facts.begin(), facts.end(), [&](const RunFact& fact) { return fact.name == name; });
  return found == facts.end() ? std::string() : found->value;
}

std::string inWords(const std::string& value) { return value.empty() ? "not given" : value; }

Json transformJson(const ZxAlignTransform& t) { return Json::array({t.tx, t.ty, t.angleDegrees, t.flip}); }

ZxAlignTransform transformOf(const Json& json)
{
  return {json.at(0).get<float>(), json.at(1).get<float>(), json.at(2).get<float>(), json.at(3).get<bool>()};
}

Json pairJson(const ZxAlignPairResult& p)
{
  return {{"editable", p.pair.editable}, {"reference", p.pair.reference},
          {"side", p.pair.side},         {"transform", transformJson(p.transform)},
          {"before", p.qualityBefore},   {"after", p.qualityAfter},
          {"seconds", p.seconds},        {"changed", p.changed}};
}

ZxAlignPairResult pairOf(const Json& json)
{
  return {{json.at("editable").get<int>(), json.at("reference").get<int>(), json.at("side").get<int>()},
          transformOf(json.at("transform")),
          json.at("before").get<double>(),
          json.at("after").get<double>(),
          json.at("seconds").get<double>(),
          json.at("changed").get<bool>()};
}

RunState stateOf(const Json& json)
{
  RunState state;
  for (const Json& fact : json.at("run"))
    state.facts.push_back({fact.at(0), fact.at(1), fact.size() > 2 ? fact.at(2) : Json("")});
  for (const Json& pair : json.at("pairs")) state.pairs.push_back(pairOf(pair));
  for (const Json& transform : json.at("transforms")) state.transforms.push_back(transformOf(transform));
  state.parameters = io::fromJson(json.at("parameters").dump(), "state.json");
  state.changesParameters = json.at("changes parameters").get<bool>();
  state.pairsAlone = json.at("pairs alone").get<bool>();
  return state;
}

} // namespace

void addFileFacts(const std::vector<std::string>& files, RunFacts& facts)
{
  for (const std::string& file : files) addFile(file, facts);
}

std::string pathFact(const std::string& path) { return path.empty() ? path : uniquePath(path).string(); }

std::string differenceOf(const RunFacts& there, const RunFacts& here)
{
  RunFacts all = here; // what is new comes first: it is what the user has just typed
  // What was typed for the other run may have been typed in another folder.
  for (const RunFact& fact : there) all.push_back({fact.name, fact.value});
  for (const RunFact& fact : all) {
    const std::string& name = fact.name;
    const std::string before = valueOf(there, name), now = valueOf(here, name);
    if (before == now) continue;
    if (!name.starts_with(kFile))
      return name + " is " + inWords(before) + " there and " + inWords(now) + " here";
    const std::string file = fact.shown.empty() ? name.substr(kFile.size()) : fact.shown;
    if (before.empty()) return file + " was no input of it";
    return now.empty() ? file + " is no input now" : file + " has changed since";
  }
  return there == here ? "" : "its inputs are in another order";
}

std::string stateText(const RunState& state)
{
  Json json = {{"program", "zxalign"}, {"content", kContent}};
  json["run"] = Json::array();
  for (const RunFact& fact : state.facts) {
    json["run"].push_back(Json::array({fact.name, fact.value}));
    if (!fact.shown.empty()) json["run"].back().push_back(fact.shown);
  }
  json["pairs alone"] = state.pairsAlone;
  json["changes parameters"] = state.changesParameters;
  json["pairs"] = Json::array();
  for (const ZxAlignPairResult& pair : state.pairs) json["pairs"].push_back(pairJson(pair));
  json["transforms"] = Json::array();
  for (const ZxAlignTransform& transform : state.transforms)
    json["transforms"].push_back(transformJson(transform));
  json["parameters"] = Json::parse(io::toJson(state.parameters));
  return json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::optional<RunState> stateOf(const std::string& text)
{
  try {
    const Json json = Json::parse(text);
    if (json.at("program") != "zxalign" || json.at("content") != kContent) return std::nullopt;
    return stateOf(json);
  } catch (const nlohmann::detail::exception&) {
    return std::nullopt;
  } catch (const io::Error&) {
    return std::nullopt;
  }
}

} // namespace cli
