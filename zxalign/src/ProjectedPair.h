#pragma once

#include "mc/McDArray.h"
#include "zxalign/SliceInfo.h"

class ZxAlignSlices;

/// While it lives, a module that shows projections stands as if its stack lay in the aligned frame already:
/// its images are the projections, and all its slices are at the identity. What is done to the slices then is
/// done to them where they lie at the end.
///
/// That is how methods which look for a slice's place in its image work on projections, too.
class ProjectedPair {
public:
  /// Makes the projections anew first. The module outlives this object and keeps its input and its pair.
  explicit ProjectedPair(ZxAlignSlices& module);
  ~ProjectedPair();
  ProjectedPair(const ProjectedPair&) = delete;
  ProjectedPair& operator=(const ProjectedPair&) = delete;

private:
  ZxAlignSlices& m_module;
  McDArray<SliceInfo> m_before;
};
