#include "ReducedSlice.h"

#include "Parallel.h"

#include <algorithm>

namespace robust {

ReducedSlice::ReducedSlice(const SliceImage& slice, int mostSide)
{
  while (std::max(slice.width, slice.height) / m_factor > mostSide) m_factor *= 2;
  if (m_factor == 1) {
    m_image = slice;
    return;
  }
  const int width = slice.width / m_factor, height = slice.height / m_factor;
  const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  m_samples.resize(pixels * static_cast<std::size_t>(slice.channels));
  m_image = {width, height, slice.channels, m_samples.data(), {}};
  m_image.mask.resize(slice.mask.empty() ? 0 : pixels);
  forBands(height, 16, [&](std::size_t, int begin, int end) {
    for (int y = begin; y < end; ++y) {
      averageRow(slice, y);
      if (!slice.mask.empty()) maskRow(slice, y);
    }
  });
}

void ReducedSlice::averageRow(const SliceImage& slice, int y)
{
  const auto channels = static_cast<std::size_t>(slice.channels), factor = static_cast<std::size_t>(m_factor);
  const auto width = static_cast<std::size_t>(m_image.width),
             stride = static_cast<std::size_t>(slice.width) * channels;
  std::vector<std::uint32_t> sums(width * channels, 0);
  for (std::size_t row = 0; row < factor; ++row) {
    const unsigned char* in = slice.samples + (static_cast<std::size_t>(y) * factor + row) * stride;
    for (std::size_t x = 0; x < width * factor; ++x)
      for (std::size_t c = 0; c < channels; ++c) sums[x / factor * channels + c] += in[x * channels + c];
  }
  const auto count = static_cast<std::uint32_t>(factor * factor);
  unsigned char* out = m_samples.data() + static_cast<std::size_t>(y) * width * channels;
  for (std::size_t i = 0; i < sums.size(); ++i)
    out[i] = static_cast<unsigned char>((sums[i] + count / 2) / count);
}

void ReducedSlice::maskRow(const SliceImage& slice, int y)
{
  const auto factor = static_cast<std::size_t>(m_factor), width = static_cast<std::size_t>(m_image.width);
  std::uint8_t* out = m_image.mask.data() + static_cast<std::size_t>(y) * width;
  std::fill(out, out + width, std::uint8_t{1});
  for (std::size_t row = 0; row < factor; ++row) {
    const std::uint8_t* in = slice.mask.data() + (static_cast<std::size_t>(y) * factor + row) *
                                                     static_cast<std::size_t>(slice.width);
    for (std::size_t x = 0; x < width * factor; ++x)
      if (!in[x]) out[x / factor] = 0;
  }
}

} // namespace robust
