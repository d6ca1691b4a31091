#pragma once

#include "QxImageLevels.h"
#include "QxImageViewerGeometry.h"

#include "qx/QxImageViewer.h"

#include <QColor>

#include <vector>

class QxImageViewerShape;

/// What a surface draws: the image, where it lies, and the shapes over it from the lowest to the topmost.
struct QxImageViewerScene {
  QxImageViewer* viewer = nullptr;
  QxImageLevels levels;
  std::vector<QxImageViewerShape*> shapes; // not owned

  /// Where the image lies in the viewer of its present size and screen. (A hidden widget hears of its new
  /// size only when it is shown, and the scale of a screen changes without a word.)
  QxImageViewerGeometry& geometry()
  {
    m_geometry.setViewport(viewer->size(), viewer->devicePixelRatioF());
    return m_geometry;
  }

  /// Beside the image. Not black: the edges of a black image are to be seen.
  static QColor surround() { return {40, 40, 40}; }

private:
  QxImageViewerGeometry m_geometry;
};
