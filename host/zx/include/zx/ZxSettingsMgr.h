#pragma once

#include <functional>
#include <string>
#include <vector>

/// The user's preferences, kept in the settings file of the program from one session to the next.
class ZxSettingsMgr {
public:
  static ZxSettingsMgr* getInstance();

  /// True when cross-sections are named by anatomy (coronal, sagittal), false when by axes (XZ, YZ).
  bool usesAnatomicalNames() const noexcept { return m_anatomicalNames; }
  /// Stores the preference and tells those who listen, when it changed.
  void setUsesAnatomicalNames(bool on);

  /// Calls a function after every change of a preference, for as long as its number is not given back.
  int addListener(std::function<void()> changed);
  void removeListener(int number);

private:
  ZxSettingsMgr();
  struct Listener {
    int number;
    std::function<void()> changed;
  };
  bool m_anatomicalNames;
  std::vector<Listener> m_listeners;
  int m_nextNumber = 0;
};
