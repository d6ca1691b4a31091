#include "QxOpenGLSupport.h"

#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>

#include <optional>

namespace {

/// Name of what draws, or nothing when there is no context.
std::optional<QByteArray> askForRenderer()
{
  const QString platform = QGuiApplication::platformName();
  // Their windows cannot show a widget that draws by OpenGL, whatever a context says.
  if (platform == "offscreen" || platform == "minimal" || platform == "vnc") return std::nullopt;
  QOpenGLContext context;
  context.setFormat(QxOpenGLSupport::format());
  if (!context.create() || context.isOpenGLES()) return std::nullopt;
  QOffscreenSurface surface;
  surface.setFormat(context.format());
  surface.create();
  if (!context.makeCurrent(&surface)) return std::nullopt;
  const GLubyte* name = context.functions()->glGetString(GL_RENDERER);
  const QByteArray renderer(reinterpret_cast<const char*>(name));
  context.doneCurrent();
  return renderer.toLower();
}

const std::optional<QByteArray>& renderer()
{
  static const std::optional<QByteArray> name = askForRenderer();
  return name;
}

} // namespace

bool QxOpenGLSupport::isAvailable() { return renderer().has_value(); }

bool QxOpenGLSupport::isHardware()
{
  if (!isAvailable()) return false;
  for (const char* software : {"llvmpipe", "softpipe", "swrast", "swr", "software"})
    if (renderer()->contains(software)) return false;
  return true;
}

QSurfaceFormat QxOpenGLSupport::format()
{
  QSurfaceFormat format;
  format.setRenderableType(QSurfaceFormat::OpenGL);
  format.setVersion(2, 1);
  format.setProfile(QSurfaceFormat::CompatibilityProfile);
  return format;
}
