#include "qx/ZxHTML.h"
