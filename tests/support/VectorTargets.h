#pragma once

#include <gtest/gtest.h>

#include <hwy/targets.h>

/// Runs f once for every instruction set that this machine offers and the kernels are compiled for, down to
/// the plain code, and says in a failure which one it was.
template <class F>
void forEachVectorTarget(const F& f)
{
  for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
    hwy::SetSupportedTargetsForTest(target);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    SCOPED_TRACE(hwy::TargetName(target));
    f();
  }
  hwy::SetSupportedTargetsForTest(0);
  hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}
