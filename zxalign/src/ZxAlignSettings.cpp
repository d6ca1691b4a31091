#include "zxalign/ZxAlignSettings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <variant>
#include <vector>

namespace {

using Field = std::variant<bool ZxAlignSettings::*, int ZxAlignSettings::*, float ZxAlignSettings::*,
                           float (ZxAlignSettings::*)[4]>;

/// The member behind a setting and the values that it can have.
struct Binding {
  Field field;
  double min;
  double max;
};

constexpr double anyInt = std::numeric_limits<int>::max();
constexpr double anyFloat = std::numeric_limits<float>::max();

struct Row {
  ZxAlignSetting setting;
  Binding binding;
};

const std::array rows{
    Row{{"rotation", "", "on", "on, off", "Slices may be rotated."},
        {&ZxAlignSettings::rotationAllowed, 0, 1}},
    Row{{"iterations", "", "1000", "0 or more",
         "Least squares: most iterations per pair; 0 leaves the pair as it is."},
        {&ZxAlignSettings::maxIterations, 0, anyInt}},
    Row{{"translation-step", "pixels", "1", "0.000001 or more",
         "Least squares: step of a translation at full resolution, halved once at the end."},
        {&ZxAlignSettings::translationStep, 1e-6f, anyFloat}},
    Row{{"rotation-step", "degrees", "", "0.000001 to 360",
         "Least squares: step of a rotation at full resolution; by default the angle that moves a point at "
         "half the width by one pixel."},
        {&ZxAlignSettings::rotationStep, 1e-6f, 360}},
    Row{{"levels", "", "128", "0 or more",
         "Least squares: most levels of reduced images to search first; 0 searches at full resolution only."},
        {&ZxAlignSettings::resamplingLevels, 0, anyInt}},
    Row{{"matrix-dimension", "pixels", "5", "1 or more", "Edges: size of the square tested around a point."},
        {&ZxAlignSettings::matrixDimension, 1, anyInt}},
    Row{{"percentage", "%", "95", "0 to 100", "Edges: share of the square that must belong to the object."},
        {&ZxAlignSettings::percentage, 0, 100}},
    Row{{"raster-step", "pixels", "1", "1 or more", "Edges: distance of the pixels tested in the square."},
        {&ZxAlignSettings::rasterStep, 1, anyInt}},
    Row{{"image-raster-step", "pixels", "2", "1 or more",
         "Edges: distance of the points tested in the image."},
        {&ZxAlignSettings::imageRasterStep, 1, anyInt}},
    Row{{"mirror", "", "off", "on, off", "Edges: also tries the mirrored outline."},
        {&ZxAlignSettings::mirror, 0, 1}},
    Row{{"calculated-threshold", "", "off", "on, off", "Edges: finds the threshold by maximum entropy."},
        {&ZxAlignSettings::calculatedThreshold, 0, 1}},
    Row{{"threshold", "grey levels", "200", "0 to 255", "Edges: grey value between object and background."},
        {&ZxAlignSettings::threshold, 0, 255}},
    Row{{"angular-step", "degrees", "1", "0.01 to 90", "Edges: angle between neighbouring rays."},
        {&ZxAlignSettings::angularStep, 0.01f, 90}},
    Row{{"bright-background", "", "off", "on, off", "Edges: the object is darker than the background."},
        {&ZxAlignSettings::brightBackground, 0, 1}},
    Row{{"width", "pixels", "", "1 to 1048576",
         "Width of the resampled slices; by default that of the input."},
        {&ZxAlignSettings::outputWidth, 1, ZxAlignSettings::maxOutputSize}},
    Row{{"height", "pixels", "", "1 to 1048576",
         "Height of the resampled slices; by default that of the input."},
        {&ZxAlignSettings::outputHeight, 1, ZxAlignSettings::maxOutputSize}},
    Row{{"automatic-origin", "", "off", "on, off",
         "Places the common box of all slices at the output's first pixel instead of centring the input."},
        {&ZxAlignSettings::automaticOrigin, 0, 1}},
    Row{{"background", "grey value", "0", "any number",
         "Value of pixels that no slice covers, one component."},
        {&ZxAlignSettings::background, -anyFloat, anyFloat}},
    Row{{"background-colour", "", "0,0,0,0", "four numbers",
         "Value of pixels that no slice covers, four components."},
        {&ZxAlignSettings::backgroundColour, -anyFloat, anyFloat}},
    Row{{"most-frequent-background", "", "off", "on, off",
         "Takes each slice's most frequent value as its background."},
        {&ZxAlignSettings::mostFrequentBackground, 0, 1}},
};

const Row* findRow(const std::string& name)
{
  const auto it =
      std::find_if(rows.begin(), rows.end(), [&](const Row& r) { return name == r.setting.name; });
  return it == rows.end() ? nullptr : &*it;
}

/// The whole text as a finite number.
template <class T>
bool parse(const std::string& text, T& number)
{
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return false;
  if constexpr (std::is_floating_point_v<T>) return std::isfinite(number);
  return true;
}

bool within(double v, const Binding& b) { return v >= b.min && v <= b.max; }

/// Stores text in the field; false, and nothing changes, when it does not fit.
struct Store {
  ZxAlignSettings& settings;
  const std::string& text;
  const Binding& binding;

  bool operator()(bool ZxAlignSettings::*field) const
  {
    const bool on = text == "on" || text == "1" || text == "true" || text == "yes";
    if (!on && text != "off" && text != "0" && text != "false" && text != "no") return false;
    settings.*field = on;
    return true;
  }
  bool operator()(int ZxAlignSettings::*field) const
  {
    int v = 0;
    if (!parse(text, v) || !within(v, binding)) return false;
    settings.*field = v;
    return true;
  }
  bool operator()(float ZxAlignSettings::*field) const
  {
    float v = 0;
    if (!parse(text, v) || !within(v, binding)) return false;
    settings.*field = v;
    return true;
  }
  bool operator()(float (ZxAlignSettings::*field)[4]) const
  {
    float values[4];
    std::size_t begin = 0;
    for (int i = 0; i < 4; ++i) {
      const std::size_t end = i < 3 ? text.find(',', begin) : text.size();
      if (end == std::string::npos || begin > text.size()) return false;
      if (!parse(text.substr(begin, end - begin), values[i]) || !within(values[i], binding)) return false;
      begin = end + 1;
    }
    std::copy(values, values + 4, settings.*field);
    return true;
  }
};

std::string textOf(float v)
{
  char text[32];
  return {text, std::to_chars(text, text + sizeof text, v).ptr};
}

struct Load {
  const ZxAlignSettings& settings;

  std::string operator()(bool ZxAlignSettings::*field) const { return settings.*field ? "on" : "off"; }
  std::string operator()(int ZxAlignSettings::*field) const { return std::to_string(settings.*field); }
  std::string operator()(float ZxAlignSettings::*field) const { return textOf(settings.*field); }
  std::string operator()(float (ZxAlignSettings::*field)[4]) const
  {
    const auto& v = settings.*field;
    return textOf(v[0]) + "," + textOf(v[1]) + "," + textOf(v[2]) + "," + textOf(v[3]);
  }
};

} // namespace

std::span<const ZxAlignSetting> ZxAlignSettings::table()
{
  static const std::vector<ZxAlignSetting> settings = [] {
    std::vector<ZxAlignSetting> all;
    for (const Row& r : rows) all.push_back(r.setting);
    return all;
  }();
  return settings;
}

std::string ZxAlignSettings::set(const std::string& name, const std::string& value)
{
  const Row* row = findRow(name);
  if (!row) return "There is no setting named " + name + ".";
  if (std::visit(Store{*this, value, row->binding}, row->binding.field)) return {};
  return "The setting " + name + " cannot be \"" + value + "\"; it takes: " + row->setting.range + ".";
}

std::string ZxAlignSettings::get(const std::string& name) const
{
  const Row* row = findRow(name);
  return row ? std::visit(Load{*this}, row->binding.field) : std::string();
}
