#pragma once

#include <QIcon>

/// The program's icons.
class ZxResource {
public:
  /// The icon of a name like "AlignMirror.png": drawn from the vector picture of that name, sharp at every
  /// size and scale, in colours that can be read on the program's palette, also after that has changed. Null,
  /// after a message, when there is none.
  static QIcon readIcon(const char* name);
};
