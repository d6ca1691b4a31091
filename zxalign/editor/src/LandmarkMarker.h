#pragma once

#include "mc/McVec2f.h"

#include <QColor>
#include <QImage>

/// The arrow that points at a landmark: a picture of 17 x 17 pixels whose tip is its top right one.
namespace LandmarkMarker {

/// Where the arrow comes from: from below for landmarks of the first slice, from above for the second's.
enum class From { Below, Above };

/// Draws the arrow into a picture of 32 bits a pixel, as far as it lies in it; the highest byte becomes 0.
void draw(QImage& picture, qint64 tipX, qint64 tipY, From from, QColor color, bool selected);

/// Whether a point lies strictly within the triangle of the arrow whose tip is exactly at `tip`.
bool contains(McVec2f tip, From from, McVec2f point);

} // namespace LandmarkMarker
