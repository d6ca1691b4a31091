// Resampling of a turned stack of 8 bits beside OpenCV's warpAffine. Built where OpenCV is installed; nothing
// of the product uses it.

#include "kernels/Resample.h"

#include "reference/PlainResample.h"
#include "support/Random.h"
#include "support/Threads.h"

#include <benchmark/benchmark.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace {

using kernels::Affine;
using kernels::Interpolation;
using kernels::ResampleFrame;

constexpr int kEdge = 1024, kSlices = 64;
constexpr int kBackground = 40;

// Waves in several directions, so that a result that is displaced by a fraction of a pixel differs little.
std::vector<std::uint8_t> smoothSlice(int k)
{
  std::vector<std::uint8_t> slice(countOf(kEdge, kEdge));
  for (int y = 0; y < kEdge; ++y)
    for (int x = 0; x < kEdge; ++x)
      slice[countOf(y, kEdge) + static_cast<std::size_t>(x)] = static_cast<std::uint8_t>(
          128 + 60 * std::sin(0.05 * x + 0.02 * y + k) + 50 * std::cos(0.03 * y - 0.01 * x));
  return slice;
}

// A stack whose slices are turned by 5 degrees and some more, each about its centre.
struct Stack {
  Stack() : target(countOf(kEdge, kEdge))
  {
    for (int k = 0; k < kSlices; ++k) source.push_back(smoothSlice(k));
  }

  static ResampleFrame frame(int k)
  {
    const double angle = (5.0 + 0.1 * k) * std::acos(-1.0) / 180.0, c = std::cos(angle), s = std::sin(angle);
    const double centre = kEdge / 2;
    return {kEdge,
            kEdge,
            kEdge,
            kEdge,
            0,
            0,
            {c, s, -s, c, centre - c * centre + s * centre + 3.3, centre - s * centre - c * centre - 7.6}};
  }

  std::vector<std::vector<std::uint8_t>> source;
  std::vector<std::uint8_t> target; // of one slice: writing a stack is not what is measured
};

void withKernels(Stack& stack, int k, Interpolation mode)
{
  const float background = kBackground;
  kernels::resampleRows(Stack::frame(k), stack.source[static_cast<std::size_t>(k)].data(), 1, mode,
                        &background, stack.target.data(), 0, kEdge);
}

void withOpenCv(Stack& stack, int k, Interpolation mode)
{
  const Affine m = Stack::frame(k).inverse;
  const cv::Matx23d matrix(m.m11, m.m21, m.dx, m.m12, m.m22, m.dy);
  const cv::Mat from(kEdge, kEdge, CV_8U, stack.source[static_cast<std::size_t>(k)].data());
  cv::Mat to(kEdge, kEdge, CV_8U, stack.target.data());
  const int rule = mode == Interpolation::Linear ? cv::INTER_LINEAR : cv::INTER_NEAREST;
  cv::warpAffine(from, to, matrix, to.size(), rule | cv::WARP_INVERSE_MAP, cv::BORDER_CONSTANT,
                 cv::Scalar(kBackground));
}

// Positions of 1/32 pixel and another rule at the border: nearly the same picture, but not the same bytes.
double meanDifference(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b)
{
  double sum = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += std::abs(a[i] - b[i]);
  return sum / static_cast<double>(a.size());
}

template <class Resample>
double differenceFromPlain(Stack& stack, const Resample& resample, Interpolation mode)
{
  const float background = kBackground;
  std::vector<std::uint8_t> expected(stack.target.size());
  double worst = 0.0;
  for (const int k : {0, kSlices - 1}) {
    reference::plainResample(Stack::frame(k), stack.source[static_cast<std::size_t>(k)].data(), 1, mode,
                             &background, expected.data());
    resample(stack, k, mode);
    worst = std::max(worst, meanDifference(stack.target, expected));
  }
  return worst;
}

template <class Resample>
void stack(benchmark::State& state, const Resample& resample, Interpolation mode, int threads,
           double allowedDifference)
{
  Stack slices;
  cv::setNumThreads(threads);
  withThreads(threads, [&] {
    if (differenceFromPlain(slices, resample, mode) > allowedDifference) {
      state.SkipWithError("wrong result");
      return;
    }
    for (auto _ : state)
      for (int k = 0; k < kSlices; ++k) resample(slices, k, mode);
    state.SetItemsProcessed(state.iterations() * kSlices * kEdge * kEdge);
  });
}

} // namespace

#define ZX_BENCH(name, ...)                                                                                  \
  BENCHMARK_CAPTURE(stack, name, __VA_ARGS__)->Unit(benchmark::kMillisecond)->UseRealTime()
ZX_BENCH(linear_opencv_1_thread, withOpenCv, Interpolation::Linear, 1, 0.5);
ZX_BENCH(linear_zxalign_1_thread, withKernels, Interpolation::Linear, 1, 0.0);
ZX_BENCH(linear_opencv_2_threads, withOpenCv, Interpolation::Linear, 2, 0.5);
ZX_BENCH(linear_zxalign_2_threads, withKernels, Interpolation::Linear, 2, 0.0);
ZX_BENCH(nearest_opencv_1_thread, withOpenCv, Interpolation::Nearest, 1, 0.5);
ZX_BENCH(nearest_zxalign_1_thread, withKernels, Interpolation::Nearest, 1, 0.0);
ZX_BENCH(nearest_opencv_2_threads, withOpenCv, Interpolation::Nearest, 2, 0.5);
ZX_BENCH(nearest_zxalign_2_threads, withKernels, Interpolation::Nearest, 2, 0.0);
