// How accurate, how far-reaching and how honest the method "robust" is, on the volumes with known truth.
// Prints one table of Markdown for each name given.
//
//   robust_tables FOLDER accuracy|moved|capture|calibration...
//
// FOLDER holds the volumes (jitter/, em/, histology/); those that are not there are left out.

#include "RobustSearch.h"
#include "io/Volume.h"
#include "mc/McMath.h"
#include "mc/McRound.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using namespace robust;

namespace {

constexpr double kConfident = 0.75; // the method's own default
constexpr double kWrong = 5.0;      // pixels

/// The slices of a volume as the method sees them, and where they truly lie.
struct Stack {
  std::string name;
  int width = 0, height = 0, channels = 1, slices = 0;
  std::vector<unsigned char> samples;
  std::vector<RigidMotion> truth; ///< from the slice into the aligned frame; empty when unknown
  unsigned char background = 0;

  std::size_t sliceBytes() const
  {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
           static_cast<std::size_t>(channels);
  }
  SliceImage image(int slice) const
  {
    return {width, height, channels, samples.data() + static_cast<std::size_t>(slice) * sliceBytes(), {}};
  }
  RigidMotion motion(int reference, int moved) const
  {
    return truth[static_cast<std::size_t>(reference)].inverse().after(truth[static_cast<std::size_t>(moved)]);
  }
};

/// Samples of 16 bits between black and white.
void appendMapped(std::vector<unsigned char>& out, const std::vector<std::uint16_t>& in, double low,
                  double high)
{
  for (const std::uint16_t v : in)
    out.push_back(mc::roundHalfEven<unsigned char>((v - low) * 255.0 / (high - low)));
}

void readSamples(Stack& stack, ZxLattice& lattice)
{
  const bool wide = lattice.primType() == McPrimType::UInt16;
  const std::size_t bytes = lattice.shape().sliceBytes(),
                    all = bytes * static_cast<std::size_t>(stack.slices);
  std::vector<std::uint16_t> words(wide ? all / 2 : 0);
  stack.samples.resize(wide ? 0 : all);
  auto* out = wide ? reinterpret_cast<unsigned char*>(words.data()) : stack.samples.data();
  for (int k = 0; k < stack.slices; ++k)
    if (!lattice.readSlice(k, out + static_cast<std::size_t>(k) * bytes))
      throw io::Error("A slice cannot be read.");
  if (!wide) return;
  const auto [low, high] = std::minmax_element(words.begin(), words.end());
  appendMapped(stack.samples, words, *low, *high);
}

void readTruth(Stack& stack, const fs::path& file)
{
  std::ifstream in(file);
  const nlohmann::json json = nlohmann::json::parse(in);
  stack.background = json["type"] == "uint8" ? json["background"][0].get<unsigned char>() : 0;
  if (!json["originals_aligned"].get<bool>()) return;
  for (const auto& slice : json["transforms"]) {
    const auto& t = slice["applied"];
    stack.truth.push_back(
        {t["angle_deg"].get<double>(), {t["tx"].get<double>(), t["ty"].get<double>()}, false});
  }
}

/// A volume, or an empty stack when it is not there.
Stack readStack(const fs::path& path)
{
  Stack stack;
  stack.name = path.stem().string();
  if (!fs::exists(path)) return stack;
  const McHandle<ZxField3> volume = io::readVolume({path.string()});
  ZxLattice& lattice = *volume->getLattice();
  stack.width = lattice.getDims().width;
  stack.height = lattice.getDims().height;
  stack.slices = lattice.getDims().slices;
  stack.channels = lattice.getNumDataVars();
  readSamples(stack, lattice);
  const fs::path truth = fs::path(path).replace_extension(".json");
  if (fs::exists(truth)) readTruth(stack, truth);
  return stack;
}

std::vector<Stack> readStacks(const fs::path& folder, const std::vector<std::string>& names)
{
  std::vector<Stack> stacks;
  for (const std::string& name : names) {
    Stack stack = readStack(folder / name);
    if (stack.slices > 0) stacks.push_back(std::move(stack));
  }
  return stacks;
}

std::vector<std::string> volumesWithTruth()
{
  return {"jitter/em_fibsem_gray8.nrrd", "jitter/mri_t1_gray8.tif", "jitter/mri_macaque_gray16.nrrd",
          "jitter/mri_colour_rgb8.nrrd"};
}

/// A slice of a stack seen through a motion: what the new slice shows at p lies at motion(p) of the old one.
/// Linear between pixels, the background outside; noise of a standard deviation is added.
Stack movedSlice(const Stack& stack, int slice, const RigidMotion& motion, double noise, unsigned seed)
{
  Stack moved = stack;
  moved.slices = 1;
  moved.samples.clear();
  const unsigned char* in = stack.image(slice).samples;
  std::mt19937 random(seed);
  std::normal_distribution<double> normal(0.0, std::max(1e-9, noise));
  for (int y = 0; y < stack.height; ++y)
    for (int x = 0; x < stack.width; ++x) {
      const Point p =
          motion.map({static_cast<double>(x - stack.width / 2), static_cast<double>(y - stack.height / 2)});
      const double px = p.x + stack.width / 2, py = p.y + stack.height / 2;
      const int column = mc::floorToInt(px), row = mc::floorToInt(py);
      const bool inside = column >= 0 && row >= 0 && column + 1 < stack.width && row + 1 < stack.height;
      for (int c = 0; c < stack.channels; ++c) {
        const auto at = [&](int u, int v) {
          return static_cast<double>(in[(static_cast<std::size_t>(v) * static_cast<std::size_t>(stack.width) +
                                         static_cast<std::size_t>(u)) *
                                            static_cast<std::size_t>(stack.channels) +
                                        static_cast<std::size_t>(c)]);
        };
        double value = stack.background;
        if (inside) {
          const double fx = px - column, fy = py - row;
          value = (at(column, row) * (1 - fx) + at(column + 1, row) * fx) * (1 - fy) +
                  (at(column, row + 1) * (1 - fx) + at(column + 1, row + 1) * fx) * fy;
        }
        moved.samples.push_back(
            mc::roundHalfEven<unsigned char>(noise > 0.0 ? value + normal(random) : value));
      }
    }
  return moved;
}

double deviationOf(const Stack& stack, int slice)
{
  const unsigned char* in = stack.image(slice).samples;
  double sum = 0.0, squares = 0.0;
  const std::size_t n = stack.sliceBytes();
  for (std::size_t i = 0; i < n; ++i) {
    sum += in[i];
    squares += static_cast<double>(in[i]) * in[i];
  }
  const double mean = sum / static_cast<double>(n);
  return std::sqrt(squares / static_cast<double>(n) - mean * mean);
}

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
Tally capture(const Stack& stack, int reference, int moved, const RigidMotion& between)
{
  Tally tally;
  const Pyramid pyramid(stack.image(reference));
  Limits limits;
  limits.mirrored = true;
  limits.largestShift = 0.6;
  for (int angle = -180; angle < 180; angle += 15)
    for (const bool mirrored : {false, true})
      for (const double share : {0.0, 0.15, 0.25}) {
        double sine = 0.0, cosine = 1.0;
        mc::sinCosDegrees(7.0 * angle + 400.0 * share, sine, cosine);
        const double length = share * stack.width;
        const RigidMotion motion{withinCircle(angle), {length * cosine, length * sine}, mirrored};
        const Stack turned = movedSlice(stack, moved, motion, 0.0, 0);
        tally.add(stack, findMotion(pyramid, Pyramid(turned.image(0)), limits), between.after(motion));
      }
  return tally;
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
  std::vector<std::string> names = volumesWithTruth();
  names.emplace_back("jitter/histology_rgb8.nrrd");
  for (const Stack& stack : readStacks(folder, names)) {
    const int slice = stack.slices / 2;
    printCaptured(stack, "itself", capture(stack, slice, slice, {}));
    if (!stack.truth.empty())
      printCaptured(stack, "its neighbour", capture(stack, slice, slice + 1, stack.motion(slice, slice + 1)));
  }
}

/// How often a motion of each confidence is right.
class Calibration {
public:
  void add(double confidence, bool right)
  {
    const auto bin = std::min(
        kBins.size() - 2, static_cast<std::size_t>(std::count_if(kBins.begin() + 1, kBins.end() - 1,
                                                                 [&](double b) { return confidence >= b; })));
    ++m_count[bin];
    m_right[bin] += right;
  }
  void print() const
  {
    std::printf("| confidence | pairs | right |\n|---|---|---|\n");
    for (std::size_t i = 0; i + 1 < kBins.size(); ++i)
      if (m_count[i])
        std::printf("| %.2f to %.2f | %d | %.0f %% |\n", kBins[i], kBins[i + 1], m_count[i],
                    100.0 * m_right[i] / m_count[i]);
  }

private:
  static constexpr std::array kBins{0.0, 0.1, 0.25, 0.5, 0.75, 0.9, 0.95, 0.99, 1.0};
  std::array<int, kBins.size()> m_count{}, m_right{};
};

void calibrate(Calibration& calibration, const Stack& stack)
{
  for (const int apart : {1, 2, 3, 4, 6, 9, 13, 20})
    for (int k = 1; k + apart < stack.slices; k += 4)
      for (const bool flip : {false, true}) {
        Limits limits;
        limits.mirrored = flip;
        const Finding finding = findMotion(Pyramid(stack.image(k)), Pyramid(stack.image(k + apart)), limits);
        const bool right = finding.found && !finding.motion.mirrored &&
                           cornerDistance(finding.motion, stack.motion(k, k + apart), stack.width,
                                          stack.height) < 0.04 * stack.width;
        calibration.add(finding.confidence, right);
      }
}

/// Slices of different stacks, cut to the same size: nothing that is found is right.
void calibrateStrangers(Calibration& calibration, const Stack& a, const Stack& b)
{
  const int side = std::min({a.width, a.height, b.width, b.height});
  const auto cut = [side](const Stack& stack, int slice) {
    std::vector<unsigned char> grey;
    const SliceImage image = stack.image(slice);
    for (int y = 0; y < side; ++y)
      for (int x = 0; x < side; ++x)
        grey.push_back(image.samples[(static_cast<std::size_t>(y) * static_cast<std::size_t>(stack.width) +
                                      static_cast<std::size_t>(x)) *
                                     static_cast<std::size_t>(stack.channels)]);
    return grey;
  };
  for (int k = 2; k < 28; k += 6) {
    const std::vector<unsigned char> one = cut(a, k), other = cut(b, k);
    const Finding finding =
        findMotion(Pyramid({side, side, 1, one.data(), {}}), Pyramid({side, side, 1, other.data(), {}}), {});
    calibration.add(finding.confidence, false);
  }
}

void printCalibration(const fs::path& folder)
{
  Calibration calibration;
  const std::vector<Stack> stacks = readStacks(folder, volumesWithTruth());
  for (const Stack& stack : stacks) calibrate(calibration, stack);
  for (const Stack& a : stacks)
    for (const Stack& b : stacks)
      if (&a != &b) calibrateStrangers(calibration, a, b);
  calibration.print();
}

} // namespace

int main(int argc, char** argv)
{
  if (argc < 3) {
    std::fputs("robust_tables FOLDER accuracy|moved|capture|calibration...\n", stderr);
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
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  return 0;
}
