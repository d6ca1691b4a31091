#include "FormatNames.h"

#include <cstring>

namespace io {

bool hasEnding(const std::string& path, std::string_view ending) noexcept
{
  if (path.size() < ending.size()) return false;
  const std::size_t start = path.size() - ending.size();
  for (std::size_t i = 0; i < ending.size(); ++i) {
    const char c = path[start + i];
    if ((c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c) != ending[i]) return false;
  }
  return true;
}

bool beginsWith(std::span<const std::byte> head, std::string_view bytes) noexcept
{
  return head.size() >= bytes.size() && std::memcmp(head.data(), bytes.data(), bytes.size()) == 0;
}

std::string neitherGreyNorColour(const char* format, const ZxLatticeShape& shape)
{
  const bool colour = shape.numDataVars == 4 && shape.primType == McPrimType::UInt8;
  if (shape.numDataVars == 1 || colour) return {};
  return std::string(format) + " cannot hold " + std::to_string(shape.numDataVars) + " values of the type " +
         mcNameOf(shape.primType) + " per voxel";
}

} // namespace io
