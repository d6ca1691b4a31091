#include "Correlation.h"

#include "mc/McMath.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <numeric>

#include <kiss_fftnd.h>

namespace spectral {
namespace {

static_assert(sizeof(kiss_fft_cpx) == sizeof(std::complex<float>));

double standardDeviation(const std::vector<float>& values)
{
  double sum = 0.0, squares = 0.0;
  for (const float v : values) {
    sum += static_cast<double>(v);
    squares += static_cast<double>(v) * static_cast<double>(v);
  }
  const auto n = static_cast<double>(values.size());
  return std::sqrt(std::max(0.0, squares / n - sum / n * (sum / n)));
}

} // namespace

Fourier::Fourier(int rows, int columns)
  : m_forward(planOf(rows, columns, false)), m_backward(planOf(rows, columns, true))
{
}

Fourier::Plan Fourier::planOf(int rows, int columns, bool backward)
{
  const int dims[] = {rows, columns};
  return {kiss_fftnd_alloc(dims, 2, backward ? 1 : 0, nullptr, nullptr), std::free};
}

void Fourier::transform(const Plan& plan, const Spectrum& in, Spectrum& out)
{
  out.resize(in.size());
  kiss_fftnd(static_cast<kiss_fftnd_cfg>(plan.get()), reinterpret_cast<const kiss_fft_cpx*>(in.data()),
             reinterpret_cast<kiss_fft_cpx*>(out.data()));
}

void Fourier::forward(const Spectrum& in, Spectrum& out) const { transform(m_forward, in, out); }
void Fourier::backward(const Spectrum& in, Spectrum& out) const { transform(m_backward, in, out); }

int fastSide(int n) { return 2 * kiss_fft_next_fast_size((n + 1) / 2); }

Spectrum spectrumOf(const Field& field)
{
  const Spectrum in(field.values.begin(), field.values.end());
  Spectrum out;
  Fourier(field.rows, field.columns).forward(in, out);
  return out;
}

std::vector<float> gaussianTransfer(int n, double width)
{
  std::vector<float> transfer(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) {
    const double frequency = 2.0 * mc::kPi * std::min(i, n - i) / n;
    transfer[static_cast<std::size_t>(i)] =
        static_cast<float>(mc::exp(-0.5 * frequency * frequency * width * width));
  }
  return transfer;
}

Field phaseCorrelation(std::span<const std::complex<float>> a, std::span<const std::complex<float>> b,
                       int rows, int columns, double width)
{
  const std::vector<float> gaussY = gaussianTransfer(rows, width);
  const std::vector<float> gaussX = gaussianTransfer(columns, width);
  Spectrum cross(a.size());
  float largest = 0.0f;
  for (std::size_t i = 0; i < a.size(); ++i) {
    cross[i] = a[i] * std::conj(b[i]);
    largest = std::max(largest, std::abs(cross[i]));
  }
  const float floor = std::max(largest * 1e-9f, 1e-30f);
  for (int y = 0; y < rows; ++y)
    for (int x = 0; x < columns; ++x) {
      std::complex<float>& c = cross[static_cast<std::size_t>(y) * static_cast<std::size_t>(columns) +
                                     static_cast<std::size_t>(x)];
      c *= gaussY[static_cast<std::size_t>(y)] * gaussX[static_cast<std::size_t>(x)] / (std::abs(c) + floor);
    }
  Spectrum surface;
  Fourier(rows, columns).backward(cross, surface);
  // A perfect match has the height 1 whatever the width.
  const float scale = 1.0f / (std::accumulate(gaussY.begin(), gaussY.end(), 0.0f) *
                              std::accumulate(gaussX.begin(), gaussX.end(), 0.0f));
  Field field{rows, columns, std::vector<float>(surface.size())};
  std::transform(surface.begin(), surface.end(), field.values.begin(),
                 [scale](std::complex<float> v) { return v.real() * scale; });
  return field;
}

Top topBetween(double before, double middle, double after)
{
  if (!(before > 0.0 && middle > 0.0 && after > 0.0)) return {};
  const double left = mc::log(before / middle), right = mc::log(after / middle);
  const double bend = left + right;
  if (!(bend < 0.0)) return {};
  const double offset = std::clamp(0.5 * (left - right) / bend, -0.5, 0.5);
  return {offset, mc::exp(0.25 * (right - left) * offset)};
}

Peak highestPeak(const Field& field, int rangeX, int rangeY)
{
  const auto at = [&field](int x, int y) {
    const int column = (x % field.columns + field.columns) % field.columns;
    const int row = (y % field.rows + field.rows) % field.rows;
    return static_cast<double>(
        field.values[static_cast<std::size_t>(row) * static_cast<std::size_t>(field.columns) +
                     static_cast<std::size_t>(column)]);
  };
  int bestX = 0, bestY = 0;
  for (int y = -rangeY; y <= rangeY; ++y)
    for (int x = -rangeX; x <= rangeX; ++x)
      if (at(x, y) > at(bestX, bestY)) {
        bestX = x;
        bestY = y;
      }
  Peak peak;
  const double height = at(bestX, bestY);
  const Top topX = topBetween(at(bestX - 1, bestY), height, at(bestX + 1, bestY));
  const Top topY = topBetween(at(bestX, bestY - 1), height, at(bestX, bestY + 1));
  peak.x = bestX + topX.offset;
  peak.y = bestY + topY.offset;
  const double deviation = standardDeviation(field.values);
  // The highest of a few samples can be a quarter lower than the top between them.
  if (height > 0.0 && deviation > 0.0) peak.significance = height * topX.gain * topY.gain / deviation;
  return peak;
}

} // namespace spectral
