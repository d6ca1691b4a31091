#include "TransformTable.h"

#include "Text.h"
#include "io/Error.h"
#include "zx/ZxMessage.h"
#include "zx/ZxTextTable.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace cli {
namespace {

constexpr std::string_view kHeader = "slice,tx,ty,angle_deg,flip";

/// Sets a number of a row. Returns what is wrong with it, or nothing.
std::string parseField(std::string_view text, const char* name, float& number)
{
  const std::optional<float> value = parseFloat(trimmed(text));
  if (!value) return "\"" + std::string(trimmed(text)) + "\" is no number for " + name;
  number = *value;
  return {};
}

std::string parseRow(std::string_view row, std::size_t slice, ZxAlignTransform& transform)
{
  const std::vector<std::string_view> fields = split(row, ',');
  if (fields.size() != 5)
    return "a row has the 5 fields " + std::string(kHeader) + ", not " + std::to_string(fields.size());
  if (trimmed(fields[0]) != std::to_string(slice))
    return "slice " + std::to_string(slice) + " is expected, not \"" + std::string(trimmed(fields[0])) + "\"";
  const std::string_view flip = trimmed(fields[4]);
  if (flip != "0" && flip != "1") return "flip is 0 or 1, not \"" + std::string(flip) + "\"";
  transform.flip = flip == "1";
  std::string problem = parseField(fields[1], "tx", transform.tx);
  if (problem.empty()) problem = parseField(fields[2], "ty", transform.ty);
  return problem.empty() ? parseField(fields[3], "angle_deg", transform.angleDegrees) : problem;
}

/// Stands in a remark between the centre and the size of the slices.
constexpr std::string_view kSizeMark = " of slices of ";

std::string sizeText(int width, int height) { return std::to_string(width) + " x " + std::to_string(height); }

/// "512 x 512" out of the remarks of a table; empty when they do not say.
std::string statedSizeText(const std::string& path)
{
  std::ifstream in(path);
  for (std::string line; std::getline(in, line) && line.starts_with('#');) {
    const std::size_t mark = line.find(kSizeMark);
    if (mark == std::string::npos) continue;
    return line.substr(mark + kSizeMark.size(), line.find(" pixels", mark) - mark - kSizeMark.size());
  }
  return {};
}

/// Refuses a table whose remarks state another slice size: its transforms turn about another centre. Tables
/// without such a remark fit any size.
void checkStatedSize(const std::string& path, int width, int height)
{
  const std::string stated = statedSizeText(path), present = sizeText(width, height);
  if (!stated.empty() && stated != present)
    throw io::Error("The table " + path + " is for slices of " + stated + " pixels, not of " + present + ".");
  if (stated.empty())
    ZxMessage::getTheMsg()->printf(
        "The table %s does not say for which slices it is; it is taken for slices of %s "
        "pixels.",
        path.c_str(), present.c_str());
}

} // namespace

std::string transformTableText(std::span<const ZxAlignTransform> transforms, int width, int height)
{
  std::string text = "# Alignment of a stack of slices: the mapping of each slice into the aligned frame.\n"
                     "# tx, ty: pixels; x to the right, y downwards. angle_deg: degrees. flip: 0 or 1.\n"
                     "# Centre c = (" +
                     std::to_string(width / 2) + ", " + std::to_string(height / 2) + ")" +
                     std::string(kSizeMark) + std::to_string(width) + " x " + std::to_string(height) +
                     " pixels; the centre of the first pixel is (0, 0).\n"
                     "# u = p - c; if flip is 1: u.x = -u.x; with a = angle_deg:\n"
                     "# p' = (u.x cos a + u.y sin a, -u.x sin a + u.y cos a) + (tx, ty) + c\n";
  text += std::string(kHeader) + "\n";
  for (std::size_t i = 0; i < transforms.size(); ++i) {
    const ZxAlignTransform& t = transforms[i];
    text += std::to_string(i) + "," + shortest(t.tx) + "," + shortest(t.ty) + "," + shortest(t.angleDegrees) +
            (t.flip ? ",1\n" : ",0\n");
  }
  return text;
}

void writeTransformTable(std::span<const ZxAlignTransform> transforms, int width, int height,
                         const std::string& path)
{
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << transformTableText(transforms, width, height);
  out.close();
  if (!out) throw io::Error(path + " could not be written: " + std::strerror(errno) + ".");
}

ZxDims statedSize(const std::string& path)
{
  const std::string text = statedSizeText(path);
  const std::size_t cross = text.find(" x ");
  if (cross == std::string::npos) return {};
  return {parseInteger(text.substr(0, cross)).value_or(0), parseInteger(text.substr(cross + 3)).value_or(0),
          0};
}

std::vector<ZxAlignTransform> readTransformTable(const std::string& path, int width, int height)
{
  std::error_code error;
  if (const auto status = std::filesystem::status(path, error);
      std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
    throw io::Error("The table " + path + " is no regular file.");
  if (width > 0) checkStatedSize(path, width, height);
  std::vector<ZxAlignTransform> transforms;
  const std::string problem = zxReadTable(path, kHeader, "transforms", [&](std::string_view row) {
    const std::size_t slice = transforms.size();
    return parseRow(row, slice, transforms.emplace_back());
  });
  if (!problem.empty()) throw io::Error(problem);
  if (transforms.empty()) throw io::Error(path + " holds no transforms.");
  return transforms;
}

} // namespace cli
