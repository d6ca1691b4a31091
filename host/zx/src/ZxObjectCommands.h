#pragma once

#include "zx/ZxPoolObserver.h"

#include <map>
#include <string>

struct Tcl_Interp;
struct Tcl_Command_;

/// Keeps one command in the interpreter for every object of the pool, under its label.
class ZxObjectCommands : public ZxPoolObserver {
public:
  explicit ZxObjectCommands(Tcl_Interp* interp);
  ~ZxObjectCommands() override;

  /// True when the interpreter has a command of that name that is not the one of this object.
  static bool isTaken(const std::string& label, const ZxObject& object);

  void objectAdded(ZxObject* object) override;
  void objectRemoved(ZxObject* object) override;
  void objectChanged(ZxObject* object) override;

private:
  struct Entry {
    std::string label;
    Tcl_Command_* command; ///< null when a script has replaced or deleted it
  };
  static void commandDeleted(void* clientData);
  void make(ZxObject* object);

  Tcl_Interp* m_interp;
  std::map<const ZxObject*, Entry> m_entries;
};
