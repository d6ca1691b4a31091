// How accurate, how far-reaching and how honest the method "robust" is, on the volumes with known truth.
// Prints one table of Markdown for each name given.
//
//   robust_tables FOLDER accuracy|moved|capture|calibration|memory|fit...
//
// FOLDER holds the volumes (jitter/, em/, histology/); those that are not there are left out.

#include "RobustCalibration.h"
#include "RobustMemory.h"
#include "RobustSearch.h"
#include "RobustStacks.h"
#include "mc/McMath.h"
#include "mc/McRound.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace fs = std::filesystem;
using namespace bench;
using namespace robust;

namespace {

constexpr double kConfident = 0.75; // the method's own default
constexpr double kWrong = 5.0;      // pixels

/// Errors of several searches.
struct Tally {
  int count = 0, found = 0, confident = 0, confidentlyWrong = 0;
  double sum = 0.0, largest = 0.0, largestTurn = 0.0;

  void add(const Stack& stack, const Finding& finding, const RigidMotion& truth, double wrong = kWrong)
  {
    ++count;
    const bool sameSide = finding.found && finding.motion.mirrored == truth.mirrored;
    const double error = sameSide ? cornerDistance(finding.motion, truth, stack.width, stack.height) : 1e3;
    const bool sure = finding.confidence >= kConfident;
    confident += sure;
    confidentlyWrong += sure && error > wrong;
    if (error > wrong) return;
    ++found;
    sum += error;
    largest = std::max(largest, error);
    largestTurn =
        std::max(largestTurn, std::abs(std::remainder(finding.motion.degrees - truth.degrees, 360.0)));
  }
  double mean() const { return found ? sum / found : 0.0; }
};

/// Neighbours from scratch, all over the circle.
void printAccuracy(const fs::path& folder)
{
  std::printf("| stack | pairs | mean px | largest px | above 2 px | sure | sure and wrong |\n"
              "|---|---|---|---|---|---|---|\n");
  for (const Stack& stack : readStacks(folder, volumesWithTruth())) {
    Tally tally;
    int far = 0;
    for (int k = 1; k < stack.slices; ++k) {
      const Finding finding = findMotion(Pyramid(stack.image(k - 1)), Pyramid(stack.image(k)), {});
      const RigidMotion truth = stack.motion(k - 1, k);
      tally.add(stack, finding, truth);
      far += !finding.found || cornerDistance(finding.motion, truth, stack.width, stack.height) > 2.0;
    }
    std::printf("| %s | %d | %.2f | %.2f | %d | %d | %d |\n", stack.name.c_str(), tally.count, tally.mean(),
                tally.largest, far, tally.confident, tally.confidentlyWrong);
    std::fflush(stdout);
  }
}

/// A slice against itself, moved.
void printMoved(const fs::path& folder)
{
  std::printf("| slice of | noise | mean px | largest px | largest turn, degrees |\n|---|---|---|---|---|\n");
  std::vector<std::string> names = volumesWithTruth();
  names.emplace_back("jitter/histology_rgb8.nrrd");
  for (const Stack& stack : readStacks(folder, names))
    for (const double noise : {0.0, 1.0}) {
      Tally tally;
      const int slice = stack.slices / 2;
      const Pyramid reference(stack.image(slice));
      for (unsigned i = 0; i < 12; ++i) {
        const double angle = 30.0 * i + 7.3, share = 0.01 * i, w = stack.width;
        const RigidMotion motion{withinCircle(angle), {share * w + 0.37, 0.61 - share * w}, false};
        const Stack moved = movedSlice(stack, slice, motion, noise * deviationOf(stack, slice), i);
        tally.add(stack, findMotion(reference, Pyramid(moved.image(0)), {}), motion);
      }
      std::printf("| %s | %s | %.3f | %.3f | %.4f |\n", stack.name.c_str(),
                  noise > 0.0 ? "that of the slice" : "none", tally.mean(), tally.largest, tally.largestTurn);
      std::fflush(stdout);
    }
}

/// Every angle, shifts to a quarter of the width, mirrored and not, of one slice against another or itself.
/// The slice that is moved gets noise of a standard deviation.
Tally capture(const Stack& reference, int slice, const Stack& other, int moved, const RigidMotion& between,
              double noise = 0.0)
{
  Tally tally;
  const Pyramid pyramid(reference.image(slice));
  Limits limits;
  limits.mirrored = true;
  limits.largestShift = 0.6;
  unsigned seed = 0;
  for (int angle = -180; angle < 180; angle += 15)
    for (const bool mirrored : {false, true})
      for (const double share : {0.0, 0.15, 0.25}) {
        double sine = 0.0, cosine = 1.0;
        mc::sinCosDegrees(7.0 * angle + 400.0 * share, sine, cosine);
        const double length = share * other.width;
        const RigidMotion motion{withinCircle(angle), {length * cosine, length * sine}, mirrored};
        const Stack turned = movedSlice(other, moved, motion, noise, ++seed);
        tally.add(other, findMotion(pyramid, Pyramid(turned.image(0)), limits), between.after(motion));
      }
  return tally;
}

/// What a channel of a stack shows, in grey.
Stack channelOf(const Stack& stack, int channel)
{
  Stack grey = stack;
  grey.channels = 1;
  grey.samples.clear();
  for (std::size_t i = static_cast<std::size_t>(channel); i < stack.samples.size();
       i += static_cast<std::size_t>(stack.channels))
    grey.samples.push_back(stack.samples[i]);
  return grey;
}

/// The sections as if they had been stained blue instead of brown, weaker, and lit from one side: red and
/// blue change places, dark tissue keeps two thirds of its contrast, and the light falls by a quarter from
/// left to right.
Stack stainedAnew(const Stack& stack)
{
  Stack blue = stack;
  for (std::size_t i = 0; i + 3 < blue.samples.size(); i += 4) {
    std::swap(blue.samples[i], blue.samples[i + 2]);
    const auto column = static_cast<double>(i / 4 % static_cast<std::size_t>(stack.width));
    for (std::size_t c = i; c < i + 3; ++c) {
      const double dark = 1.0 - blue.samples[c] / 255.0;
      const double light = (1.0 - 0.67 * dark * std::sqrt(dark)) * (1.0 - 0.25 * column / stack.width);
      blue.samples[c] = mc::roundHalfEven<unsigned char>(255.0 * light);
    }
  }
  blue.background = 0;
  return blue;
}

void printCaptured(const Stack& stack, const char* what, const Tally& tally)
{
  std::printf("| %s | %s | %d | %.1f %% | %d | %d |\n", stack.name.c_str(), what, tally.count,
              100.0 * tally.found / tally.count, tally.confident, tally.confidentlyWrong);
  std::fflush(stdout);
}

void printCapture(const fs::path& folder)
{
  std::printf(
      "| stack | slice against | positions | found | sure | sure and wrong |\n|---|---|---|---|---|---|\n");
  for (const Stack& stack : readStacks(folder, volumesWithTruth())) {
    const int slice = stack.slices / 2, next = slice + 1;
    printCaptured(stack, "itself", capture(stack, slice, stack, slice, {}));
    printCaptured(stack, "its neighbour", capture(stack, slice, stack, next, stack.motion(slice, next)));
  }
  for (const Stack& stack : readStacks(folder, {"jitter/histology_rgb8.nrrd"})) {
    const int slice = stack.slices / 2;
    const Stack anew = stainedAnew(stack);
    printCaptured(stack, "itself", capture(stack, slice, stack, slice, {}));
    printCaptured(stack, "itself, stained anew, with noise",
                  capture(stack, slice, anew, slice, {}, 0.5 * deviationOf(anew, slice)));
    printCaptured(stack, "red channel against the blue one",
                  capture(channelOf(stack, 0), slice, channelOf(stack, 2), slice, {}));
  }
}

} // namespace

int main(int argc, char** argv)
{
  if (argc < 3) {
    std::fputs("robust_tables FOLDER accuracy|moved|capture|calibration|memory|fit...\n", stderr);
    return 2;
  }
  const fs::path folder = argv[1];
  try {
    for (int i = 2; i < argc; ++i) {
      const std::string table = argv[i];
      if (table == "accuracy") printAccuracy(folder);
      if (table == "moved") printMoved(folder);
      if (table == "capture") printCapture(folder);
      if (table == "calibration") printCalibration(folder);
      if (table == "memory") printMemory();
      if (table == "fit") printFit(folder);
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  return 0;
}
