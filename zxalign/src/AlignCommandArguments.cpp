#include "AlignCommandArguments.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

int alignInteger(const char* word)
{
  const long value = std::strtol(word, nullptr, 10);
  return static_cast<int>(
      std::clamp(value, long{std::numeric_limits<int>::min()}, long{std::numeric_limits<int>::max()}));
}

float alignReal(const char* word) { return static_cast<float>(std::strtod(word, nullptr)); }

bool alignFlag(const char* word) { return alignInteger(word) != 0; }
