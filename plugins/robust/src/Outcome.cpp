#include "Outcome.h"

#include "zx/ZxParamBundle.h"

#include <array>
#include <cstdio>

namespace robust {

void storeOutcome(ZxParamBundle& parameters, int slice, const Outcome& outcome)
{
  ZxParamBundle* all = parameters.getBundle("AlignConfidence");
  std::array<char, 24> name{};
  std::snprintf(name.data(), name.size(), "slice%04d", slice);
  ZxParamBundle* own = all ? all->getBundle(name.data()) : nullptr;
  if (!own) return;
  own->setReals("confidence", {outcome.confidence});
  own->setNum("reference", outcome.reference);
  own->setString("reason", outcome.reason);
}

} // namespace robust
