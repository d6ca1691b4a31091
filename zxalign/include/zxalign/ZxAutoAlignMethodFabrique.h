#pragma once

#include "mc/McDArray.h"
#include "mc/McString.h"
#include "zxalign/ZxAlignControl.h"
#include "zxalign/ZxAlignPlugInInterface.h"

#include <span>
#include <string>
#include <vector>

class ZxAlignSlices;
class ZxAutoAlignMethod;

/// The settings of a method that lives in a plug-in. Their values are the elements of a global array of the
/// interpreter, so that scripts set them, too; an element that is not set has its default.
struct ZxAlignMethodSettings {
  const char* array = nullptr;           ///< "::zxalign_mine"
  std::span<const ZxAlignSetting> table; ///< lives as long as the program
  /// Empty, or one sentence that names the setting and what is wrong with the value.
  std::string (*check)(const std::string& name, const std::string& value) = nullptr;
};

/// The registry of automatic methods. One per process.
///
/// A method has a name and a number, the align mode, by which the module, the tools and scripts ask for it.
/// Built-in methods have fixed numbers; further ones take the next number in the order of registration.
///
/// Plug-ins are shared libraries that the interpreter's variable kZxAlignPlugInVariable names: a list of
/// lists of three, which are a name for people, the entry symbol (a ZxAlignPlugInEntry) and the library. They
/// are loaded in that order when the registry is made, up to the first that cannot be used, and stay loaded.
class ZxAutoAlignMethodFabrique {
public:
  using CreateFunction = ZxAutoAlignMethod* (*)(ZxAlignSlices*);

  /// The registry of the process, made by the first call.
  static ZxAutoAlignMethodFabrique* getInstance();

  /// A registry with the built-in methods and those of the plug-ins. Prints nothing about plug-ins that
  /// cannot be used: getPlugIns() tells.
  ZxAutoAlignMethodFabrique();

  /// Adds a method under the next number. The first of several methods of one name is the one found by it.
  void registerAutoAlignMethodPlugIn(const char* name, CreateFunction create);

  /// Adds settings to those of the module. Of several settings of one name the first is the one found by it.
  void registerSettings(const ZxAlignMethodSettings& settings);
  /// The settings of the module and of all plug-ins, in the order of registration.
  const std::vector<ZxAlignSetting>& getSettings() const noexcept { return m_settingTable; }
  /// Sets one of a plug-in's from text. Empty, or what is wrong.
  std::string setSetting(const std::string& name, const std::string& value) const;
  /// Its value as text; empty for an unknown name.
  std::string getSetting(const std::string& name) const;
  bool hasSetting(const std::string& name) const { return settingsWith(name) != nullptr; } ///< of a plug-in

  /// A new method for a module by exact name or by number; null when there is none, or, after a message, when
  /// it could not be made. The caller owns it.
  ZxAutoAlignMethod* createAutoAlignMethod(ZxAlignSlices* module, const char* name) const;
  ZxAutoAlignMethod* createAutoAlignMethod(ZxAlignSlices* module, int id) const;

  /// Numbers and names of all methods in the order of registration.
  void getAutoAlignMethods(McDArray<int>& ids, McDArray<McString>& names) const;

  /// The plug-ins that were wanted, in the order of the list, and why those missing are.
  const std::vector<ZxAlignPlugIn>& getPlugIns() const noexcept { return m_plugIns; }

private:
  struct ZxAutoAlignMethodID {
    McString name;
    CreateFunction create = nullptr;
    int id = 0;
  };

  void registerAutoAlignMethod();
  void loadPlugIns();
  /// Empty, or what is wrong. Fills in what a loaded plug-in is.
  std::string loadPlugIn(const std::string& symbol, const std::string& library, ZxAlignPlugIn& plugIn);
  int getNextIdNumber() const noexcept;

  const ZxAlignMethodSettings* settingsWith(const std::string& name) const;

  static ZxAutoAlignMethod* make(const ZxAutoAlignMethodID& method, ZxAlignSlices* module);

  McDArray<ZxAutoAlignMethodID> m_methods;
  std::vector<ZxAlignMethodSettings> m_settings;
  std::vector<ZxAlignSetting> m_settingTable;
  std::vector<ZxAlignPlugIn> m_plugIns;
};
