#include "RobustStacks.h"

#include "io/Volume.h"
#include "mc/McRound.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>

namespace fs = std::filesystem;
using namespace robust;

namespace bench {
namespace {

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

} // namespace

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

} // namespace bench
