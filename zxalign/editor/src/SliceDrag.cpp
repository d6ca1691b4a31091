#include "SliceDrag.h"

#include "mc/McMath.h"
#include "mc/McRound.h"

#include <QPointF>

#include <utility>

namespace {

// Not pi / 180, on purpose: a turned slice is hit where this factor puts its edges.
constexpr double kRadians = 0.017453;

// The middle of the viewport; the halves of a pixel are counted in one case each, and cut off in all others.
QPointF middleOf(QSize viewport, bool exact)
{
  const QPoint whole(viewport.width() / 2, viewport.height() / 2);
  return exact ? QPointF(viewport.width() * 0.5, viewport.height() * 0.5) : QPointF(whole);
}

bool hits(SliceDrag::Kind kind, const SliceDrag::Scene& scene, const SliceXForm& slice, QPoint mouse)
{
  const bool exact = kind == SliceDrag::Kind::Translation && !scene.editsSecond;
  const double zoom = scene.zoom;
  const QPointF middle = middleOf(scene.viewport, exact);
  const double u = mouse.x() - zoom * slice.translationX - middle.x();
  const double v = mouse.y() - zoom * slice.translationY - middle.y();
  const double angle = -static_cast<double>(slice.rotation) * kRadians;
  const double sine = mc::sin(angle), cosine = mc::cos(angle);
  const double width = zoom * scene.slice.width(), height = zoom * scene.slice.height();
  const double x = u * cosine + v * sine + width * 0.5;
  const double y = -u * sine + v * cosine + height * 0.5;
  const auto whole = exact ? mc::roundHalfUp : mc::truncToInt;
  return whole(x) >= 0 && whole(x) < width && whole(y) >= 0 && whole(y) < height;
}

double angleOf(QPointF p) { return mc::atan2(-p.y(), p.x()); }

} // namespace

bool SliceDrag::begin(Kind kind, const Scene& scene, const Transforms& transforms, QPoint mouse,
                      bool together)
{
  if (!hits(kind, scene, transforms[scene.editsSecond], mouse)) return false;
  m_kind = kind;
  m_together = together;
  m_mouse = mouse;
  m_before = transforms;
  for (std::size_t i : {0, 1})
    m_translations[i] = {mc::truncToInt(transforms[i].translationX),
                         mc::truncToInt(transforms[i].translationY)};
  return true;
}

void SliceDrag::moveTo(const Scene& scene, Transforms& transforms, QPoint mouse)
{
  if (m_kind == Kind::Translation) translate(scene, transforms, mouse);
  if (m_kind == Kind::Rotation) rotate(scene, transforms, mouse);
}

void SliceDrag::translate(const Scene& scene, Transforms& transforms, QPoint mouse) const
{
  const QPoint travel = mouse - m_mouse;
  for (std::size_t i : {0, 1}) {
    if (i != std::size_t{scene.editsSecond} && !m_together) continue;
    const QPoint start = m_translations[i];
    transforms[i].translationX = static_cast<float>(start.x()) + static_cast<float>(travel.x()) / scene.zoom;
    transforms[i].translationY = static_cast<float>(start.y()) + static_cast<float>(travel.y()) / scene.zoom;
  }
}

void SliceDrag::rotate(const Scene& scene, Transforms& transforms, QPoint mouse)
{
  SliceXForm& dragged = transforms[scene.editsSecond];
  const QPointF centre = middleOf(scene.viewport, scene.editsSecond) +
                         scene.zoom * QPointF(dragged.translationX, dragged.translationY);
  const double turn = angleOf(mouse - centre) - angleOf(m_mouse - centre);
  const auto degrees = static_cast<float>(turn * 180.0 / mc::kPi);
  if (m_together) transforms[!scene.editsSecond].rotate(degrees, dragged.translationX, dragged.translationY);
  dragged.rotation += degrees;
  m_mouse = mouse;
}

SliceDrag::Kind SliceDrag::finish() { return std::exchange(m_kind, Kind::None); }

SliceDrag::Kind SliceDrag::cancel(Transforms& transforms)
{
  if (m_kind != Kind::None) transforms = m_before;
  return finish();
}
