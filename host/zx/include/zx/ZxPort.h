#pragma once

#include "mc/McString.h"
#include "zx/ZxData.h"

#include <string>
#include <vector>

class ZxModule;

/// A control or connection of a module: named, labelled, shown in the port panel.
///
/// Setting a port to the value that it has is not a change. A changed port is new to the next compute() pass
/// of its module; what a pass writes itself is not new to anyone and starts no further pass.
class ZxPort {
public:
  ZxPort(ZxModule* owner, const char* name, const char* label);
  virtual ~ZxPort();
  ZxPort(const ZxPort&) = delete;
  ZxPort& operator=(const ZxPort&) = delete;

  const std::string& getName() const noexcept { return m_name; }
  const std::string& getLabel() const noexcept { return m_label; }
  ZxModule* getOwner() const noexcept { return m_owner; }
  /// What the port is for, with the unit of its values: one or two sentences for a person. May be empty.
  const std::string& getTip() const noexcept { return m_tip; }
  void setTip(std::string tip) { m_tip = std::move(tip); }
  /// True inside a compute() pass when the port has changed since the pass before.
  bool isNew() const noexcept { return m_newInPass; }
  /// Says that the port has changed.
  void touch();

  bool isVisible() const noexcept { return m_visible; }
  void setVisible(bool visible);
  bool isSensitive() const noexcept { return m_sensitive; }
  void setSensitive(bool sensitive);

  /// Answers a command of the interpreter: words are the module, the port, the command and its arguments.
  /// Setting a value marks the port as changed and runs no pass: `MODULE fire` does. During a pass it waits
  /// for its end, and a pass of its own follows.
  virtual int parse(Tcl_Interp* interp, std::span<char* const> words) = 0;
  virtual std::vector<ZxCommandHelp> commands() const = 0;

protected:
  /// Tells those who show the port that something about it has changed that is no new value.
  void appearanceChanged();
  /// The pass in which the port was new has ended.
  virtual void passEnded() {}

private:
  friend class ZxModule;
  void beginPass() noexcept;
  void endPass();

  ZxModule* m_owner;
  std::string m_name;
  std::string m_label;
  std::string m_tip;
  bool m_changed = false;
  bool m_newInPass = false;
  bool m_visible = true;
  bool m_sensitive = true;
};

/// Connects a module to a data object of one of the accepted types. Holds a handle to its source.
class ZxConnection : public ZxPort {
public:
  ZxConnection(ZxModule* owner, const char* name, std::vector<const McTypeInfo*> accepted);

  int parse(Tcl_Interp* interp, std::span<char* const> words) override;
  std::vector<ZxCommandHelp> commands() const override;
  const std::vector<const McTypeInfo*>& acceptedTypes() const noexcept { return m_accepted; }
  bool accepts(const ZxObject& object) const;
  /// Connects to an object. False, and nothing changes, when its type is not accepted.
  bool connect(ZxData* source);
  void disconnect();
  ZxData* getSource() const noexcept { return m_source.get(); }
  bool isConnected() const noexcept { return m_source.get() != nullptr; }
  /// The source as spatial data, or null.
  ZxSpatialData* getSpatialData() const noexcept;
  /// The source's lattice, or null.
  ZxLattice* getLattice() const noexcept;

private:
  std::vector<const McTypeInfo*> m_accepted;
  McHandle<ZxData> m_source;
};

/// A row of float fields.
class ZxPortFloatTextN : public ZxPort {
public:
  struct Field {
    std::string label;
    float value;
  };
  ZxPortFloatTextN(ZxModule* owner, const char* name, const char* label, std::vector<Field> fields);
  int parse(Tcl_Interp* interp, std::span<char* const> words) override;
  std::vector<ZxCommandHelp> commands() const override;
  int getNum() const noexcept { return static_cast<int>(m_fields.size()); }
  const std::string& getFieldLabel(int i) const noexcept
  {
    return m_fields[static_cast<std::size_t>(i)].label;
  }
  float getValue(int i) const noexcept { return m_fields[static_cast<std::size_t>(i)].value; }
  void setValue(int i, float value);

private:
  std::vector<Field> m_fields;
};

/// A choice of one entry.
class ZxPortMultiMenu : public ZxPort {
public:
  ZxPortMultiMenu(ZxModule* owner, const char* name, const char* label, std::vector<std::string> entries,
                  int index);
  int parse(Tcl_Interp* interp, std::span<char* const> words) override;
  std::vector<ZxCommandHelp> commands() const override;
  const std::vector<std::string>& getEntries() const noexcept { return m_entries; }
  int getValue() const noexcept { return m_index; }
  /// Out-of-range indices are ignored.
  void setValue(int index);

private:
  std::vector<std::string> m_entries;
  int m_index;
};

/// A row of buttons. A press lasts for one compute() pass.
class ZxPortButtonList : public ZxPort {
public:
  ZxPortButtonList(ZxModule* owner, const char* name, const char* label, std::vector<std::string> buttons);
  int parse(Tcl_Interp* interp, std::span<char* const> words) override;
  std::vector<ZxCommandHelp> commands() const override;
  int getNum() const noexcept { return static_cast<int>(m_buttons.size()); }
  const std::string& getButtonLabel(int i) const noexcept
  {
    return m_buttons[static_cast<std::size_t>(i)].label;
  }
  void setButtonLabel(int i, const char* label);
  bool isButtonSensitive(int i) const noexcept { return m_buttons[static_cast<std::size_t>(i)].sensitive; }
  void setButtonSensitive(int i, bool on);
  /// Presses a button; an insensitive one does nothing.
  void hit(int i);
  /// The button pressed since the pass before, or -1.
  int getHit() const noexcept { return m_hit; }

protected:
  void passEnded() override { m_hit = -1; }

private:
  struct Button {
    std::string label;
    bool sensitive = true;
  };
  std::vector<Button> m_buttons;
  int m_hit = -1;
};
