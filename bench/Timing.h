#pragma once

#include <benchmark/benchmark.h>

#include <chrono>

/// Seconds that a piece of work takes by the clock on the wall.
template <class Work>
double secondsOf(const Work& work)
{
  const auto start = std::chrono::steady_clock::now();
  work();
  benchmark::ClobberMemory();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}
