#pragma once

#include <QSurfaceFormat>

/// What the platform's OpenGL can do, asked once.
class QxOpenGLSupport {
public:
  /// A context with the fixed pipeline can be made, on a platform whose windows can hold one.
  static bool isAvailable();
  /// isAvailable(), and drawing does not happen on the processor.
  static bool isHardware();
  /// The format of such a context.
  static QSurfaceFormat format();
};
