#pragma once

#include "mc/McHandable.h"
#include "mc/McString.h"
#include "mc/McTypeInfo.h"
#include "zx/ZxCommand.h"

#include <vector>

/// Everything that the object pool can hold: data and modules. Owned by handles.
class ZxObject : public McHandable {
public:
  static const McTypeInfo& getClassTypeId();
  virtual const McTypeInfo& getTypeId() const { return getClassTypeId(); }
  bool isOfType(const McTypeInfo& type) const { return getTypeId().isDerivedFrom(type); }

  const McString& getLabel() const noexcept { return m_label; }
  /// Sets the label. In the pool labels are unique: one that is taken, or is the name of a command of the
  /// interpreter, gets a number.
  void setLabel(McString label);
  /// True while the object is in the pool.
  bool isInPool() const noexcept { return m_inPool; }

  /// Answers a command of the interpreter: argv[0] is the name of the object, argv[1] the command, the rest
  /// its arguments. Sets the result of the interpreter; returns kZxOk or kZxError. A class that knows further
  /// commands overrides this and passes what it does not know on to its base. Only the interpreter calls it,
  /// with argc of at least 2.
  virtual int parse(Tcl_Interp* interp, int argc, char** argv);
  /// What parse() knows: for help, completion and messages.
  virtual std::vector<ZxCommandHelp> commands() const;

protected:
  /// Tells the observers of the pool, while the object is in it, that something about it has changed.
  void changed();

private:
  friend class ZxObjectPool;
  bool m_inPool = false;
  McString m_label;
};
