#include "zx/ZxData.h"
#include "zx/ZxFileAccess.h"
#include "zx/ZxWorkArea.h"

#include <tcl.h>

#include <algorithm>
#include <array>

namespace {

using Bundle = ZxParamBundle;

/// Where a path like "File/Origin" leads: the bundle that holds the last name, and that name. A name may
/// hold a '/' itself: the longest name that is there wins.
struct Place {
  Bundle* bundle = nullptr; ///< null when the path leads through something that is no bundle
  std::string name;
};

const Bundle::Entry* entryOf(const Bundle& bundle, const std::string& name)
{
  const auto equal = [](char a, char b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return lower(a) == lower(b);
  };
  const auto& entries = bundle.entries();
  const auto it = std::find_if(entries.begin(), entries.end(), [&](const Bundle::Entry& e) {
    return std::equal(e.name.begin(), e.name.end(), name.begin(), name.end(), equal);
  });
  return it == entries.end() ? nullptr : &*it;
}

enum class Missing { Stays, IsMade };

Place placeOf(Bundle& root, const std::string& path, Missing missing)
{
  Bundle* bundle = &root;
  std::string rest = path;
  while (!entryOf(*bundle, rest)) {
    const std::size_t slash = rest.find('/');
    if (slash == std::string::npos) break;
    const std::string name = rest.substr(0, slash);
    Bundle* const inner = missing == Missing::IsMade ? bundle->getBundle(name) : bundle->findBundle(name);
    if (!inner) return {};
    bundle = inner;
    rest.erase(0, slash + 1);
  }
  return {bundle, rest};
}

int noParameter(Tcl_Interp* interp, const char* path)
{
  return zxError(interp, std::string("there is no parameter \"") + path + "\"");
}

std::string textOf(double value)
{
  std::array<char, TCL_DOUBLE_SPACE> text{};
  Tcl_PrintDouble(nullptr, value, text.data());
  return text.data();
}

int listParameters(ZxData& data, Tcl_Interp* interp, ZxArguments arguments)
{
  const Bundle* bundle = &data.parameters();
  if (!arguments.empty()) {
    const Place place = placeOf(data.parameters(), arguments[0], Missing::Stays);
    bundle = place.bundle ? place.bundle->findBundle(place.name) : nullptr;
    if (!bundle) return zxError(interp, std::string("there is no bundle \"") + arguments[0] + "\"");
  }
  std::vector<std::string> names;
  for (const Bundle::Entry& entry : bundle->entries()) names.push_back(entry.name);
  return zxListResult(interp, names);
}

int getParameter(ZxData& data, Tcl_Interp* interp, ZxArguments arguments)
{
  const Place place = placeOf(data.parameters(), arguments[0], Missing::Stays);
  const Bundle::Entry* const entry = place.bundle ? entryOf(*place.bundle, place.name) : nullptr;
  if (!entry) return noParameter(interp, arguments[0]);
  std::vector<std::string> values;
  if (const auto* ints = std::get_if<Bundle::Ints>(&entry->value))
    for (const int value : *ints) values.push_back(std::to_string(value));
  else if (const auto* reals = std::get_if<Bundle::Reals>(&entry->value))
    for (const double value : *reals) values.push_back(textOf(value));
  else if (const auto* text = std::get_if<std::string>(&entry->value))
    return zxResult(interp, *text);
  else
    return zxError(interp, "\"" + entry->name + "\" is a bundle: parameters list gives what it holds");
  return zxListResult(interp, values);
}

std::optional<Bundle::Ints> integersOf(ZxArguments words)
{
  Bundle::Ints values;
  for (const char* word : words) {
    int value = 0;
    if (Tcl_GetInt(nullptr, word, &value) != TCL_OK) return std::nullopt;
    values.push_back(value);
  }
  return values;
}

std::optional<Bundle::Reals> realsOf(ZxArguments words)
{
  Bundle::Reals values;
  for (const char* word : words) {
    double value = 0;
    if (Tcl_GetDouble(nullptr, word, &value) != TCL_OK) return std::nullopt;
    values.push_back(value);
  }
  return values;
}

/// Integers become integers and numbers reals; one word that is neither is a text. What is there already
/// keeps its kind where that can hold the new values.
int setParameter(ZxData& data, Tcl_Interp* interp, ZxArguments arguments)
{
  const ZxArguments words = arguments.subspan(1);
  const auto reals = realsOf(words);
  if (!reals && words.size() > 1) return zxError(interp, "several values have to be numbers");
  const Place place = placeOf(data.parameters(), arguments[0], Missing::IsMade);
  if (!place.bundle || place.name.empty()) return noParameter(interp, arguments[0]);
  const Bundle::Entry* const before = entryOf(*place.bundle, place.name);
  if (before && std::holds_alternative<Bundle::Bundle>(before->value))
    return zxError(interp, "\"" + before->name + "\" is a bundle and holds no value");
  const bool wasReal = before && std::holds_alternative<Bundle::Reals>(before->value);
  const bool wasText = before && std::holds_alternative<std::string>(before->value) && words.size() == 1;
  const auto integers = wasReal ? std::nullopt : integersOf(words);
  if (wasText || !reals)
    place.bundle->setString(place.name, words[0]);
  else if (integers)
    place.bundle->setNums(place.name, *integers);
  else
    place.bundle->setReals(place.name, *reals);
  data.touch();
  return kZxOk;
}

int removeParameter(ZxData& data, Tcl_Interp* interp, ZxArguments arguments)
{
  const Place place = placeOf(data.parameters(), arguments[0], Missing::Stays);
  if (!place.bundle || !place.bundle->remove(place.name)) return noParameter(interp, arguments[0]);
  data.touch();
  return kZxOk;
}

constexpr ZxCommand<ZxData> parameterCommands[] = {
    {{"list", "?BUNDLE?", "The names of the parameters."}, listParameters},
    {{"get", "PATH", "The values of a parameter; PATH is NAME or BUNDLE/NAME."}, getParameter},
    {{"set", "PATH VALUE ?VALUE ...?", "Sets a parameter to a text or to numbers."}, setParameter},
    {{"remove", "PATH", "Removes a parameter or a bundle."}, removeParameter},
};

constexpr ZxCommandHelp dataCommands[] = {
    {"parameters list", "?BUNDLE?", parameterCommands[0].help},
    {"parameters get", "PATH", parameterCommands[1].help},
    {"parameters set", "PATH VALUE ?VALUE ...?", parameterCommands[2].help},
    {"parameters remove", "PATH", parameterCommands[3].help},
};

int save(ZxSpatialData& data, Tcl_Interp* interp, ZxArguments arguments)
{
  ZxFileAccess* const access = ZxFileAccess::getTheFileAccess();
  std::string path = arguments[0];
  if (arguments.size() > 1) {
    path = access->pathFor(path, arguments[1]);
    std::vector<ZxCommandHelp> known;
    const std::vector<ZxFileFormat> formats = access->writableFormats();
    for (const ZxFileFormat& format : formats) known.push_back({format.name, "", ""});
    if (path.empty()) return zxUnknown(interp, "unknown format", arguments[1], known);
  }
  if (data.isInUse()) return zxError(interp, data.getLabel().str() + " is being written already");
  const ZxWorkingPhase phase(("Writing " + path).c_str());
  const ZxFileOutcome outcome = access->write(data, path);
  if (outcome.state != ZxFileOutcome::State::Done) return zxError(interp, outcome.problem);
  return zxResult(interp, path);
}

constexpr ZxCommand<ZxSpatialData> spatialCommands[] = {
    {{"save", "FILE ?FORMAT?", "Writes a file in the format of its name, or adds the ending of a format."},
     save},
};
static_assert(zxNamesUnique(parameterCommands) && zxNamesUnique(spatialCommands));

} // namespace

int ZxData::parse(Tcl_Interp* interp, int argc, char** argv)
{
  const std::span<char* const> words(argv, static_cast<std::size_t>(argc));
  if (std::string_view(words[1]) != "parameters") return ZxObject::parse(interp, argc, argv);
  if (words.size() < 3) return zxWrongArguments(interp, words, "list|get|set|remove ?ARG ...?");
  const auto done = zxRunCommand<ZxData>(parameterCommands, *this, interp, words, 2);
  if (done) return *done;
  std::vector<ZxCommandHelp> known;
  zxAppendHelp(known, parameterCommands);
  return zxUnknown(interp, "unknown command", words[2], known);
}

std::vector<ZxCommandHelp> ZxData::commands() const
{
  std::vector<ZxCommandHelp> list = ZxObject::commands();
  zxAppendHelp(list, dataCommands);
  return list;
}

int ZxSpatialData::parse(Tcl_Interp* interp, int argc, char** argv)
{
  const std::span<char* const> words(argv, static_cast<std::size_t>(argc));
  const auto done = zxRunCommand<ZxSpatialData>(spatialCommands, *this, interp, words, 1);
  return done ? *done : ZxData::parse(interp, argc, argv);
}

std::vector<ZxCommandHelp> ZxSpatialData::commands() const
{
  std::vector<ZxCommandHelp> list = ZxData::commands();
  zxAppendHelp(list, spatialCommands);
  return list;
}
