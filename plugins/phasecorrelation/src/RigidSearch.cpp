#include "RigidSearch.h"

#include "Correlation.h"
#include "PolarSpectrum.h"
#include "mc/McMath.h"
#include "mc/McRound.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace phasecorrelation {

using namespace spectral;

namespace {

// Longest side in pixels of the pictures that candidates are compared on, angles are found on, and the
// displacement is read from in the end.
constexpr int kCandidateSide = 256;
constexpr int kAngleSide = 512;
constexpr int kFinalSide = 1024;

// The polar spectrum: half a turn and, on a logarithmic scale, the radii between two shares of the highest
// frequency. Lower ones hold the window and the illumination, higher ones noise and interpolation.
constexpr PolarGrid kPolarGrid{720, 192, 0.04, 0.8};

constexpr int kCandidates = 6;
// Width in samples of the peaks: wide enough to be fitted, and to be met by a neighbouring angle.
constexpr double kPeakWidth = 1.0;
// Pictures that have nothing in common reach 11, a picture against itself moved starts at 50.
constexpr double kLeastSignificance = 12.0;

double meanOf(const std::vector<float>& values)
{
  double sum = 0.0;
  for (const float v : values) sum += static_cast<double>(v);
  return values.empty() ? 0.0 : sum / static_cast<double>(values.size());
}

/// A weight by position that is 1 in the middle half of an axis and falls to 0 towards both ends: what two
/// pictures share after a large displacement lies near their borders and has to count.
std::vector<float> windowOf(int n)
{
  std::vector<float> window(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) {
    const double fromEnd = std::min(1.0, 4.0 * (std::min(i, n - 1 - i) + 0.5) / n); // 1 in the middle
    window[static_cast<std::size_t>(i)] = static_cast<float>(0.5 - 0.5 * mc::cos(mc::kPi * fromEnd));
  }
  return window;
}

/// The picture without its mean and faded out towards its borders.
Picture faded(const Picture& picture)
{
  Picture f = picture;
  const auto mean = static_cast<float>(meanOf(picture.values));
  const std::vector<float> windowX = windowOf(f.width), windowY = windowOf(f.height);
  for (std::size_t y = 0; y < windowY.size(); ++y)
    for (std::size_t x = 0; x < windowX.size(); ++x) {
      float& v = f.values[y * windowX.size() + x];
      v = (v - mean) * windowX[x] * windowY[y];
    }
  return f;
}

/// Between the four pixels around a position; 0 outside.
float sample(const Picture& picture, double x, double y)
{
  const int column = mc::floorToInt(x), row = mc::floorToInt(y);
  if (column < 0 || row < 0 || column + 1 >= picture.width || row + 1 >= picture.height) return 0.0f;
  const float fx = static_cast<float>(x - column), fy = static_cast<float>(y - row);
  const float* p = picture.values.data() + static_cast<std::ptrdiff_t>(row) * picture.width + column;
  const float* q = p + picture.width;
  return (p[0] + (p[1] - p[0]) * fx) * (1.0f - fy) + (q[0] + (q[1] - q[0]) * fx) * fy;
}

/// The picture, turned, in a square with its centre in the middle.
Field turned(const Picture& picture, double degrees, int side)
{
  double sine = 0.0, cosine = 1.0;
  mc::sinCosDegrees(degrees, sine, cosine);
  Field field{side, side,
              std::vector<float>(static_cast<std::size_t>(side) * static_cast<std::size_t>(side))};
  float* out = field.values.data();
  for (int row = 0; row < side; ++row)
    for (int column = 0; column < side; ++column) {
      const double x = column - side / 2, y = row - side / 2;
      *out++ =
          sample(picture, picture.centreX + x * cosine - y * sine, picture.centreY + x * sine + y * cosine);
    }
  return field;
}

/// A pair of pictures of one reduction, ready to be compared at any angle.
class Comparison {
public:
  Comparison(const Picture& reference, const Picture& moved, int maxSide)
    : m_reference(faded(reduced(reference, maxSide))), m_moved(faded(reduced(moved, maxSide))),
      m_side(fastSide(std::max(m_reference.width, m_reference.height))),
      m_referenceSpectrum(spectrumOf(turned(m_reference, 0.0, m_side)))
  {
  }

  /// Side in pixels of the square that is transformed.
  int side() const noexcept { return m_side; }

  /// The displacement that fits best when the moved picture is turned by an angle.
  RigidMotion at(double degrees) const
  {
    const Spectrum movedSpectrum = spectrumOf(turned(m_moved, degrees, m_side));
    const Field surface = phaseCorrelation(m_referenceSpectrum, movedSpectrum, m_side, m_side, kPeakWidth);
    const Peak peak = highestPeak(surface, m_reference.width / 2, m_reference.height / 2);
    const double pixel = m_reference.pixelSize;
    return {degrees, peak.x * pixel, peak.y * pixel, peak.significance};
  }

  /// Angles at which the polar spectra match, best first, known up to half a turn.
  std::vector<double> candidateAngles() const;

private:
  Picture m_reference, m_moved;
  int m_side;
  Spectrum m_referenceSpectrum;
};

std::vector<double> Comparison::candidateAngles() const
{
  const Field reference = polarSpectrum(m_referenceSpectrum, m_side, kPolarGrid);
  const Field moved = polarSpectrum(spectrumOf(turned(m_moved, 0.0, m_side)), m_side, kPolarGrid);
  const Field surface = phaseCorrelation(spectrumOf(reference), spectrumOf(moved), kPolarGrid.radii,
                                         kPolarGrid.angles, kPeakWidth);
  // Nothing is scaled: the matches are in the row of displacement 0 along the radii.
  std::vector<double> angles;
  for (const double place : highestOfRow(surface.values.data(), kPolarGrid.angles, kCandidates))
    angles.push_back(-place * 180.0 / kPolarGrid.angles);
  return angles;
}

double withinCircle(double degrees) { return degrees - 360.0 * std::ceil((degrees - 180.0) / 360.0); }

/// The angle around a first one at which the peak is highest.
double refinedAngle(const Comparison& comparison, double degrees, const std::function<bool()>& stopped)
{
  // A third of the angle that moves the rim of what the window leaves by a pixel, then a third of that.
  const double coarse = 128.0 / comparison.side();
  for (const double step : {coarse, coarse / 3.0}) {
    std::array<double, 7> heights;
    for (std::size_t i = 0; i < heights.size(); ++i) {
      if (stopped()) return degrees;
      heights[i] = comparison.at(degrees + step * (static_cast<double>(i) - 3.0)).significance;
    }
    const auto best =
        static_cast<std::size_t>(std::max_element(heights.begin() + 1, heights.end() - 1) - heights.begin());
    const double offset = topBetween(heights[best - 1], heights[best], heights[best + 1]).offset;
    degrees += step * (static_cast<double>(best) - 3.0 + offset);
  }
  return degrees;
}

} // namespace

std::optional<RigidMotion> findDisplacement(const Picture& reference, const Picture& moved, double degrees)
{
  const RigidMotion motion = Comparison(reference, moved, kFinalSide).at(degrees);
  if (motion.significance < kLeastSignificance) return std::nullopt;
  return motion;
}

std::optional<RigidMotion> findMotion(const Picture& reference, const Picture& moved,
                                      const std::function<bool()>& stopped)
{
  const Comparison comparison(reference, moved, kAngleSide);
  const Comparison small(reference, moved, kCandidateSide);
  RigidMotion best;
  for (const double angle : comparison.candidateAngles())
    // The magnitudes of a spectrum are the same after half a turn: the displacement tells.
    for (const double candidate : {angle, angle + 180.0}) {
      if (stopped()) return std::nullopt;
      const RigidMotion motion = small.at(candidate);
      if (motion.significance > best.significance) best = motion;
    }
  const double degrees = withinCircle(refinedAngle(comparison, best.degrees, stopped));
  if (stopped()) return std::nullopt;
  return findDisplacement(reference, moved, degrees);
}

} // namespace phasecorrelation
