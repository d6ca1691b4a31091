#pragma once

#include "zxalign/SliceXForm.h"

#include <QPoint>
#include <QSize>

#include <array>

/// Moving and turning one slice of the pair with the mouse, the other one with it if wanted.
///
/// A drag changes a copy of the transforms; the slices are taken to lie about the middle of the viewport.
class SliceDrag {
public:
  enum class Kind { None, Translation, Rotation };
  using Transforms = std::array<SliceXForm, 2>; ///< of the first and the second slice

  /// What a position of the mouse is judged by.
  struct Scene {
    QSize viewport;
    QSize slice;
    float zoom = 1.0f;
    bool editsSecond = true; ///< which slice is dragged
  };

  Kind kind() const { return m_kind; }
  /// Whether the other slice follows; of the last drag when it is over.
  bool isTogether() const { return m_together; }

  /// Starts a drag when the mouse is on the dragged slice; a translation starts from whole pixels.
  bool begin(Kind kind, const Scene& scene, const Transforms& transforms, QPoint mouse, bool together);
  /// Follows the mouse.
  void moveTo(const Scene& scene, Transforms& transforms, QPoint mouse);
  /// Ends the drag and returns what it was.
  Kind finish();
  /// Ends the drag and puts back what it has changed.
  Kind cancel(Transforms& transforms);

private:
  void translate(const Scene& scene, Transforms& transforms, QPoint mouse) const;
  void rotate(const Scene& scene, Transforms& transforms, QPoint mouse);

  Kind m_kind = Kind::None;
  bool m_together = false;
  QPoint m_mouse;                       // at the press; while turning, at the last move
  std::array<QPoint, 2> m_translations; // at the press
  Transforms m_before;
};
