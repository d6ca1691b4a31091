#include "mc/McPrimType.h"

std::size_t mcSizeOf(McPrimType type) noexcept
{
  return mcVisit(type, [](auto zero) { return sizeof(zero); });
}

const char* mcNameOf(McPrimType type) noexcept
{
  switch (type) {
  case McPrimType::UInt8:
    return "uint8";
  case McPrimType::Int16:
    return "int16";
  case McPrimType::Int32:
    return "int32";
  case McPrimType::Float:
    return "float";
  case McPrimType::Double:
    return "double";
  case McPrimType::UInt16:
    return "uint16";
  }
  return "unknown";
}
