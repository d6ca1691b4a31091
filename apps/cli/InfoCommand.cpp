#include "InfoCommand.h"

#include "Console.h"
#include "StoredAlignment.h"
#include "Text.h"

#include <CLI/CLI.hpp>

namespace cli {
namespace {

std::string vectorText(const double (&v)[3])
{
  return shortest(v[0]) + " " + shortest(v[1]) + " " + shortest(v[2]);
}

std::string alignmentText(const ZxParamBundle& parameters)
{
  if (!hasAlignment(parameters)) return "none";
  return isAligned(parameters) ? "stored, has been applied" : "stored, not applied yet";
}

template <class T>
std::string listText(const std::vector<T>& values)
{
  constexpr std::size_t shown = 6;
  std::string text;
  for (std::size_t i = 0; i < values.size() && i < shown; ++i) {
    if (i > 0) text += " ";
    if constexpr (std::is_same_v<T, int>)
      text += std::to_string(values[i]);
    else
      text += shortest(values[i]);
  }
  return values.size() > shown ? text + " ..." : text;
}

std::string valueText(const ZxParamBundle::Value& value)
{
  if (const auto* integers = std::get_if<ZxParamBundle::Ints>(&value)) return listText(*integers);
  if (const auto* reals = std::get_if<ZxParamBundle::Reals>(&value)) return listText(*reals);
  if (const auto* text = std::get_if<std::string>(&value)) return "\"" + *text + "\"";
  const ZxParamBundle& bundle = *std::get<ZxParamBundle::Bundle>(value);
  return "bundle of " + std::to_string(bundle.getNumEntries());
}

} // namespace

void InfoCommand::declare(CLI::App& options) { m_input.declare(options); }

void InfoCommand::run(Console& console)
{
  const io::VolumeInfo info = m_input.info();
  for (const std::string& remark : info.remarks) console.remark(remark);
  console.remarks();
  const std::string unit = info.geometry.unit.empty() ? "" : " " + info.geometry.unit;
  console.result("format:      " + info.format);
  console.result("size:        " + sizeName(info.shape.dims) + " voxels");
  console.result("type:        " + typeName(info.shape) + " (in the file: " + info.storedType + ")");
  console.result("voxel size:  " + vectorText(info.geometry.voxelSize) + unit);
  console.result("origin:      " + vectorText(info.geometry.origin) + unit);
  console.result("alignment:   " + alignmentText(info.parameters));
  for (const ZxParamBundle::Entry& entry : info.parameters.entries())
    console.result("parameter:   " + entry.name + " = " + valueText(entry.value));
}

} // namespace cli
