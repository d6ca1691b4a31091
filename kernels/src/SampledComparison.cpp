#include "kernels/SampledComparison.h"

#include "kernels/Parallel.h"

#include "FixedWalk.h"
#include "PairSide.h"
#include "RowSpans.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <numeric>

namespace kernels {

namespace {

// A step that visits n bands in an order spread over all of them, each once: without a common divisor with n,
// and near the golden section.
int spreadStep(int n)
{
  int step = std::max(1, static_cast<int>(std::int64_t{n} * 618 / 1000));
  while (std::gcd(step, n) > 1) ++step;
  return step;
}

} // namespace

SampledComparison::SampledComparison() : m_side(std::make_unique<PairSide>()) {}
SampledComparison::~SampledComparison() = default;
SampledComparison::SampledComparison(SampledComparison&&) noexcept = default;

bool SampledComparison::reserve(int gridHeight)
{
  m_spans.reset(new (std::nothrow) RowSpan[static_cast<std::size_t>(std::max(1, gridHeight))]);
  return m_spans != nullptr;
}

void SampledComparison::start(const SampledReference& reference, const PairImage& image, const Affine16& m)
{
  m_reference = &reference;
  const int rows = std::max(image.width, image.height) <= kMaxSide ? reference.gridHeight() : 0;
  std::copy_n(reference.spans(), rows, m_spans.get());
  clipToImage(image, m, 0, rows, m_spans.get());
  m_count = countOf(m_spans.get(), rows);
  *m_side = PairSide(image, m, reference.channels());
  const int bands = rows > 0 ? reference.bands() : 0;
  if (bands != m_bands) m_bandStep = spreadStep(bands);
  m_bands = bands;
  m_squares = 0;
}

std::uint64_t SampledComparison::sumOfBand(int place) const
{
  const auto band = static_cast<int>(std::int64_t{place} * m_bandStep % m_bands);
  const int rowBegin = band * m_reference->bandRows();
  const int rowEnd = std::min(rowBegin + m_reference->bandRows(), m_reference->gridHeight());
  return sumPairRows(m_reference->side(), *m_side, m_spans.get() + rowBegin, rowBegin, rowEnd);
}

std::uint64_t SampledComparison::add(int begin, int end, std::uint64_t limit)
{
  const int grain = rowGrain(m_reference->gridWidth() * m_reference->bandRows());
  if (end - begin <= grain) {
    for (int place = begin; place < end && m_squares < limit; ++place) m_squares += sumOfBand(place);
    return m_squares;
  }
  std::atomic<std::uint64_t> sum{m_squares};
  forRows(begin, end, grain, [&](int first, int last) {
    for (int place = first; place < last && sum.load(std::memory_order_relaxed) < limit; ++place)
      sum.fetch_add(sumOfBand(place), std::memory_order_relaxed);
  });
  return m_squares = sum.load();
}

} // namespace kernels
