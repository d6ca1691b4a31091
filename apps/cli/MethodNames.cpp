#include "MethodNames.h"

#include "Failure.h"

#include <algorithm>

namespace cli {
namespace {

struct ShortName {
  const char* text;
  const char* registered;
  bool isBuiltIn = true;
};
constexpr ShortName kShortNames[] = {{"gravity", "CenterAlignMethod"},
                                     {"least-squares", "OptimizeAlignMethod"},
                                     {"landmarks", "LandmarkAlignMethod"},
                                     {"edges", "EdgeDetectionAlignMethod"},
                                     {"robust", "RobustAlignMethod", false}};

std::string shortNameOf(const ZxAlignControl::Method& method)
{
  for (const ShortName& name : kShortNames)
    if (method.name == name.registered) return name.text;
  return method.name;
}

bool isCalled(const ZxAlignControl::Method& method, const std::string& text)
{
  return text == method.name || text == shortNameOf(method) || text == std::to_string(method.id);
}

} // namespace

std::string methodList(const ZxAlignControl& control)
{
  std::string list;
  for (const ZxAlignControl::Method& method : control.methods())
    list += (list.empty() ? "" : ", ") + shortNameOf(method) + " (" + std::to_string(method.id) + ")";
  return list;
}

std::string methodName(const ZxAlignControl& control, int id)
{
  for (const ZxAlignControl::Method& method : control.methods())
    if (method.id == id) return shortNameOf(method);
  return std::to_string(id);
}

bool isBuiltIn(const std::string& name)
{
  return std::any_of(std::begin(kShortNames), std::end(kShortNames),
                     [&](const ShortName& known) { return known.isBuiltIn && name == known.text; });
}

int findMethod(const ZxAlignControl& control, const std::string& text)
{
  for (const ZxAlignControl::Method& method : control.methods())
    if (isCalled(method, text)) return method.id;
  const bool known = std::any_of(std::begin(kShortNames), std::end(kShortNames),
                                 [&](const ShortName& name) { return text == name.text; });
  throw Failure((known ? "The method " + text + " is not available in this version; available: "
                       : "There is no method \"" + text + "\"; available: ") +
                methodList(control) + ".");
}

} // namespace cli
