#pragma once

#include "mc/McDArray.h"

#include <QPoint>
#include <QTransform>

/// The rigid motion between two lists of landmarks of equal length, the directions of a turned onto those of
/// b, by least squares (singular value decomposition of the cross-covariance, K. S. Arun, T. S. Huang,
/// S. D. Blostein, IEEE PAMI 9, 1987, 698-700).
///
/// No or one point gives the identity; two points the rotation alone, from the first pair; three or more the
/// rotation and, as its translation, the plain difference of the rounded centroids, a - b, not corrected for
/// the rotation: who uses it reads the rotation.
QTransform fitRigidMotion(const McDArray<QPoint>& a, const McDArray<QPoint>& b);
