#pragma once

#include "mc/McDArray.h"
#include "mc/McString.h"

#include <memory>

class ZxAlignSlices;
class ZxAutoAlignMethod;

/// The registry of automatic methods. One per process.
///
/// A method has a name and a number, the align mode, by which the module, the tools and scripts ask for it.
/// Built-in methods have fixed numbers; further ones take the next number in the order of registration.
class ZxAutoAlignMethodFabrique {
public:
  using CreateFunction = ZxAutoAlignMethod* (*)(ZxAlignSlices*);

  static ZxAutoAlignMethodFabrique* getInstance();

  /// Adds a method under the next number. The first of several methods of one name is the one found by it.
  void registerAutoAlignMethodPlugIn(const char* name, CreateFunction create);

  /// A new method for a module by exact name or by number; null when there is none. The caller owns it.
  ZxAutoAlignMethod* createAutoAlignMethod(ZxAlignSlices* module, const char* name) const;
  ZxAutoAlignMethod* createAutoAlignMethod(ZxAlignSlices* module, int id) const;

  /// Numbers and names of all methods in the order of registration.
  void getAutoAlignMethods(McDArray<int>& ids, McDArray<McString>& names) const;

private:
  struct ZxAutoAlignMethodID {
    McString name;
    CreateFunction create = nullptr;
    int id = 0;
  };

  ZxAutoAlignMethodFabrique();
  void registerAutoAlignMethod();
  int getNextIdNumber() const noexcept;

  McDArray<ZxAutoAlignMethodID> m_methods;
};
