#include "zx/ZxModuleClasses.h"

#include "zx/ZxModule.h"
#include "zx/ZxObjectPool.h"

#include <algorithm>
#include <map>

namespace {

using Types = std::vector<const McTypeInfo*>;

/// What the primary input of a class accepts. Only a module can tell: one is made, asked and dropped again,
/// once for each class.
const Types& inputTypesOf(const McTypeInfo& moduleClass)
{
  static std::map<const McTypeInfo*, Types> known;
  const auto [it, isNew] = known.try_emplace(&moduleClass);
  if (!isNew) return it->second;
  const McHandle<McHandable> made(moduleClass.create());
  if (const auto* module = dynamic_cast<const ZxModule*>(made.get()))
    it->second = module->portData.acceptedTypes();
  return it->second;
}

} // namespace

Types ZxModuleClasses::attachableTo(const ZxObject& object)
{
  Types classes;
  for (const McTypeInfo* type : McTypeInfo::all()) {
    if (!type->canCreate() || !type->isDerivedFrom(ZxModule::getClassTypeId())) continue;
    const Types& inputs = inputTypesOf(*type);
    if (std::any_of(inputs.begin(), inputs.end(), [&](const McTypeInfo* t) { return object.isOfType(*t); }))
      classes.push_back(type);
  }
  return classes;
}

ZxModule* ZxModuleClasses::attach(const McTypeInfo& moduleClass, ZxObject& object)
{
  auto* data = dynamic_cast<ZxData*>(&object);
  const McHandle<McHandable> made(moduleClass.create());
  auto* module = dynamic_cast<ZxModule*>(made.get());
  if (!data || !module || !module->portData.accepts(*data)) return nullptr;
  if (module->getLabel().isEmpty()) module->setLabel(McString(moduleClass.name()));
  ZxObjectPool::getThePool().add(module);
  module->change([module, data] { module->portData.connect(data); });
  return module->isInPool() ? module : nullptr;
}
