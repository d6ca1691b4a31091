#pragma once

#include <QImage>

#include <vector>

/// An image and its reductions by 2, 4, 8 ..., each made when it is first asked for.
///
/// A pixel of a reduction is the mean of the four below it, halves upwards; a last odd row or column counts
/// twice. Images are Format_Grayscale8 or Format_RGB32.
class QxImageLevels {
public:
  void setImage(QImage image);
  bool isEmpty() const { return m_levels.empty(); }

  /// The image reduced by 2^level; the level is at most the last useful one.
  const QImage& level(int level);
  /// The smallest reduction that has no less pixels than the screen, which shows one pixel of the image on so
  /// many of its own along its wider side.
  int levelFor(double devicePixelsPerPixel) const;

private:
  std::vector<QImage> m_levels;
};
