#include "zxalign/SliceXForm.h"

#include "mc/McMath.h"
#include "zxalign/SliceInfo.h"

#include <cstdio>

namespace {

/// The matrix that moves by (dx, dy) first and then does what m does.
QTransform translatedFirst(const QTransform& m, double dx, double dy)
{
  return {m.m11(),
          m.m12(),
          m.m21(),
          m.m22(),
          m.dx() + (dx * m.m11() + dy * m.m21()),
          m.dy() + (dx * m.m12() + dy * m.m22())};
}

} // namespace

QPointF mapPoint(const QTransform& m, double x, double y)
{
  return {m.m11() * x + m.m21() * y + m.dx(), m.m12() * x + m.m22() * y + m.dy()};
}

SliceXForm::SliceXForm(const SliceInfo& info) : SliceXForm(static_cast<const SliceXForm&>(info)) {}

SliceXForm& SliceXForm::operator=(const SliceInfo& info)
{
  return *this = static_cast<const SliceXForm&>(info);
}

void SliceXForm::getMatrix(QTransform& m, float cx, float cy) const
{
  double sine = 0, cosine = 0;
  mc::sinCosDegrees(rotation, sine, cosine);
  const double mirror = flip ? -1.0 : 1.0;
  // Built like the calls of a painter: what is called last acts first.
  m = QTransform(mirror * cosine, -mirror * sine, sine, cosine, static_cast<double>(cx) + translationX,
                 static_cast<double>(cy) + translationY);
  m = translatedFirst(m, -cx, -cy);
}

void SliceXForm::getInverseMatrix(QTransform& m, float cx, float cy) const
{
  double sine = 0, cosine = 0;
  mc::sinCosDegrees(rotation, sine, cosine);
  const double mirror = flip ? -1.0 : 1.0;
  m = QTransform(mirror * cosine, sine, -mirror * sine, cosine, cx, cy);
  m = translatedFirst(m, -translationX, -translationY);
  m = translatedFirst(m, -cx, -cy);
}

void SliceXForm::getImageMatrix(QTransform& m, const std::optional<SliceXForm>& placed, float cx,
                                float cy) const
{
  getInverseMatrix(m, cx, cy);
  if (!placed) return;
  QTransform forward;
  placed->getMatrix(forward, cx, cy);
  m *= forward;
}

McVec2f SliceXForm::map(const McVec2f& p, float cx, float cy) const
{
  QTransform m;
  getMatrix(m, cx, cy);
  const QPointF q = mapPoint(m, p.x, p.y);
  return {static_cast<float>(q.x()), static_cast<float>(q.y())};
}

McVec2f SliceXForm::mapInverse(const McVec2f& p, float cx, float cy) const
{
  QTransform m;
  getInverseMatrix(m, cx, cy);
  const QPointF q = mapPoint(m, p.x, p.y);
  return {static_cast<float>(q.x()), static_cast<float>(q.y())};
}

void SliceXForm::rotate(float degrees, float pivotX, float pivotY)
{
  double sine = 0, cosine = 0;
  mc::sinCosDegrees(degrees, sine, cosine);
  const double vx = static_cast<double>(translationX) - pivotX;
  const double vy = static_cast<double>(translationY) - pivotY;
  translationX = static_cast<float>(vx * cosine + vy * sine + pivotX);
  translationY = static_cast<float>(-vx * sine + vy * cosine + pivotY);
  rotation += degrees;
}

SliceXForm SliceXForm::after(const SliceXForm& first) const
{
  // About the centre, mirroring turns a rotation round and negates what lies in x.
  SliceXForm moved = first;
  if (flip) {
    moved.translationX = -moved.translationX;
    moved.rotation = -moved.rotation;
    moved.flip = !moved.flip;
  }
  moved.rotate(rotation, 0.0f, 0.0f);
  moved.translationX += translationX;
  moved.translationY += translationY;
  return moved;
}

void SliceXForm::inv()
{
  translationX = -translationX;
  translationY = -translationY;
  rotation = -rotation;
}

SliceXForm SliceXForm::inverse() const
{
  SliceXForm negated = *this;
  negated.inv();
  return negated;
}

void SliceXForm::print() const
{
  std::printf("translation X = %f\n", static_cast<double>(translationX));
  std::printf("translation Y = %f\n", static_cast<double>(translationY));
  std::printf("rotation = %f\n", static_cast<double>(rotation));
  std::printf("\n");
}
