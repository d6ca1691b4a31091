#include "Comparison.h"

#include "Parallel.h"
#include "mc/McMath.h"
#include "mc/McRound.h"

#include <algorithm>
#include <cmath>

namespace robust {
namespace {

constexpr int kBand = 32;
// A residual of this many standard deviations counts a quarter of one of 0.
constexpr double kOutlying = 16.0;
// How much stiffer than the images alone say a slice is against growing: three parts to one, so that a
// quarter of what they say goes into the growth.
constexpr double kStiffness = 3.0;

// The unknowns of a step, in this order; gain and offset are those of a channel.
constexpr std::size_t kTurn = 0, kShiftX = 1, kShiftY = 2, kGrowth = 3, kGain = 4, kOffset = 5, kUnknowns = 6;
// Where the parts of the sums of a channel begin, behind the upper triangle of the products of the unknowns.
constexpr std::size_t kResiduals = kUnknowns * (kUnknowns + 1) / 2, kSumX = kResiduals + kUnknowns,
                      kSumY = kSumX + 1;

double weightOf(const Level& level)
{
  double sum = 0.0;
  for (std::size_t i = 0; i < level.valid.values.size(); ++i)
    sum += static_cast<double>(level.valid.values[i] * level.relevant.values[i]);
  return sum;
}

/// The sum of arrays, one a band, in the order of the bands.
template <class Array>
Array total(const std::vector<Array>& parts)
{
  Array sum{};
  for (const Array& part : parts)
    for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += part[i];
  return sum;
}

} // namespace

Comparison::Comparison(const Level& reference, const Level& moved, Values values)
  : m_reference(reference), m_moved(moved),
    m_referenceValues(values == Values::Flat ? reference.flat : reference.plain),
    m_movedValues(values == Values::Flat ? moved.flat : moved.plain),
    m_sampled(m_referenceValues.size(), Field(reference.width, reference.height)),
    m_weight(reference.width, reference.height), m_window{0, 0, reference.width, reference.height},
    m_fullWeight(std::max(1.0, std::min(weightOf(reference), weightOf(moved))))
{
}

std::size_t Comparison::bands() const
{
  return static_cast<std::size_t>((m_reference.height + kBand - 1) / kBand);
}

void Comparison::moveTo(const RigidMotion& motion)
{
  forBands(m_reference.height, kBand, [&](std::size_t, int begin, int end) {
    for (int y = begin; y < end; ++y) sampleRow(motion, y);
  });
}

void Comparison::sampleRow(const RigidMotion& motion, int y)
{
  const double pixel = m_reference.pixel;
  const auto place = [&](double x) {
    const Point p =
        motion.mapInverse({(x - m_reference.centre.x) * pixel, (y - m_reference.centre.y) * pixel});
    return Point{p.x / pixel + m_moved.centre.x, p.y / pixel + m_moved.centre.y};
  };
  const Point start = place(0.0), next = place(1.0);
  const double stepX = next.x - start.x, stepY = next.y - start.y;
  const int w = m_moved.width, h = m_moved.height;
  float* weight = m_weight.row(y);
  const float *valid = m_reference.valid.row(y), *relevant = m_reference.relevant.row(y);
  for (int x = 0; x < m_reference.width; ++x) {
    weight[x] = 0.0f;
    for (Field& channel : m_sampled) channel.row(y)[x] = 0.0f;
    if (y < m_window.top || y >= m_window.bottom || x < m_window.left || x >= m_window.right) continue;
    const double px = start.x + x * stepX, py = start.y + x * stepY;
    if (!(valid[x] > 0.0f && px >= 0.0 && py >= 0.0 && px < w - 1 && py < h - 1)) continue;
    const int column = mc::truncToIndex(px), row = mc::truncToIndex(py);
    const auto fx = static_cast<float>(px - column), fy = static_cast<float>(py - row);
    const std::size_t at =
        static_cast<std::size_t>(row) * static_cast<std::size_t>(w) + static_cast<std::size_t>(column);
    const auto between = [&](const Field& field) {
      const float* p = field.values.data() + at;
      const float* q = p + w;
      const float upper = p[0] + (p[1] - p[0]) * fx, lower = q[0] + (q[1] - q[0]) * fx;
      return upper + (lower - upper) * fy;
    };
    if (between(m_moved.valid) < 0.999f) continue;
    weight[x] = std::max(relevant[x], between(m_moved.relevant));
    for (std::size_t c = 0; c < m_sampled.size(); ++c) m_sampled[c].row(y)[x] = between(m_movedValues[c]);
  }
}

Comparison::Sums Comparison::sumsOf(std::size_t channel) const
{
  std::vector<Sums> parts(bands());
  forBands(m_reference.height, kBand, [&](std::size_t band, int begin, int end) {
    Sums sums{};
    for (int y = begin; y < end; ++y) {
      const float *r = m_referenceValues[channel].row(y), *m = m_sampled[channel].row(y),
                  *w = m_weight.row(y);
      for (int x = 0; x < m_reference.width; ++x) {
        if (w[x] == 0.0f) continue;
        const double weight = static_cast<double>(w[x]), a = static_cast<double>(r[x]),
                     b = static_cast<double>(m[x]);
        const std::array<double, 6> terms{weight,         weight * a,     weight * b,
                                          weight * a * a, weight * b * b, weight * a * b};
        for (std::size_t i = 0; i < terms.size(); ++i) sums[i] += terms[i];
      }
    }
    parts[band] = sums;
  });
  return total(parts);
}

namespace {

struct Covariance {
  double rr = 0.0, mm = 0.0, rm = 0.0;
};

Covariance covarianceOf(const std::array<double, 6>& s)
{
  if (!(s[0] > 0.0)) return {};
  return {s[3] / s[0] - s[1] / s[0] * (s[1] / s[0]), s[4] / s[0] - s[2] / s[0] * (s[2] / s[0]),
          s[5] / s[0] - s[1] / s[0] * (s[2] / s[0])};
}

constexpr double kLeastVariance = 1e-4;

} // namespace

Match Comparison::match() const
{
  Match match;
  Covariance all;
  for (std::size_t c = 0; c < m_sampled.size(); ++c) {
    const Sums sums = sumsOf(c);
    const Covariance v = covarianceOf(sums);
    match.overlap = sums[0] / m_fullWeight;
    all.rr += v.rr;
    all.mm += v.mm;
    all.rm += v.rm;
  }
  if (all.rr > kLeastVariance && all.mm > kLeastVariance)
    match.correlation = all.rm / std::sqrt(all.rr * all.mm);
  return match;
}

double Comparison::weightIn(const Window& window) const
{
  double sum = 0.0;
  for (int y = window.top; y < window.bottom; ++y)
    for (int x = window.left; x < window.right; ++x) sum += static_cast<double>(m_weight.row(y)[x]);
  return sum;
}

Comparison::Spread Comparison::spread() const
{
  double weight = 0.0, alongX = 0.0, alongY = 0.0;
  for (int y = 0; y < height(); ++y)
    for (int x = 0; x < width(); ++x) {
      const auto w = static_cast<double>(m_weight.row(y)[x]);
      weight += w;
      alongX += w * x;
      alongY += w * y;
    }
  if (!(weight > 0.0)) return {0.0, width() / 2, height() / 2};
  return {weight, mc::truncToInt(alongX / weight + 0.5), mc::truncToInt(alongY / weight + 0.5)};
}

Comparison::Gain Comparison::gainOf(const Sums& sums) const
{
  const Covariance v = covarianceOf(sums);
  Gain gain;
  if (!(v.rr > kLeastVariance && v.mm > kLeastVariance)) return gain;
  gain.counts = true;
  gain.gain = std::max(0.05 * std::sqrt(v.rr / v.mm), v.rm / v.mm);
  gain.offset = sums[1] / sums[0] - gain.gain * sums[2] / sums[0];
  const double rest = std::max(1e-6, v.rr - 2.0 * gain.gain * v.rm + gain.gain * gain.gain * v.mm);
  gain.spread = std::sqrt(rest);
  gain.certainty = v.rm > 0.0 ? v.rm * v.rm / (v.rr * v.mm * rest) : 0.0;
  return gain;
}

void Comparison::addRow(std::size_t channel, const Gain& gain, int y, Normal& n) const
{
  const Field &reference = m_referenceValues[channel], &sampled = m_sampled[channel];
  const float *r0 = reference.row(y - 1), *r1 = reference.row(y), *r2 = reference.row(y + 1);
  const float *m0 = sampled.row(y - 1), *m1 = sampled.row(y), *m2 = sampled.row(y + 1);
  const float *w0 = m_weight.row(y - 1), *w1 = m_weight.row(y), *w2 = m_weight.row(y + 1);
  const auto g = static_cast<float>(gain.gain), o = static_cast<float>(gain.offset);
  const float s = static_cast<float>(1.0 / (kOutlying * gain.spread));
  const auto cx = static_cast<float>(m_reference.centre.x);
  const float uy = static_cast<float>(y - m_reference.centre.y);
  const float unit = 2.0f / static_cast<float>(std::max(m_reference.width, m_reference.height));
  for (int x = 1; x + 1 < m_reference.width; ++x) {
    if (w1[x] == 0.0f || w1[x - 1] == 0.0f || w1[x + 1] == 0.0f || w0[x] == 0.0f || w2[x] == 0.0f) continue;
    const float residual = r1[x] - g * m1[x] - o;
    const float outlying = residual * s;
    const float damped = 1.0f / (1.0f + outlying * outlying);
    const float w = w1[x] * damped * damped;
    const float gx = 0.25f * ((r1[x + 1] - r1[x - 1]) + g * (m1[x + 1] - m1[x - 1]));
    const float gy = 0.25f * ((r2[x] - r0[x]) + g * (m2[x] - m0[x]));
    const float ux = static_cast<float>(x) - cx;
    const float turn = (gx * uy - gy * ux) * unit, growth = (gx * ux + gy * uy) * unit;
    const std::array<double, kUnknowns> j{static_cast<double>(turn),  static_cast<double>(gx),
                                          static_cast<double>(gy),    static_cast<double>(growth),
                                          static_cast<double>(m1[x]), 1.0};
    std::size_t i = 0;
    for (std::size_t a = 0; a < kUnknowns; ++a) {
      const double wj = static_cast<double>(w) * j[a];
      for (std::size_t b = a; b < kUnknowns; ++b) n[i++] += wj * j[b];
      n[kResiduals + a] += wj * static_cast<double>(residual);
    }
    n[kSumX] += static_cast<double>(w * ux * unit);
    n[kSumY] += static_cast<double>(w * uy * unit);
  }
}

namespace {

/// A symmetric system of equations.
struct System {
  double m[kUnknowns][kUnknowns] = {};
  double v[kUnknowns] = {};
};

System systemOf(const std::array<double, 29>& n)
{
  System s;
  std::size_t i = 0;
  for (std::size_t a = 0; a < kUnknowns; ++a) {
    for (std::size_t b = a; b < kUnknowns; ++b) s.m[a][b] = s.m[b][a] = n[i++];
    s.v[a] = n[kResiduals + a];
  }
  return s;
}

/// Puts the centre of the growth, which is that of the slice, to the place (x, y) away from it, in the unit
/// of the growth: an unknown that moves everything by as much back goes with it.
void growAbout(System& s, double x, double y)
{
  for (std::size_t b = 0; b < kUnknowns; ++b) s.m[kGrowth][b] -= x * s.m[kShiftX][b] + y * s.m[kShiftY][b];
  for (std::size_t a = 0; a < kUnknowns; ++a) s.m[a][kGrowth] -= x * s.m[a][kShiftX] + y * s.m[a][kShiftY];
  s.v[kGrowth] -= x * s.v[kShiftX] + y * s.v[kShiftY];
}

/// Eliminates the unknowns last ... first from a system, so that those before them can be solved alone.
void eliminate(System& s, std::size_t last, std::size_t first)
{
  for (std::size_t k = last + 1; k-- > first;) {
    if (!(s.m[k][k] > 1e-9)) continue;
    for (std::size_t a = 0; a < k; ++a) {
      const double f = s.m[a][k] / s.m[k][k];
      for (std::size_t b = 0; b < k; ++b) s.m[a][b] -= f * s.m[k][b];
      s.v[a] -= f * s.v[k];
    }
  }
}

/// Turn and shift from a system that has no other unknowns.
std::array<double, 3> solved(System s)
{
  eliminate(s, kShiftY, kShiftX);
  std::array<double, 3> x{};
  for (std::size_t k = 0; k < 3; ++k) {
    double rest = s.v[k];
    for (std::size_t b = 0; b < k; ++b) rest -= s.m[k][b] * x[b];
    x[k] = s.m[k][k] > 1e-9 ? rest / s.m[k][k] : 0.0;
  }
  return x;
}

} // namespace

RigidMotion Comparison::step(bool turns) const
{
  System whole;
  for (std::size_t c = 0; c < m_sampled.size(); ++c) {
    const Gain gain = gainOf(sumsOf(c));
    if (!gain.counts) continue;
    std::vector<Normal> parts(bands());
    forBands(m_reference.height, kBand, [&](std::size_t band, int begin, int end) {
      Normal normal{};
      for (int y = std::max(1, begin); y < std::min(end, m_reference.height - 1); ++y)
        addRow(c, gain, y, normal);
      parts[band] = normal;
    });
    const Normal normal = total(parts);
    System s = systemOf(normal);
    const double weight = s.m[kOffset][kOffset];
    if (weight > 0.0) growAbout(s, normal[kSumX] / weight, normal[kSumY] / weight);
    eliminate(s, kOffset, kGain);
    for (std::size_t a = 0; a < kGain; ++a) {
      whole.v[a] += gain.certainty * s.v[a];
      for (std::size_t b = 0; b < kGain; ++b) whole.m[a][b] += gain.certainty * s.m[a][b];
    }
  }
  whole.m[kGrowth][kGrowth] *= 1.0 + kStiffness;
  eliminate(whole, kGrowth, kGrowth);
  if (!turns)
    for (std::size_t a = 0; a < kUnknowns; ++a) whole.m[kTurn][a] = whole.m[a][kTurn] = whole.v[kTurn] = 0.0;
  // The residual falls where the moved slice follows its own gradient backwards.
  const std::array<double, 3> x = solved(whole);
  const double unit = 2.0 / std::max(m_reference.width, m_reference.height);
  RigidMotion motion;
  motion.degrees = -x[0] * unit * 180.0 / mc::kPi;
  motion.shift = {-x[1] * m_reference.pixel, -x[2] * m_reference.pixel};
  return motion;
}

} // namespace robust
