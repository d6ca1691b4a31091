#include "RobustCalibration.h"

#include "RobustSearch.h"
#include "RobustStacks.h"
#include "mc/McMath.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace fs = std::filesystem;
using namespace robust;

namespace bench {
namespace {

// Slices far apart differ by themselves.
constexpr double kRightShare = 0.04;

/// One search whose truth is known.
struct Trial {
  Finding finding;
  bool right = false;
};

using Trials = std::vector<Trial>;

/// What the coefficients are fitted to.
std::vector<Stack> fitted(const fs::path& folder) { return readStacks(folder, volumesWithTruth()); }

/// What they are checked on: another head, taken by X-rays, and the nerve cord of a larva. Both were aligned
/// when they were taken or by those who published them.
std::vector<Stack> heldOut(const fs::path& folder)
{
  std::vector<Stack> stacks = readStacks(folder, {"medical/ct_head_png_series", "em/vnc_sstem_stack1"});
  for (Stack& stack : stacks) stack.truth.assign(static_cast<std::size_t>(stack.slices), RigidMotion());
  return stacks;
}

/// Pairs of slices of one stack, near and far apart, the second one put down somewhere else; mirrored slices
/// allowed and not.
void addPairs(Trials& trials, const Stack& stack)
{
  unsigned seed = 0;
  for (const int apart : {1, 2, 3, 4, 6, 9, 13, 20})
    for (int k = 1; k + apart < stack.slices; k += std::max(1, stack.slices / 9)) {
      ++seed;
      const double share = 0.02 * (seed % 5);
      const RigidMotion motion{
          withinCircle(137.5 * seed), {share * stack.width, -0.5 * share * stack.width}, false};
      const Stack moved = movedSlice(stack, k + apart, motion, 0.0, seed);
      const Pyramid one(stack.image(k)), other(moved.image(0));
      const RigidMotion truth = stack.motion(k, k + apart).after(motion);
      for (const bool flip : {false, true}) {
        Limits limits;
        limits.mirrored = flip;
        const Finding finding = findMotion(one, other, limits);
        const double error = cornerDistance(finding.motion, truth, stack.width, stack.height);
        trials.push_back(
            {finding, finding.found && !finding.motion.mirrored && error < kRightShare * stack.width});
      }
    }
}

/// The middle of the first channel of a slice, a square.
std::vector<unsigned char> cut(const Stack& stack, int slice, int side)
{
  std::vector<unsigned char> grey;
  const SliceImage image = stack.image(slice);
  const int left = (stack.width - side) / 2, top = (stack.height - side) / 2;
  for (int y = top; y < top + side; ++y)
    for (int x = left; x < left + side; ++x)
      grey.push_back(image.samples[(static_cast<std::size_t>(y) * static_cast<std::size_t>(stack.width) +
                                    static_cast<std::size_t>(x)) *
                                   static_cast<std::size_t>(stack.channels)]);
  return grey;
}

/// Slices of different stacks, cut to the same size: nothing that is found is right.
void addStrangers(Trials& trials, const Stack& a, const Stack& b)
{
  const int side = std::min({a.width, a.height, b.width, b.height});
  const int slices = std::min(a.slices, b.slices);
  for (int k = 1; k < slices; k += std::max(1, slices / 6)) {
    const std::vector<unsigned char> one = cut(a, k, side), other = cut(b, k, side);
    trials.push_back(
        {findMotion(Pyramid({side, side, 1, one.data(), {}}), Pyramid({side, side, 1, other.data(), {}}), {}),
         false});
  }
}

Trials trialsOf(const std::vector<Stack>& stacks)
{
  Trials trials;
  for (const Stack& stack : stacks) addPairs(trials, stack);
  for (const Stack& a : stacks)
    for (const Stack& b : stacks)
      if (&a != &b) addStrangers(trials, a, b);
  std::erase_if(trials, [](const Trial& trial) { return !trial.finding.found; });
  return trials;
}

constexpr std::array kBins{0.0, 0.25, 0.5, 0.75, 0.9, 0.97, 1.0};

struct Bin {
  int count = 0, right = 0;
};
using Bins = std::array<Bin, kBins.size() - 1>;

Bins binned(const Trials& trials)
{
  Bins bins{};
  for (const Trial& trial : trials) {
    const auto above = std::count_if(kBins.begin() + 1, kBins.end() - 1,
                                     [&](double b) { return trial.finding.confidence >= b; });
    Bin& bin = bins[static_cast<std::size_t>(above)];
    ++bin.count;
    bin.right += trial.right;
  }
  return bins;
}

void printCells(const Bin& bin)
{
  if (bin.count)
    std::printf(" %d | %.0f %% |", bin.count, 100.0 * bin.right / bin.count);
  else
    std::printf(" 0 | |");
}

/// The likelihood's gradient and curvature, summed over trials.
struct Slope {
  std::array<std::array<double, kTraits>, kTraits> curvature{};
  std::array<double, kTraits> gradient{};

  void add(const Trial& trial, const std::array<double, kTraits>& coefficients)
  {
    const std::array<double, kTraits> traits = traitsOf(trial.finding.evidence);
    double sum = 0.0;
    for (std::size_t i = 0; i < kTraits; ++i) sum += coefficients[i] * traits[i];
    const double alone = 1.0 / (1.0 + mc::exp(-sum));
    const double chance = std::clamp(alone * clarityOf(trial.finding.evidence), 1e-9, 1.0 - 1e-9);
    const double pull = (trial.right - chance) * (1.0 - alone) / (1.0 - chance);
    const double weight = chance * (1.0 - alone) * (1.0 - alone) / (1.0 - chance);
    for (std::size_t a = 0; a < kTraits; ++a) {
      gradient[a] += pull * traits[a];
      for (std::size_t b = 0; b < kTraits; ++b) curvature[a][b] += weight * traits[a] * traits[b];
    }
  }

  /// The step uphill, by elimination; a little is added to the curvature, for trials that are all alike.
  std::array<double, kTraits> step()
  {
    for (std::size_t k = 0; k < kTraits; ++k) curvature[k][k] += 0.1;
    for (std::size_t k = 0; k < kTraits; ++k)
      for (std::size_t a = 0; a < kTraits; ++a) {
        if (a == k) continue;
        const double f = curvature[a][k] / curvature[k][k];
        for (std::size_t b = 0; b < kTraits; ++b) curvature[a][b] -= f * curvature[k][b];
        gradient[a] -= f * gradient[k];
      }
    std::array<double, kTraits> result{};
    for (std::size_t k = 0; k < kTraits; ++k) result[k] = gradient[k] / curvature[k][k];
    return result;
  }
};

} // namespace

void printCalibration(const fs::path& folder)
{
  const Bins known = binned(trialsOf(fitted(folder))), unknown = binned(trialsOf(heldOut(folder)));
  std::printf("| confidence | pairs fitted to | right | pairs held out | right |\n|---|---|---|---|---|\n");
  for (std::size_t i = 0; i < known.size(); ++i) {
    std::printf("| %.2f to %.2f |", kBins[i], kBins[i + 1]);
    printCells(known[i]);
    printCells(unknown[i]);
    std::printf("\n");
  }
}

void printFit(const fs::path& folder)
{
  const Trials trials = trialsOf(fitted(folder));
  std::array<double, kTraits> coefficients{};
  for (int round = 0; round < 50; ++round) {
    Slope slope;
    for (const Trial& trial : trials) slope.add(trial, coefficients);
    const std::array<double, kTraits> step = slope.step();
    for (std::size_t i = 0; i < kTraits; ++i) coefficients[i] += 0.5 * step[i];
  }
  for (const double c : coefficients) std::printf("%.2f ", c);
  std::printf("from %d pairs\n", static_cast<int>(trials.size()));
}

} // namespace bench
