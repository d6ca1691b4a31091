#pragma once

#include <vector>

class McTypeInfo;
class ZxModule;
class ZxObject;

/// The module classes of the loaded packages, as something that can be attached to data.
class ZxModuleClasses {
public:
  /// The classes whose primary input accepts an object, in the order of their registration.
  static std::vector<const McTypeInfo*> attachableTo(const ZxObject& object);
  /// Puts a new module of a class into the pool, connects its primary input and runs its first pass. Null
  /// when the class makes no module, or one that does not accept the object, or when the module left the
  /// pool again. A module that disconnects the object in its first pass stays, without input.
  static ZxModule* attach(const McTypeInfo& moduleClass, ZxObject& object);
};
