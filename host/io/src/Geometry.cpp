#include "Geometry.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

namespace io {

std::optional<double> metresOf(const std::string& unit)
{
  struct Unit {
    std::string_view name;
    double metres;
  };
  static constexpr Unit units[] = {
      {"m", 1.0},           {"meter", 1.0},       {"metre", 1.0},       {"cm", 1e-2},
      {"centimeter", 1e-2}, {"mm", 1e-3},         {"millimeter", 1e-3}, {"millimetre", 1e-3},
      {"um", 1e-6},         {"\u00b5m", 1e-6},    {"\u03bcm", 1e-6},    {"micron", 1e-6},
      {"microns", 1e-6},    {"micrometer", 1e-6}, {"micrometre", 1e-6}, {"nm", 1e-9},
      {"nanometer", 1e-9},  {"nanometre", 1e-9},  {"\u00c5", 1e-10},    {"a", 1e-10},
      {"angstrom", 1e-10},  {"angstroms", 1e-10}, {"inch", 0.0254},
  };
  std::string lower = unit;
  for (char& c : lower)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  const auto* found =
      std::find_if(std::begin(units), std::end(units), [&](const Unit& u) { return u.name == lower; });
  if (found == std::end(units)) return std::nullopt;
  return found->metres;
}

std::string exactText(double value)
{
  char text[32];
  const auto [end, error] = std::to_chars(std::begin(text), std::end(text), value);
  return {text, error == std::errc() ? end : text};
}

double voxelSizeOf(double number) noexcept
{
  return std::isfinite(number) && number != 0.0 ? std::abs(number) : 1.0;
}

double finiteOrZero(double number) noexcept { return std::isfinite(number) ? number : 0.0; }

} // namespace io
