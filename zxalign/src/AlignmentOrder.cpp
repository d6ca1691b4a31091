#include "AlignmentOrder.h"

std::vector<ZxAlignPair> alignmentOrder(int reference, int numSlices)
{
  std::vector<ZxAlignPair> pairs;
  if (reference < 0 || reference >= numSlices) return pairs;
  for (int i = reference + 1; i < numSlices; ++i) pairs.push_back({i, i - 1, +1});
  for (int i = reference - 1; i >= 0; --i) pairs.push_back({i, i + 1, -1});
  return pairs;
}
