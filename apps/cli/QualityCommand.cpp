#include "QualityCommand.h"

#include "AlignModule.h"
#include "Console.h"
#include "Failure.h"
#include "PairConfidence.h"
#include "Text.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace cli {

void markWorstTenth(std::vector<PairQuality>& pairs)
{
  std::vector<PairQuality*> byQuality;
  for (PairQuality& pair : pairs) byQuality.push_back(&pair);
  std::stable_sort(byQuality.begin(), byQuality.end(),
                   [](const PairQuality* a, const PairQuality* b) { return a->quality < b->quality; });
  const std::size_t tenth = (pairs.size() + 9) / 10;
  for (std::size_t i = 0; i < tenth; ++i) byQuality[i]->worst = true;
}

void QualityCommand::declare(CLI::App& options)
{
  m_input.declare(options);
  options
      .add_option("--mask", m_mask,
                  "A label field of the size of the input: only pixels that are not 0 in it count")
      ->type_name("FILE");
  options
      .add_option("--window", m_window,
                  "Grey values that count as black and white (default: the range of the input)")
      ->expected(2)
      ->type_name("MIN MAX");
  options.add_flag("--worst", m_sorted, "Sort the pairs, the worst first");
  options.footer("Prints one line a pair of neighbouring slices, counted from 0: \"slices 0 - 1  quality "
                 "93.21 %\".\n100 % are equal slices; the worst tenth is marked with *. Where the method has "
                 "judged itself, its\nconfidence follows, and why a "
                 "slice was left as it was.");
}

std::vector<PairQuality> QualityCommand::measure(AlignModule& module, Console& console) const
{
  const WorkingPhase phase("Comparing slices");
  ZxWorkArea* area = ZxWorkArea::getTheWorkArea();
  ZxAlignControl& control = module.control();
  const int count = control.numSlices() - 1;
  std::vector<PairQuality> pairs;
  for (int lower = 0; lower < count; ++lower) {
    if (area->wasInterrupted(1))
      throw Stopped("Stopped after " + std::to_string(lower) + " of " + std::to_string(count) + " pairs.");
    area->setProgressFraction(static_cast<float>(lower) / static_cast<float>(count));
    const double quality = m_mask.empty() ? control.pairQuality(lower) : control.maskedPairQuality(lower);
    if (quality < 0.0) throw Failure(console.reason("A slice of " + m_input.name() + " cannot be read."));
    pairs.push_back({lower, quality});
  }
  return pairs;
}

std::string QualityCommand::remarkOn(const ZxParamBundle& parameters, ZxAlignControl& control, int lower)
{
  std::string text;
  for (const int slice : {lower, lower + 1}) {
    const auto confidence = confidenceOf(parameters, slice);
    // What was said about a slice belongs to the pair with the slice that it was aligned to.
    const bool other = slice == lower ? confidence && confidence->reference > slice
                                      : confidence && confidence->reference < slice;
    if (other && control.liesAsMatched(slice)) text += "  " + cli::describe(slice, *confidence);
  }
  return text;
}

void QualityCommand::run(Console& console)
{
  AlignModule module(console);
  const ZxDims dims = m_input.info().shape.dims;
  if (!m_mask.empty()) requireSameDims("mask", m_mask, io::readInfo({m_mask}).shape.dims, m_input, dims);
  const McHandle<ZxField3> volume = m_input.open();
  module.connectInput(*volume);
  if (!m_mask.empty()) {
    const McHandle<ZxUniformLabelField3> mask = io::openLabels({m_mask});
    module.connect("mask", *mask);
  }
  if (!m_window.empty()) module.setWindow(m_window[0], m_window[1]);

  std::vector<PairQuality> pairs = measure(module, console);
  markWorstTenth(pairs);
  if (m_sorted)
    std::stable_sort(pairs.begin(), pairs.end(),
                     [](const PairQuality& a, const PairQuality& b) { return a.quality < b.quality; });
  for (const PairQuality& pair : pairs)
    console.result("slices " + std::to_string(pair.lower) + " - " + std::to_string(pair.lower + 1) +
                   "  quality " + fixed(pair.quality * 100.0, 2) + " %" + (pair.worst ? " *" : "") +
                   remarkOn(volume->parameters(), module.control(), pair.lower));
}

} // namespace cli
