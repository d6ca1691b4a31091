#include "zxalign/ZxAutoAlignMethodFabrique.h"

#include "ZxCenterAlignMethod.h"
#include "ZxEdgeDetectionAlignMethod.h"
#include "ZxLandmarkAlignMethod.h"
#include "ZxOptimizeAlignMethod.h"

#include <algorithm>

ZxAutoAlignMethodFabrique* ZxAutoAlignMethodFabrique::getInstance()
{
  static ZxAutoAlignMethodFabrique instance;
  return &instance;
}

ZxAutoAlignMethodFabrique::ZxAutoAlignMethodFabrique() { registerAutoAlignMethod(); }

void ZxAutoAlignMethodFabrique::registerAutoAlignMethod()
{
  m_methods.append({ZxCenterAlignMethod::methodName, &ZxCenterAlignMethod::createMethod, 0});
  m_methods.append({ZxOptimizeAlignMethod::methodName, &ZxOptimizeAlignMethod::createMethod, 1});
  m_methods.append({ZxLandmarkAlignMethod::methodName, &ZxLandmarkAlignMethod::createMethod, 2});
  m_methods.append({ZxEdgeDetectionAlignMethod::methodName, &ZxEdgeDetectionAlignMethod::createMethod, 3});
}

int ZxAutoAlignMethodFabrique::getNextIdNumber() const noexcept { return static_cast<int>(m_methods.size()); }

void ZxAutoAlignMethodFabrique::registerAutoAlignMethodPlugIn(const char* name, CreateFunction create)
{
  m_methods.append({McString(name), create, getNextIdNumber()});
}

ZxAutoAlignMethod* ZxAutoAlignMethodFabrique::createAutoAlignMethod(ZxAlignSlices* module,
                                                                    const char* name) const
{
  const auto it =
      std::find_if(m_methods.begin(), m_methods.end(), [&](const auto& m) { return m.name == name; });
  return it == m_methods.end() ? nullptr : it->create(module);
}

ZxAutoAlignMethod* ZxAutoAlignMethodFabrique::createAutoAlignMethod(ZxAlignSlices* module, int id) const
{
  const auto it = std::find_if(m_methods.begin(), m_methods.end(), [&](const auto& m) { return m.id == id; });
  return it == m_methods.end() ? nullptr : it->create(module);
}

void ZxAutoAlignMethodFabrique::getAutoAlignMethods(McDArray<int>& ids, McDArray<McString>& names) const
{
  ids.clear();
  names.clear();
  for (const ZxAutoAlignMethodID& m : m_methods) {
    ids.append(m.id);
    names.append(m.name);
  }
}
