#include "RobustSettings.h"

#include "zx/ZxInterpreter.h"

#include <array>
#include <charconv>
#include <variant>

namespace robust {
namespace {

using Field = std::variant<bool RobustSettings::*, int RobustSettings::*, double RobustSettings::*>;

/// A setting, the member behind it and the values that it can have.
struct Row {
  ZxAlignSetting setting;
  Field field;
  double min, max;
};

const std::array rows{
    Row{{"flip", "", "off", "on, off", "Robust: slices may lie mirrored; they are found and flipped."},
        &RobustSettings::flip,
        0,
        1},
    Row{{"largest-angle", "degrees", "180", "0 to 180",
         "Robust: slices are looked for within this angle of where they lie."},
        &RobustSettings::largestAngle,
        0,
        180},
    Row{{"largest-shift", "% of the width", "50", "0 to 100",
         "Robust: slices are looked for within this distance of where they lie."},
        &RobustSettings::largestShift,
        0,
        100},
    Row{{"least-confidence", "", "0.75", "0 to 1",
         "Robust: a pair that is less likely to be right is left as it is and named."},
        &RobustSettings::leastConfidence,
        0,
        1},
    Row{{"neighbours", "", "1", "1 to 16",
         "Robust: every slice is matched with so many slices before it, and all of them are solved for at "
         "once."},
        &RobustSettings::neighbours,
        1,
        16},
};

/// The whole text as a number within limits.
template <class T>
bool parse(const std::string& text, const Row& row, T& number)
{
  T value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return false;
  if (!(value >= row.min && value <= row.max)) return false;
  number = value;
  return true;
}

bool parse(const std::string& text, const Row&, bool& on)
{
  on = text == "on" || text == "1" || text == "true" || text == "yes";
  return on || text == "off" || text == "0" || text == "false" || text == "no";
}

} // namespace

std::span<const ZxAlignSetting> RobustSettings::table()
{
  static const auto settings = [] {
    std::array<ZxAlignSetting, rows.size()> all{};
    for (std::size_t i = 0; i < rows.size(); ++i) all[i] = rows[i].setting;
    return all;
  }();
  return settings;
}

std::string RobustSettings::set(const std::string& name, const std::string& value)
{
  for (const Row& row : rows) {
    if (name != row.setting.name) continue;
    if (std::visit([&](auto field) { return parse(value, row, this->*field); }, row.field)) return {};
    return "The setting " + name + " cannot be \"" + value + "\"; it takes: " + row.setting.range + ".";
  }
  return "There is no setting named " + name + ".";
}

std::string RobustSettings::check(const std::string& name, const std::string& value)
{
  return RobustSettings().set(name, value);
}

std::optional<RobustSettings> RobustSettings::current(std::string& problem)
{
  RobustSettings settings;
  for (const Row& row : rows) {
    const std::string variable = std::string(kVariable) + "(" + row.setting.name + ")";
    const char* value = ZxInterpreter::getTheInterpreter().getVar(variable.c_str());
    if (value) problem = settings.set(row.setting.name, value);
    if (!problem.empty()) return std::nullopt;
  }
  return settings;
}

} // namespace robust
