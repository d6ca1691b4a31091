#pragma once

#include "zx/ZxData.h"

#include <QString>

#include <vector>

class QxImageViewer;

/// One slice of a volume as a picture: grey values within a window, colours as they are, labels each in a
/// colour of its own.
class QxSliceImage {
public:
  /// Gets a slice; the volume must live as long as this shows it. False when it cannot be read.
  bool load(ZxSpatialData& data, int slice);
  void clear();

  /// The values that the middle ninety-nine hundredths of the pixels have; (0, 1) where there are none.
  void findGreyWindow(float& black, float& white) const;
  void show(QxImageViewer& viewer, float black, float white) const;
  /// The value of a pixel inside of the slice for a person: "127", "12, 200, 3".
  QString valueAt(int x, int y) const;

private:
  void showLabels(QxImageViewer& viewer) const;
  double component(std::size_t pixel, int c) const;

  ZxLatticeShape m_shape;
  bool m_isLabels = false;
  std::vector<unsigned char> m_pixels;
};
