#include "RobustMemory.h"

#include "RobustSearch.h"
#include "RobustStacks.h"
#include "mc/McRound.h"

#include <cstdio>
#include <fstream>
#include <random>
#include <string>

using namespace robust;

namespace bench {
namespace {

/// Tissue of three grains, between random values on grids that get finer.
Stack madeStack(int side)
{
  Stack stack;
  stack.width = stack.height = side;
  stack.slices = 1;
  stack.samples.resize(stack.sliceBytes());
  std::mt19937 random(5);
  std::vector<float> sums(stack.sliceBytes(), 128.0f);
  for (const int grain : {side / 5, side / 24, side / 110}) {
    const int cells = side / grain + 2;
    std::vector<float> values(static_cast<std::size_t>(cells) * static_cast<std::size_t>(cells));
    for (float& v : values) v = static_cast<float>(random() % 80) - 40.0f;
    for (int y = 0; y < side; ++y)
      for (int x = 0; x < side; ++x) {
        const auto fx = static_cast<float>(x % grain) / static_cast<float>(grain);
        const auto fy = static_cast<float>(y % grain) / static_cast<float>(grain);
        const float* p = &values[static_cast<std::size_t>(y / grain * cells + x / grain)];
        const float *q = p + cells, upper = p[0] + (p[1] - p[0]) * fx, lower = q[0] + (q[1] - q[0]) * fx;
        sums[static_cast<std::size_t>(y) * static_cast<std::size_t>(side) + static_cast<std::size_t>(x)] +=
            upper + (lower - upper) * fy;
      }
  }
  for (std::size_t i = 0; i < sums.size(); ++i)
    stack.samples[i] = mc::roundHalfEven<unsigned char>(static_cast<double>(sums[i]));
  return stack;
}

/// A line of the kernel's description of this process, in MB.
double megabytes(const std::string& name)
{
  std::ifstream in("/proc/self/status");
  for (std::string word; in >> word;)
    if (double kilobytes = 0.0; word == name && in >> kilobytes) return kilobytes / 1024.0;
  return 0.0;
}

/// From now on the peak is counted anew.
void forgetPeak() { std::ofstream("/proc/self/clear_refs") << "5"; }

} // namespace

void printMemory()
{
  std::printf("| slices | the two, MB | search, MB | error, px |\n|---|---|---|---|\n");
  for (const int side : {512, 2048, 8192}) {
    const Stack stack = madeStack(side);
    const RigidMotion truth{31.7, {0.05 * side, -0.03 * side}, false};
    const Stack moved = movedSlice(stack, 0, truth, 0.0, 0);
    const double before = megabytes("VmRSS:");
    forgetPeak();
    const Finding finding = findMotion(Pyramid(stack.image(0)), Pyramid(moved.image(0)), {});
    const double peak = megabytes("VmHWM:") - before;
    std::printf("| %d x %d | %.1f | %.0f | %.3f |\n", side, side,
                2.0 * static_cast<double>(stack.sliceBytes()) / 1048576.0, peak,
                finding.found ? cornerDistance(finding.motion, truth, side, side) : 1e3);
    std::fflush(stdout);
  }
}

} // namespace bench
