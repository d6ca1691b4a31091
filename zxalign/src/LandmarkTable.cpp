#include "LandmarkTable.h"

#include "mc/McText.h"
#include "zx/ZxTextTable.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

namespace {

constexpr std::string_view kHeader = "slice,index,x,y";
constexpr int kFarthest = 1000000; // pixels, far outside every slice

/// The points by slice and index.
using Points = std::map<std::pair<int, int>, ZxAlignPoint>;

/// The four fields of a row. Returns what is wrong with them, or nothing.
std::string parseRow(std::string_view row, int (&values)[4])
{
  static constexpr const char* names[] = {"slice", "index", "x", "y"};
  const std::vector<std::string_view> fields = mc::split(row, ',');
  if (fields.size() != 4)
    return "a row has the 4 fields " + std::string(kHeader) + ", not " + std::to_string(fields.size());
  for (std::size_t i = 0; i < 4; ++i) {
    const std::string_view field = mc::trimmed(fields[i]);
    const std::optional<int> value = mc::parseInteger(field);
    if (!value) return "\"" + std::string(field) + "\" is no whole number for " + names[i];
    values[i] = *value;
    if (i >= 2 && (*value < -kFarthest || *value > kFarthest))
      return std::string(names[i]) + " = " + std::to_string(*value) + " lies far outside the slice";
  }
  return {};
}

std::string addRow(std::string_view row, int slices, Points& points)
{
  int values[4];
  std::string problem = parseRow(row, values);
  if (!problem.empty()) return problem;
  const auto [slice, index, x, y] = values;
  if (slice < 0 || slice >= slices)
    return "there is no slice " + std::to_string(slice) + "; the stack has the slices 0 to " +
           std::to_string(slices - 1);
  if (index < 0) return "an index counts from 0, not " + std::to_string(index);
  if (!points.emplace(std::pair(slice, index), ZxAlignPoint{x, y}).second)
    return "landmark " + std::to_string(index) + " of slice " + std::to_string(slice) +
           " is named a second time";
  return {};
}

} // namespace

std::string readLandmarkTable(const std::string& path, int slices,
                              std::vector<std::vector<ZxAlignPoint>>& landmarks)
{
  Points points;
  std::string problem = zxReadTable(path, kHeader, "landmarks",
                                    [&](std::string_view row) { return addRow(row, slices, points); });
  if (!problem.empty()) return problem;
  if (points.empty()) return path + " holds no landmarks.";
  int last = 0;
  for (const auto& [key, point] : points) last = std::max(last, key.second);
  landmarks.assign(static_cast<std::size_t>(slices), {});
  auto next = points.begin();
  for (int slice = 0; slice < slices; ++slice)
    for (int index = 0; index <= last; ++index, ++next) {
      // The points are in order, so the first gap shows before anything grows beyond the rows of the file.
      if (next == points.end() || next->first != std::pair(slice, index))
        return path + " does not name landmark " + std::to_string(index) + " on slice " +
               std::to_string(slice) + "; every landmark is needed on every slice.";
      landmarks[static_cast<std::size_t>(slice)].push_back(next->second);
    }
  return {};
}
