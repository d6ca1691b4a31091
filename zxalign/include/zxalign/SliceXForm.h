#pragma once

#include "mc/McVec2f.h"

#include <QTransform>

#include <optional>

struct SliceInfo;

/// The rigid transform of one slice: where it lies in the common aligned frame. A plain value; the default is
/// the identity.
///
/// A point p of the slice (pixels, x to the right, y downwards) maps to
///   u = p - c;  u.x = -u.x when flipped;
///   u' = (u.x cos a + u.y sin a, -u.x sin a + u.y cos a);  p' = u' + t + c
/// with a the rotation and c = (cx, cy) the rotation centre that every call names: throughout the system the
/// slice centre (width / 2, height / 2), integer halves.
struct SliceXForm {
  float translationX = 0.0f; ///< pixels
  float translationY = 0.0f; ///< pixels, downwards
  float rotation = 0.0f;     ///< degrees
  bool flip = false;         ///< mirrored in x about the rotation centre, before the rotation

  SliceXForm() = default;
  SliceXForm(float tx, float ty, float degrees, bool flipped)
    : translationX(tx), translationY(ty), rotation(degrees), flip(flipped)
  {
  }
  /// Takes the transform and drops the landmarks.
  SliceXForm(const SliceInfo& info);
  SliceXForm& operator=(const SliceInfo& info);
  SliceXForm(const SliceXForm&) = default;
  SliceXForm& operator=(const SliceXForm&) = default;

  /// Sets m to the forward mapping, slice to aligned frame.
  void getMatrix(QTransform& m, float cx, float cy) const;
  /// Sets m to its exact inverse, aligned frame to slice.
  void getInverseMatrix(QTransform& m, float cx, float cy) const;
  /// Sets m to the mapping from the aligned frame into an image of the slice. In the image the slice may lie
  /// in the aligned frame already, placed by a transform, as in a projection: then only its motion since
  /// counts.
  void getImageMatrix(QTransform& m, const std::optional<SliceXForm>& placed, float cx, float cy) const;
  /// The forward and the inverse image of a point, computed in double precision.
  McVec2f map(const McVec2f& p, float cx, float cy) const;
  McVec2f mapInverse(const McVec2f& p, float cx, float cy) const;

  /// Turns the whole transform by an angle in degrees about a pivot given relative to the rotation centre:
  /// t = R(t - q) + q with R in the sense of the forward mapping, rotation += angle. About its own
  /// translation a slice turns in place.
  void rotate(float degrees, float pivotX, float pivotY);

  /// The transform that does `first` and then this one, each about the same centre.
  SliceXForm after(const SliceXForm& first) const;

  /// Negates translation and rotation; the flip stays. Deliberately not the inverse of the mapping when the
  /// slice is turned and shifted, or flipped.
  void inv();
  SliceXForm inverse() const;

  /// Writes the record to standard output, for looking at it from a debugger.
  void print() const;
};

/// Applies an affine matrix to a point in double precision; x' = m11 x + m21 y + dx, y' = m12 x + m22 y + dy.
QPointF mapPoint(const QTransform& m, double x, double y);
