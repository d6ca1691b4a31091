#include "Pyramid.h"

#include "Content.h"
#include "ReducedSlice.h"
#include "mc/McRound.h"

#include <algorithm>
#include <cmath>

namespace robust {
namespace {

constexpr int kLeastSide = 16;
// Reach of the mean and the contrast that are made equal, as a share of the longer side.
constexpr double kFlatReach = 0.06;
// What a region of low contrast is raised to at most: this share of the contrast of the slice counts as
// noise.
constexpr float kLeastContrast = 0.25f;

/// Channel 0 is the grey value. Colour has two more, which say how the colours differ from each other.
Field channelOf(const SliceImage& slice, int channel)
{
  Field field(slice.width, slice.height);
  const unsigned char* p = slice.samples;
  if (slice.channels == 1) {
    field.values.assign(p, p + field.values.size());
    return field;
  }
  constexpr float weights[3][3] = {
      {0.577f, 0.577f, 0.577f}, {0.816f, -0.408f, -0.408f}, {0.0f, -0.707f, 0.707f}};
  const float* weight = weights[channel];
  for (float& v : field.values) {
    v = weight[0] * static_cast<float>(p[0]) + weight[1] * static_cast<float>(p[1]) +
        weight[2] * static_cast<float>(p[2]);
    p += slice.channels;
  }
  return field;
}

struct Moments {
  double mean = 0.0;
  double deviation = 0.0;
};

/// Mean and standard deviation where the weight is not 0.
Moments momentsOf(const Field& field, const Field& weight)
{
  double sum = 0.0, squares = 0.0, count = 0.0;
  for (std::size_t i = 0; i < field.values.size(); ++i) {
    if (weight.values[i] == 0.0f) continue;
    const auto v = static_cast<double>(field.values[i]);
    sum += v;
    squares += v * v;
    count += 1.0;
  }
  if (count == 0.0) return {};
  const double mean = sum / count;
  return {mean, std::sqrt(std::max(0.0, squares / count - mean * mean))};
}

/// (v - mean) / deviation where valid, 0 elsewhere.
void standardise(Field& field, const Field& valid, const Moments& moments)
{
  const auto mean = static_cast<float>(moments.mean);
  const auto scale = static_cast<float>(1.0 / moments.deviation);
  for (std::size_t i = 0; i < field.values.size(); ++i)
    field.values[i] = valid.values[i] == 0.0f ? 0.0f : (field.values[i] - mean) * scale;
}

/// 1 where a field is 1 on all pixels around, else 0.
Field eroded(const Field& field)
{
  Field result = softened(field);
  for (float& v : result.values) v = v > 0.9999f ? 1.0f : 0.0f;
  return result;
}

/// 1 within a distance of where a field is not 0.
Field widened(const Field& field, int radius)
{
  Field result = blurred(field, radius);
  for (float& v : result.values) v = v > 0.05f ? 1.0f : 0.0f;
  return result;
}

Field product(const Field& a, const Field& b)
{
  Field result = a;
  for (std::size_t i = 0; i < result.values.size(); ++i) result.values[i] *= b.values[i];
  return result;
}

/// The plain values with their local means and the contrast of all channels together taken out, so that the
/// channels keep their proportions.
std::vector<Field> flattened(const std::vector<Field>& plain, const Field& valid, int reach)
{
  const Field weight = blurred(valid, reach);
  std::vector<Field> flat = plain;
  Field variance(valid.width, valid.height);
  for (Field& channel : flat) {
    const Field sums = blurred(product(channel, valid), reach);
    const Field squares = blurred(product(product(channel, channel), valid), reach);
    for (std::size_t i = 0; i < channel.values.size(); ++i) {
      const float w = std::max(weight.values[i], 1e-3f), mean = sums.values[i] / w;
      variance.values[i] += std::max(0.0f, squares.values[i] / w - mean * mean);
      channel.values[i] = (channel.values[i] - mean) * valid.values[i];
    }
  }
  for (float& v : variance.values) v = 1.0f / std::sqrt(v + kLeastContrast * kLeastContrast);
  for (Field& channel : flat) channel = product(channel, variance);
  return flat;
}

/// What is carried from one level to the next.
struct Raw {
  std::vector<Field> channels;
  Field valid, relevant;
};

Raw halved(const Raw& raw)
{
  Raw half;
  for (const Field& channel : raw.channels) half.channels.push_back(halved(channel));
  half.valid = halved(raw.valid);
  half.relevant = halved(raw.relevant);
  return half;
}

Level levelOf(const Raw& raw, Point centre, double pixel)
{
  Level level{raw.valid.width, raw.valid.height, centre, pixel, {}, {}, eroded(eroded(raw.valid)), {}};
  const int side = std::max(level.width, level.height);
  level.relevant = widened(raw.relevant, std::max(1, side / 50));
  const Field counted = product(level.valid, level.relevant);
  const int reach = std::max(3, mc::truncToInt(kFlatReach * side));
  double largest = 1e-3; // a channel without content stays 0 everywhere
  for (const Field& channel : raw.channels) {
    level.plain.push_back(softened(channel));
    largest = std::max(largest, momentsOf(level.plain.back(), counted).deviation);
  }
  for (Field& plain : level.plain) standardise(plain, level.valid, {momentsOf(plain, counted).mean, largest});
  if (side <= Pyramid::kFlatSide) level.flat = flattened(level.plain, level.valid, reach);
  return level;
}

Raw rawOf(const SliceImage& slice)
{
  Content content = contentOf(slice);
  Raw raw;
  for (int c = 0; c < (slice.channels == 1 ? 1 : 3); ++c) raw.channels.push_back(channelOf(slice, c));
  // Padding takes the mean of the slice, so that it leaves no edge behind when it is smoothed.
  for (Field& channel : raw.channels) {
    const auto mean = static_cast<float>(momentsOf(channel, content.valid).mean);
    for (std::size_t i = 0; i < channel.values.size(); ++i)
      if (content.valid.values[i] == 0.0f) channel.values[i] = mean;
  }
  raw.valid = std::move(content.valid);
  raw.relevant = std::move(content.relevant);
  return raw;
}

bool showsSomething(const Level& level)
{
  return std::any_of(level.plain.begin(), level.plain.end(), [](const Field& channel) {
    return std::any_of(channel.values.begin(), channel.values.end(), [](float v) { return v != 0.0f; });
  });
}

/// The levels from the finest on, whose pixels have a size in pixels of the slice; none when there is nothing
/// to see.
std::vector<Level> levelsOf(Raw raw, Point centre, double pixel)
{
  std::vector<Level> levels;
  for (;;) {
    levels.push_back(levelOf(raw, centre, pixel));
    if (!showsSomething(levels.back())) return {};
    if (std::max(raw.valid.width, raw.valid.height) <= Pyramid::kCoarsestSide ||
        std::min(raw.valid.width, raw.valid.height) < 2 * kLeastSide)
      return levels;
    raw = halved(raw);
    centre = {(centre.x - 0.5) / 2.0, (centre.y - 0.5) / 2.0};
    pixel *= 2.0;
  }
}

} // namespace

Pyramid::Pyramid(const SliceImage& slice) : m_width(slice.width), m_height(slice.height)
{
  if (std::min(slice.width, slice.height) < kLeastSide) return;
  const ReducedSlice reduced(slice, kFinestSide);
  const double factor = reduced.factor(), rim = (factor - 1.0) / 2.0;
  const Point centre{(slice.width / 2 - rim) / factor, (slice.height / 2 - rim) / factor};
  m_levels = levelsOf(rawOf(reduced.image()), centre, factor);
}

} // namespace robust
