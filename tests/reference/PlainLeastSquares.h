#pragma once

#include "AlignmentQuality.h"
#include "LeastSquaresSearch.h"

#include "reference/PlainBlockAverage.h"
#include "reference/PlainPairDifference.h"

#include <array>
#include <cstdint>
#include <vector>

/// The least-squares search in its plainest form: one candidate after the other, each compared over all of
/// its points. LeastSquaresSearch must come to the same result to the last bit.
namespace reference {

struct PlainImage {
  int width = 0, height = 0, channels = 1;
  std::vector<std::uint8_t> bytes{};

  /// Averages of f x f pixels, rounded down; what is left over at the right and below is dropped.
  PlainImage reduced(int f) const
  {
    PlainImage out{width / f, height / f, channels};
    out.bytes.resize(static_cast<std::size_t>(out.width) * static_cast<std::size_t>(out.height) *
                     static_cast<std::size_t>(channels));
    plainBlockAverage(bytes.data(), width, height, channels, f, out.bytes.data());
    return out;
  }
};

class PlainLeastSquares {
public:
  PlainLeastSquares(const ImagePair& pair, const ZxAlignSettings& settings, const SliceXForm& r,
                    const SliceXForm& e)
    : reference(r), editable(e), m_settings(settings), m_full0(copyOf(pair, pair.reference)),
      m_full1(copyOf(pair, pair.editable))
  {
  }

  void run()
  {
    int f = reduction(), lo = -17, hi = 18, halvings = 0;
    float sT = m_settings.translationStep * static_cast<float>(f), sR = 10;
    scale(1.0f / static_cast<float>(f));
    bool again = true, momentum = false;
    Move last{};
    for (int n = 0; n < m_settings.maxIterations; ++n) {
      if (again) {
        m_small0 = f < 2 ? m_full0 : m_full0.reduced(f);
        m_small1 = f < 2 ? m_full1 : m_full1.reduced(f);
        best = quality(editable);
        again = false;
      }
      if (momentum) {
        const float q = quality(moved(editable, last));
        momentum = q > best;
        if (momentum) {
          accept(moved(editable, last), q);
          continue;
        }
      }
      float candidate = best;
      for (const Move& m : moves(sT, sR, lo, hi, halvings < 2))
        if (const float q = quality(moved(editable, m)); q > candidate) candidate = q, last = m;
      if (candidate > best) {
        accept(moved(editable, last), candidate);
        momentum = f == 1;
      } else if (f > 1) {
        f /= 2;
        scale(2);
        sR = static_cast<float>(f) * m_settings.rotationStep;
        sT = static_cast<float>(f) * m_settings.translationStep;
        again = true;
        lo = -1, hi = 1;
        best = 0;
      } else {
        if (++halvings > 2 || m_full0.width > 1024) break;
        sT /= 2;
        sR /= 2;
      }
    }
    scale(static_cast<float>(f));
  }

  SliceXForm reference, editable;
  float best = 0;
  int accepted = 0;

private:
  /// A step from a transform: dx, dy, then an angle about the transform's own place.
  using Move = std::array<float, 3>;

  static PlainImage copyOf(const ImagePair& p, const unsigned char* bytes)
  {
    const auto n = static_cast<std::size_t>(p.width) * static_cast<std::size_t>(p.height) *
                   static_cast<std::size_t>(p.channels);
    return {p.width, p.height, p.channels, {bytes, bytes + n}};
  }
  static SliceXForm moved(SliceXForm x, const Move& m)
  {
    x.translationX += m[0];
    x.translationY += m[1];
    x.rotate(m[2], x.translationX, x.translationY);
    return x;
  }
  void scale(float s)
  {
    for (SliceXForm* x : {&reference, &editable}) x->translationX *= s, x->translationY *= s;
  }
  void accept(const SliceXForm& x, float q)
  {
    editable = x;
    best = q;
    ++accepted;
  }
  int reduction() const
  {
    int f = 1;
    if (m_settings.resamplingLevels > 0 && m_full0.width > 99)
      for (int k = 0; m_full0.height / f > 99;) {
        f *= 2;
        if (++k >= m_settings.resamplingLevels || m_full0.width / f <= 99) break;
      }
    return f;
  }
  std::vector<Move> moves(float sT, float sR, int lo, int hi, bool shifts) const
  {
    std::vector<Move> all;
    for (int i = -24; shifts && hi > 1 && i <= 22; i += 2)
      for (int j = -24; j <= 22; j += 2)
        all.push_back({static_cast<float>(i) * sT, static_cast<float>(j) * sT, 0});
    if (shifts) all.insert(all.end(), {{sT, 0, 0}, {-sT, 0, 0}, {0, sT, 0}, {0, -sT, 0}});
    for (int k = lo; m_settings.rotationAllowed && k <= hi; ++k)
      if (k != 0) all.push_back({0, 0, static_cast<float>(k) * sR});
    return all;
  }
  float quality(const SliceXForm& x) const
  {
    const int w = m_small0.width, h = m_small0.height, c = m_small0.channels;
    const kernels::PairDifference d =
        plainPairDifference({m_small0.bytes.data(), w, h}, inverse16(reference, w, h),
                            {m_small1.bytes.data(), w, h}, inverse16(x, w, h), w, h, c);
    return alignmentQuality(d, c, static_cast<std::uint64_t>(w) * static_cast<std::uint64_t>(h));
  }

  ZxAlignSettings m_settings;
  PlainImage m_full0, m_full1, m_small0{}, m_small1{};
};

} // namespace reference
