#include "kernels/SampledReference.h"

#include "kernels/Parallel.h"

#include "FixedWalk.h"
#include "PairSide.h"
#include "RowSpans.h"

#include <algorithm>
#include <new>

namespace kernels {

namespace {

constexpr std::size_t kSlack = 64; // Vectors may be read and written behind the end of a row.

std::size_t bytesOf(int gridWidth, int gridHeight, int channels)
{
  return static_cast<std::size_t>(std::max(0, gridWidth)) *
         static_cast<std::size_t>(std::max(0, gridHeight)) * (channels == 4 ? 4 : 1);
}

} // namespace

SampledReference::SampledReference() : m_side(std::make_unique<PairSide>()) {}
SampledReference::~SampledReference() = default;

bool SampledReference::reserve(int gridWidth, int gridHeight, int channels)
{
  m_pixels.reset(new (std::nothrow) std::uint8_t[bytesOf(gridWidth, gridHeight, channels) + kSlack]);
  m_spans.reset(new (std::nothrow) RowSpan[static_cast<std::size_t>(std::max(1, gridHeight))]);
  return m_pixels && m_spans;
}

void SampledReference::sample(const PairImage& image, const Affine16& m, int gridWidth, int gridHeight,
                              int channels)
{
  const bool fits = std::max({gridWidth, gridHeight, image.width, image.height}) <= kMaxSide;
  m_gridWidth = fits ? std::max(0, gridWidth) : 0;
  m_gridHeight = fits ? std::max(0, gridHeight) : 0;
  m_channels = channels;
  std::fill_n(m_spans.get(), m_gridHeight, RowSpan{0, m_gridWidth});
  *m_side = PairSide({m_pixels.get(), m_gridWidth, m_gridHeight}, {}, channels);
  m_side->end += kSlack;
  const PairSide source(image, m, channels);
  forRows(0, m_gridHeight, rowGrain(m_gridWidth), [&](int rowBegin, int rowEnd) {
    clipToImage(image, m, rowBegin, rowEnd - rowBegin, m_spans.get() + rowBegin);
    fetchPairRows(source, m_spans.get() + rowBegin, rowBegin, rowEnd, m_pixels.get(), m_side->stride);
  });
}

} // namespace kernels
