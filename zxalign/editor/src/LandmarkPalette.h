#pragma once

#include "mc/McDArray.h"

#include <QColor>

/// The colours of the landmarks, by their number. A landmark that is removed takes its colour with it, so
/// that the others keep theirs.
class LandmarkPalette {
public:
  /// Fills an empty palette with 16 named colours and, up to the count of landmarks, with one of hue
  /// 37 * index degrees each.
  void buildIfEmpty(std::size_t count);
  /// Makes room for one landmark more than `count`: appends one colour of hue 37 * (count + 1) degrees, one
  /// step further than buildIfEmpty() gives for the same index. The difference is deliberate.
  void extendBeyond(std::size_t count);
  void remove(std::size_t index);

  std::size_t size() const { return m_colors.size(); }
  /// Landmarks that came without the palette hearing of them have the colours that buildIfEmpty() gives.
  QColor at(std::size_t index) const;

private:
  McDArray<QColor> m_colors;
};
