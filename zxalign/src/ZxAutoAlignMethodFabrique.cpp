#include "zxalign/ZxAutoAlignMethodFabrique.h"

#include "Guarded.h"
#include "ZxCenterAlignMethod.h"
#include "ZxEdgeDetectionAlignMethod.h"
#include "ZxLandmarkAlignMethod.h"
#include "ZxOptimizeAlignMethod.h"
#include "zx/ZxDSO.h"
#include "zx/ZxInterpreter.h"
#include "zx/ZxMessage.h"
#include "zxalign/ZxAlignSettings.h"

#include <dlfcn.h>

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
  const std::span<const ZxAlignSetting> own = ZxAlignSettings::table();
  m_settingTable.assign(own.begin(), own.end());
  loadPlugIns();
}

void ZxAutoAlignMethodFabrique::loadPlugIns()
{
  const char* list = ZxInterpreter::getTheInterpreter().getVar(kZxAlignPlugInVariable);
  if (!list) return;
  const auto wanted = ZxInterpreter::splitList(list);
  if (!wanted) {
    m_plugIns.push_back({list, "the list of plug-ins is no well-formed list", {}, {}});
    return;
  }
  bool ended = false;
  for (const std::string& entry : *wanted) {
    const auto items = ZxInterpreter::splitList(entry.c_str());
    const bool complete = items && items->size() == 3;
    ZxAlignPlugIn plugIn{complete ? items->front() : entry, {}, {}, {}};
    if (ended)
      plugIn.problem = "one before it in the list could not be used";
    else
      plugIn.problem = complete ? loadPlugIn((*items)[1], (*items)[2], plugIn)
                                : "its entry does not have three items: name, symbol and library";
    ended = ended || !plugIn.problem.empty();
    m_plugIns.push_back(std::move(plugIn));
  }
}

std::string ZxAutoAlignMethodFabrique::loadPlugIn(const std::string& symbol, const std::string& library,
                                                  ZxAlignPlugIn& plugIn)
{
  ZxDSO object;
  if (object.open(library.c_str(), ZxDSO::Symbols::Local) != 0) return object.getError();
  const void* number = object.getSymbol("zxalign_plugin_interface");
  if (!number) return "the library " + library + " does not say which plug-in interface it was built for";
  const int built = *static_cast<const int*>(number);
  if (built != kZxAlignPlugInInterface)
    return "the library " + library + " was built for the plug-in interface " + std::to_string(built) +
           " and this is " + std::to_string(kZxAlignPlugInInterface);
  const auto entry = reinterpret_cast<ZxAlignPlugInEntry>(object.getSymbol(symbol.c_str()));
  if (!entry) return "the library " + library + " lacks the symbol " + symbol;
  const std::size_t methods = m_methods.size(), settings = m_settings.size(), rows = m_settingTable.size();
  const std::string problem = guarded([&] { entry(this); });
  if (problem.empty()) {
    Dl_info place{};
    if (dladdr(reinterpret_cast<const void*>(entry), &place) != 0) plugIn.path = place.dli_fname;
    for (std::size_t k = methods; k < m_methods.size(); ++k) plugIn.methods.push_back(m_methods[k].id);
    return {};
  }
  // A plug-in that failed half-way offers nothing.
  m_methods.resize(methods);
  m_settings.resize(settings);
  m_settingTable.resize(rows);
  return "its entry " + symbol + " failed: " + problem;
}

int ZxAutoAlignMethodFabrique::getNextIdNumber() const noexcept { return static_cast<int>(m_methods.size()); }

void ZxAutoAlignMethodFabrique::registerAutoAlignMethodPlugIn(const char* name, CreateFunction create)
{
  if (!name || !create) return;
  m_methods.append({McString(name), create, getNextIdNumber()});
}

void ZxAutoAlignMethodFabrique::registerSettings(const ZxAlignMethodSettings& settings)
{
  if (!settings.array || !settings.check) return;
  m_settings.push_back(settings);
  m_settingTable.insert(m_settingTable.end(), settings.table.begin(), settings.table.end());
}

const ZxAlignMethodSettings* ZxAutoAlignMethodFabrique::settingsWith(const std::string& name) const
{
  for (const ZxAlignMethodSettings& settings : m_settings)
    for (const ZxAlignSetting& setting : settings.table)
      if (name == setting.name) return &settings;
  return nullptr;
}

std::string ZxAutoAlignMethodFabrique::setSetting(const std::string& name, const std::string& value) const
{
  const ZxAlignMethodSettings* settings = settingsWith(name);
  if (!settings) return "There is no setting named " + name + ".";
  std::string problem = settings->check(name, value);
  const std::string variable = settings->array + ("(" + name + ")");
  if (problem.empty() && !ZxInterpreter::getTheInterpreter().setVar(variable.c_str(), value.c_str()))
    problem = "The variable " + variable + " of the setting " + name + " cannot be set.";
  return problem;
}

std::string ZxAutoAlignMethodFabrique::getSetting(const std::string& name) const
{
  const ZxAlignMethodSettings* settings = settingsWith(name);
  if (!settings) return {};
  const std::string variable = settings->array + ("(" + name + ")");
  if (const char* value = ZxInterpreter::getTheInterpreter().getVar(variable.c_str())) return value;
  for (const ZxAlignSetting& setting : settings->table)
    if (name == setting.name) return setting.defaultValue;
  return {};
}

ZxAutoAlignMethod* ZxAutoAlignMethodFabrique::createAutoAlignMethod(ZxAlignSlices* module,
                                                                    const char* name) const
{
  if (!name) return nullptr;
  const auto it =
      std::find_if(m_methods.begin(), m_methods.end(), [&](const auto& m) { return m.name == name; });
  return it == m_methods.end() ? nullptr : make(*it, module);
}

ZxAutoAlignMethod* ZxAutoAlignMethodFabrique::createAutoAlignMethod(ZxAlignSlices* module, int id) const
{
  const auto it = std::find_if(m_methods.begin(), m_methods.end(), [&](const auto& m) { return m.id == id; });
  return it == m_methods.end() ? nullptr : make(*it, module);
}

ZxAutoAlignMethod* ZxAutoAlignMethodFabrique::make(const ZxAutoAlignMethodID& method, ZxAlignSlices* module)
{
  ZxAutoAlignMethod* made = nullptr;
  const std::string problem = guarded([&] { made = method.create(module); });
  if (!problem.empty())
    ZxMessage::getTheMsg()->printf("The automatic method %s could not be made: %s.", method.name.getString(),
                                   problem.c_str());
  return made;
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
