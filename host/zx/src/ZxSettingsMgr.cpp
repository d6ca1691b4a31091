#include "zx/ZxSettingsMgr.h"

#include <QSettings>

namespace {

constexpr const char* anatomicalNamesKey = "preferences/anatomicalNames";

} // namespace

ZxSettingsMgr* ZxSettingsMgr::getInstance()
{
  static ZxSettingsMgr manager;
  return &manager;
}

ZxSettingsMgr::ZxSettingsMgr()
  : m_anatomicalNames(QSettings("zxalign", "orvel").value(anatomicalNamesKey, true).toBool())
{
}

void ZxSettingsMgr::setUsesAnatomicalNames(bool on)
{
  if (on == m_anatomicalNames) return;
  m_anatomicalNames = on;
  QSettings("zxalign", "orvel").setValue(anatomicalNamesKey, on);
  const std::vector<Listener> listeners = m_listeners; // One may go while it is told.
  for (const Listener& listener : listeners) listener.changed();
}

int ZxSettingsMgr::addListener(std::function<void()> changed)
{
  m_listeners.push_back({m_nextNumber, std::move(changed)});
  return m_nextNumber++;
}

void ZxSettingsMgr::removeListener(int number)
{
  std::erase_if(m_listeners, [number](const Listener& listener) { return listener.number == number; });
}
