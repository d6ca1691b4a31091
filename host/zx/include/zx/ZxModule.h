#pragma once

#include "zx/ZxData.h"
#include "zx/ZxPort.h"

#include <deque>
#include <functional>
#include <string_view>
#include <vector>

/// An object with ports that reacts to their changes.
class ZxModule : public ZxObject {
  std::vector<ZxPort*> m_ports; // registered by the ports themselves, which are members of the module

public:
  static const McTypeInfo& getClassTypeId();
  const McTypeInfo& getTypeId() const override { return getClassTypeId(); }

  /// The commands of a module and, by name, of its ports.
  int parse(Tcl_Interp* interp, int argc, char** argv) override;
  std::vector<ZxCommandHelp> commands() const override;

  /// The primary input.
  ZxConnection portData;

  /// Runs one pass: update(), then compute() with the changed ports new, then update(). A call from inside a
  /// pass does nothing.
  void fire();
  /// Makes a change to the ports that comes from outside, as from a person or a script, and runs a pass for
  /// it. During a pass the change waits until that has ended; changes wait in order, each for its own pass.
  void change(std::function<void()> edit);
  /// True while a pass of this module runs.
  bool isInPass() const noexcept { return m_inPass; }
  /// Sets which ports are visible and sensitive.
  virtual void update() {}
  /// Reacts to the ports that are new.
  virtual void compute() {}

  /// Ports in the order of their creation, portData first.
  const std::vector<ZxPort*>& getPorts() const noexcept { return m_ports; }
  /// The port of that name, or null.
  ZxPort* findPort(std::string_view name) const noexcept;
  /// Disconnects every connection to an object and, when there was one, runs a pass; during a pass, right
  /// after it. The pool calls this when the object is removed.
  virtual void forgetData(const ZxData* data);

protected:
  /// Does work that no pass may disturb, as if it were part of one: what asks for a pass meanwhile gets it
  /// afterwards, and data that go away meanwhile live until then.
  void withoutPasses(const std::function<void()>& work);

  /// The types that the primary input accepts.
  explicit ZxModule(std::vector<const McTypeInfo*> dataTypes);

private:
  friend class ZxPort;
  void runPass();
  /// True when something that came up during the pass asks for another one.
  bool takeUpWaiting();
  void portsChanged();

  bool m_inPass = false;
  std::deque<std::function<void()>> m_waiting;
  std::vector<ZxPort*> m_forgotten;     // connections whose data went away during a pass
  std::vector<McHandle<ZxData>> m_last; // those data, which the pass may still be using
};

/// A module that makes results from its input.
class ZxCompModule : public ZxModule {
public:
  static const McTypeInfo& getClassTypeId();
  const McTypeInfo& getTypeId() const override { return getClassTypeId(); }

  int parse(Tcl_Interp* interp, int argc, char** argv) override;
  std::vector<ZxCommandHelp> commands() const override;

  /// Slots from 0 that have held a result.
  int getNumResults() const noexcept { return static_cast<int>(m_results.size()); }
  /// The result in a slot, or null. A result that was removed from the pool is no result any more.
  ZxData* getResult(int slot = 0) const noexcept;
  /// Puts a result into a slot and into the pool.
  void setResult(int slot, ZxData* result);
  /// Lets go of a result, too.
  void forgetData(const ZxData* data) override;

protected:
  using ZxModule::ZxModule;

private:
  std::vector<McHandle<ZxData>> m_results;
};
