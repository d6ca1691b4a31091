#pragma once

#include "zxalign/ZxAlignControl.h"

#include <vector>

/// The pairs of a run over the whole stack in their order: from the reference slice upwards, each slice
/// edited against the one below it, then downwards, each edited against the one above it. Empty when the
/// reference is no slice of the stack.
std::vector<ZxAlignPair> alignmentOrder(int reference, int numSlices);
