#pragma once

#include <chrono>

namespace cli {

/// Wall time in seconds since it was made.
class Stopwatch {
public:
  double seconds() const { return std::chrono::duration<double>(Clock::now() - m_start).count(); }

private:
  using Clock = std::chrono::steady_clock;
  Clock::time_point m_start = Clock::now();
};

} // namespace cli
