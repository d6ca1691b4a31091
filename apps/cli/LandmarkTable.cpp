#include "LandmarkTable.h"

#include "TableFile.h"
#include "Text.h"
#include "io/Error.h"

#include <algorithm>
#include <map>
#include <utility>

namespace cli {
namespace {

constexpr std::string_view kHeader = "slice,index,x,y";
constexpr int kFarthest = 1000000; // pixels, far outside every slice

/// The points by slice and index.
using Points = std::map<std::pair<int, int>, ZxAlignPoint>;

int parseField(std::string_view text, const char* name, const TablePosition& where)
{
  const std::optional<int> value = parseInteger(trimmed(text));
  if (!value) where.refuse("\"" + std::string(trimmed(text)) + "\" is no whole number for " + name);
  return *value;
}

int parseCoordinate(std::string_view text, const char* name, const TablePosition& where)
{
  const int value = parseField(text, name, where);
  if (value < -kFarthest || value > kFarthest)
    where.refuse(std::string(name) + " = " + std::to_string(value) + " lies far outside the slice");
  return value;
}

void addRow(std::string_view row, int slices, Points& points, const TablePosition& where)
{
  const std::vector<std::string_view> fields = split(row, ',');
  if (fields.size() != 4)
    where.refuse("a row has the 4 fields " + std::string(kHeader) + ", not " + std::to_string(fields.size()));
  const int slice = parseField(fields[0], "slice", where);
  const int index = parseField(fields[1], "index", where);
  if (slice < 0 || slice >= slices)
    where.refuse("there is no slice " + std::to_string(slice) + "; the stack has the slices 0 to " +
                 std::to_string(slices - 1));
  if (index < 0) where.refuse("an index counts from 0, not " + std::to_string(index));
  const ZxAlignPoint point = {parseCoordinate(fields[2], "x", where), parseCoordinate(fields[3], "y", where)};
  if (!points.emplace(std::pair(slice, index), point).second)
    where.refuse("landmark " + std::to_string(index) + " of slice " + std::to_string(slice) +
                 " is named a second time");
}

} // namespace

std::vector<std::vector<ZxAlignPoint>> readLandmarkTable(const std::string& path, int slices)
{
  Points points;
  readTable(path, kHeader, "landmarks",
            [&](std::string_view row, const TablePosition& where) { addRow(row, slices, points, where); });
  if (points.empty()) throw io::Error(path + " holds no landmarks.");
  int last = 0;
  for (const auto& [key, point] : points) last = std::max(last, key.second);
  std::vector<std::vector<ZxAlignPoint>> landmarks(static_cast<std::size_t>(slices));
  auto next = points.begin();
  for (int slice = 0; slice < slices; ++slice)
    for (int index = 0; index <= last; ++index, ++next) {
      // The points are in order, so the first gap shows before anything grows beyond the rows of the file.
      if (next == points.end() || next->first != std::pair(slice, index))
        throw io::Error(path + " does not name landmark " + std::to_string(index) + " on slice " +
                        std::to_string(slice) + "; every landmark is needed on every slice.");
      landmarks[static_cast<std::size_t>(slice)].push_back(next->second);
    }
  return landmarks;
}

} // namespace cli
