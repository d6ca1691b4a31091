#pragma once

#include "QxImageLevels.h"
#include "QxImageViewerGeometry.h"

#include <QColor>

#include <vector>

class QxImageViewer;
class QxImageViewerShape;

/// What a surface draws: the image, where it lies, and the shapes over it from the lowest to the topmost.
struct QxImageViewerScene {
  QxImageViewer* viewer = nullptr;
  QxImageLevels levels;
  QxImageViewerGeometry geometry;
  std::vector<QxImageViewerShape*> shapes; // not owned

  /// Beside the image. Not black: the edges of a black image are to be seen.
  static QColor surround() { return {40, 40, 40}; }
};
