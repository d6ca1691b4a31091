#include "zx/ZxMemory.h"

#include <sys/resource.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <limits>
#include <string>

namespace {

/// The number of a line like "MemAvailable:   123 kB" of a file of /proc, in bytes; 0 when there is none.
std::uint64_t kilobytesOf(const char* file, const std::string& key)
{
  std::ifstream in(file);
  for (std::string line; std::getline(in, line);) {
    if (line.compare(0, key.size(), key) != 0) continue;
    const std::size_t digit = line.find_first_of("0123456789");
    std::uint64_t value = 0;
    if (digit != std::string::npos) std::from_chars(line.data() + digit, line.data() + line.size(), value);
    return value * 1024;
  }
  return 0;
}

} // namespace

std::uint64_t zxAvailableMemory()
{
  constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();
  const std::uint64_t free = kilobytesOf("/proc/meminfo", "MemAvailable:");
  std::uint64_t available = free ? free : unlimited;
  rlimit limit{};
  if (getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY) {
    const std::uint64_t used = kilobytesOf("/proc/self/status", "VmSize:");
    available = std::min<std::uint64_t>(available, limit.rlim_cur > used ? limit.rlim_cur - used : 0);
  }
  return available;
}
