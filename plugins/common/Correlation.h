#pragma once

#include <complex>
#include <memory>
#include <span>
#include <vector>

namespace spectral {

/// A periodic real field of rows x columns, row-major.
struct Field {
  int rows = 0;
  int columns = 0;
  std::vector<float> values;
};

using Spectrum = std::vector<std::complex<float>>;

/// The Fourier transform of complex fields of one size, not normalised, in the order of the field: frequency
/// 0 first. For one thread at a time.
class Fourier {
public:
  Fourier(int rows, int columns);
  void forward(const Spectrum& in, Spectrum& out) const;
  void backward(const Spectrum& in, Spectrum& out) const;

private:
  using Plan = std::unique_ptr<void, void (*)(void*)>;
  static Plan planOf(int rows, int columns, bool backward);
  static void transform(const Plan& plan, const Spectrum& in, Spectrum& out);

  Plan m_forward, m_backward;
};

/// The smallest side of at least n that transforms fast: even, without large prime factors.
int fastSide(int n);

/// The Fourier transform of a field, not normalised, in the order of the field: frequency 0 first.
Spectrum spectrumOf(const Field& field);

/// The transform of a Gaussian of a width in samples along one axis of n samples.
std::vector<float> gaussianTransfer(int n, double width);

/// The phase correlation of two fields from their spectra: 1 at the displacement of a against b where one is
/// the other displaced, spread to a Gaussian of the given width in samples, near 0 elsewhere. Of frequencies
/// that neither field has nothing is taken.
Field phaseCorrelation(std::span<const std::complex<float>> a, std::span<const std::complex<float>> b,
                       int rows, int columns, double width);

/// A place in a periodic field. x counts columns and y rows, between -half and half of the size.
struct Peak {
  double x = 0.0;
  double y = 0.0;
  double significance = 0.0; ///< height in standard deviations of the field
};

/// The highest sample within |x| <= rangeX and |y| <= rangeY, the first of equal ones, and between its
/// neighbours the top of the Gaussian through them. No peak, significance 0, where no sample is positive.
Peak highestPeak(const Field& field, int rangeX, int rangeY);

/// The top of a Gaussian through three samples.
struct Top {
  double offset = 0.0; ///< from the middle sample, -0.5 to 0.5
  double gain = 1.0;   ///< how much higher than the middle sample
};

/// The middle sample itself where they are not positive or do not have a top.
Top topBetween(double before, double middle, double after);

} // namespace spectral
