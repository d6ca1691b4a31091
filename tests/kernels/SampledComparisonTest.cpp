#include "kernels/SampledComparison.h"

#include <gtest/gtest.h>
