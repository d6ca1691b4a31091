#include "Field.h"

#include "Parallel.h"

#include <algorithm>
#include <array>
#include <span>

namespace robust {
namespace {

constexpr int kBand = 64;

/// One row weighed with its neighbours by a symmetric kernel, whose middle comes first.
void weighRow(const float* in, float* out, int n, std::span<const float> kernel)
{
  const int reach = static_cast<int>(kernel.size()) - 1;
  const auto clamped = [&](int x) {
    float sum = kernel[0] * in[x];
    for (int i = 1; i <= reach; ++i)
      sum += kernel[static_cast<std::size_t>(i)] * (in[std::max(0, x - i)] + in[std::min(n - 1, x + i)]);
    return sum;
  };
  const int inner = std::max(reach, n - reach);
  for (int x = 0; x < std::min(reach, n); ++x) out[x] = clamped(x);
  for (int x = reach; x < n - reach; ++x) {
    float sum = kernel[0] * in[x];
    for (int i = 1; i <= reach; ++i) sum += kernel[static_cast<std::size_t>(i)] * (in[x - i] + in[x + i]);
    out[x] = sum;
  }
  for (int x = inner; x < n; ++x) out[x] = clamped(x);
}

Field weighed(const Field& field, std::span<const float> kernel)
{
  Field along(field.width, field.height), out(field.width, field.height);
  const int reach = static_cast<int>(kernel.size()) - 1;
  forBands(field.height, kBand, [&](std::size_t, int begin, int end) {
    for (int y = begin; y < end; ++y) weighRow(field.row(y), along.row(y), field.width, kernel);
  });
  forBands(field.height, kBand, [&](std::size_t, int begin, int end) {
    for (int y = begin; y < end; ++y) {
      float* to = out.row(y);
      const float* middle = along.row(y);
      for (int x = 0; x < field.width; ++x) to[x] = kernel[0] * middle[x];
      for (int i = 1; i <= reach; ++i) {
        const float* above = along.row(std::max(0, y - i));
        const float* below = along.row(std::min(field.height - 1, y + i));
        for (int x = 0; x < field.width; ++x)
          to[x] += kernel[static_cast<std::size_t>(i)] * (above[x] + below[x]);
      }
    }
  });
  return out;
}

/// Running mean of one row over 2 radius + 1 samples. The sum is kept in double, so that it does not drift.
void averageRow(const float* in, float* out, int n, int radius)
{
  double sum = 0.0;
  for (int x = 0; x < std::min(radius, n); ++x) sum += static_cast<double>(in[x]);
  for (int x = 0; x < n; ++x) {
    if (x + radius < n) sum += static_cast<double>(in[x + radius]);
    if (x - radius > 0) sum -= static_cast<double>(in[x - radius - 1]);
    const int count = std::min(n - 1, x + radius) - std::max(0, x - radius) + 1;
    out[x] = static_cast<float>(sum / count);
  }
}

/// Running mean along the columns begin ... end - 1.
void averageColumns(const Field& in, Field& out, int radius, int begin, int end)
{
  std::vector<double> sums(static_cast<std::size_t>(end - begin), 0.0);
  const auto add = [&](int y, double sign) {
    const float* row = in.row(y);
    for (int x = begin; x < end; ++x)
      sums[static_cast<std::size_t>(x - begin)] += sign * static_cast<double>(row[x]);
  };
  const int n = in.height;
  for (int y = 0; y < std::min(radius, n); ++y) add(y, 1.0);
  for (int y = 0; y < n; ++y) {
    if (y + radius < n) add(y + radius, 1.0);
    if (y - radius > 0) add(y - radius - 1, -1.0);
    const int count = std::min(n - 1, y + radius) - std::max(0, y - radius) + 1;
    float* to = out.row(y);
    for (int x = begin; x < end; ++x)
      to[x] = static_cast<float>(sums[static_cast<std::size_t>(x - begin)] / count);
  }
}

} // namespace

Field halved(const Field& field)
{
  Field half(field.width / 2, field.height / 2);
  forBands(half.height, kBand, [&](std::size_t, int begin, int end) {
    for (int y = begin; y < end; ++y) {
      const float *a = field.row(2 * y), *b = field.row(2 * y + 1);
      float* out = half.row(y);
      for (int x = 0; x < half.width; ++x)
        out[x] = 0.25f * ((a[2 * x] + a[2 * x + 1]) + (b[2 * x] + b[2 * x + 1]));
    }
  });
  return half;
}

Field blurred(const Field& field, int radius)
{
  Field result = field, along(field.width, field.height);
  for (int pass = 0; pass < 2; ++pass) {
    forBands(field.height, kBand, [&](std::size_t, int begin, int end) {
      for (int y = begin; y < end; ++y) averageRow(result.row(y), along.row(y), field.width, radius);
    });
    forBands(field.width, 2 * kBand,
             [&](std::size_t, int begin, int end) { averageColumns(along, result, radius, begin, end); });
  }
  return result;
}

Field smoothed(const Field& field)
{
  constexpr std::array kernel{6.0f / 16.0f, 4.0f / 16.0f, 1.0f / 16.0f};
  return weighed(field, kernel);
}

Field softened(const Field& field)
{
  constexpr std::array kernel{0.5f, 0.25f};
  return weighed(field, kernel);
}

} // namespace robust
