#include "PairConfidence.h"

#include "Text.h"
#include "zx/ZxParamBundle.h"

#include <array>
#include <cstdio>

namespace cli {
namespace {

constexpr const char* kBundle = "AlignConfidence";

} // namespace

std::optional<PairConfidence> confidenceOf(const ZxParamBundle& parameters, int slice)
{
  std::array<char, 24> name{};
  std::snprintf(name.data(), name.size(), "slice%04d", slice);
  const ZxParamBundle* all = parameters.findBundle(kBundle);
  const ZxParamBundle* own = all ? all->findBundle(name.data()) : nullptr;
  PairConfidence confidence;
  if (!own || !own->findReals("confidence", 1, &confidence.confidence) ||
      !own->findNums("reference", 1, &confidence.reference))
    return std::nullopt;
  own->findString("reason", confidence.reason);
  return confidence;
}

void passConfidence(const ZxParamBundle& from, ZxParamBundle& to)
{
  const ZxParamBundle* all = from.findBundle(kBundle);
  ZxParamBundle* target = all ? to.getBundle(kBundle) : nullptr;
  if (!target) return;
  target->merge(*all);
  // Where the slices lie is another place in another volume: whoever opens that notes it.
  for (const ZxParamBundle::Entry& entry : all->entries())
    if (ZxParamBundle* own = target->findBundle(entry.name)) own->remove("corners");
}

void forgetConfidence(ZxParamBundle& parameters) { parameters.remove(kBundle); }

std::string describe(int slice, const PairConfidence& confidence)
{
  const std::string text =
      "confidence of slice " + std::to_string(slice) + ": " + fixed(confidence.confidence, 2);
  return confidence.reason.empty() ? text : text + ", " + confidence.reason;
}

} // namespace cli
