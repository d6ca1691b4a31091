#pragma once

#include "mc/McPrimType.h"

#include <QImage>

/// The 8-bit grey image that shows values of any type: black ... white linearly on 0 ... 255, to the nearest,
/// clamped, NaN 0 (see QxImageViewer::setGreyImage()). Null when there is no memory for it.
QImage greyImageOf(const void* values, McPrimType type, int width, int height, float black, float white);
