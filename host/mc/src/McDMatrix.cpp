#include "mc/McDMatrix.h"
