#include "zx/ZxObjectPool.h"

#include "ZxObjectCommands.h"
#include "zx/ZxMessage.h"
#include "zx/ZxModule.h"

#include <algorithm>

ZxObjectPool& ZxObjectPool::getThePool()
{
  static ZxObjectPool instance;
  return instance;
}

template <class Call>
void ZxObjectPool::tell(Call call)
{
  const std::vector<ZxPoolObserver*> observers = m_observers;
  for (ZxPoolObserver* o : observers)
    if (std::find(m_observers.begin(), m_observers.end(), o) != m_observers.end()) call(*o);
}

void ZxObjectPool::tellChanged(ZxObject* object)
{
  tell([object](ZxPoolObserver& o) { o.objectChanged(object); });
}

void ZxObjectPool::tellPortsChanged(ZxModule* module)
{
  tell([module](ZxPoolObserver& o) { o.portsChanged(module); });
}

std::string ZxObjectPool::freeLabel(const std::string& wanted, const ZxObject& object) const
{
  const std::string base = wanted.empty() ? object.getTypeId().name() : wanted;
  std::string label = base;
  bool isCommand = false;
  for (int n = 2;; ++n) {
    const ZxObject* const holder = find(label);
    const bool isTaken = !holder && ZxObjectCommands::isTaken(label, object);
    if ((!holder || holder == &object) && !isTaken) break;
    isCommand |= isTaken;
    label = base + " (" + std::to_string(n) + ")";
  }
  if (isCommand)
    ZxMessage::getTheMsg()->printf("\"%s\" is a command of the interpreter: the object is called \"%s\".",
                                   base.c_str(), label.c_str());
  return label;
}

void ZxObjectPool::add(ZxObject* object)
{
  if (!object || contains(object)) return;
  object->setLabel(McString(freeLabel(object->getLabel().str(), *object)));
  m_objects.emplace_back(object);
  object->m_inPool = true;
  tell([object](ZxPoolObserver& o) { o.objectAdded(object); });
}

void ZxObjectPool::take(const McHandle<ZxObject>& object)
{
  std::erase(m_objects, object);
  object->m_inPool = false;
  tell([&object](ZxPoolObserver& o) { o.objectRemoved(object.get()); });
}

bool ZxObjectPool::remove(ZxObject* object)
{
  if (!contains(object)) return true;
  const McHandle<ZxObject> alive(object);
  const auto* data = dynamic_cast<ZxData*>(object);
  if (data && data->isInUse()) {
    ZxMessage::getTheMsg()->printf("%s is being written and cannot be removed before that is done.",
                                   data->getLabel().getString());
    return false;
  }
  take(alive);
  if (!data) return true;
  const std::vector<McHandle<ZxObject>> others = m_objects; // A pass may change the pool.
  for (const McHandle<ZxObject>& o : others)
    if (auto* module = dynamic_cast<ZxModule*>(o.get())) module->forgetData(data);
  return true;
}

void ZxObjectPool::clear()
{
  const std::vector<McHandle<ZxObject>> objects = m_objects;
  for (const bool modules : {true, false})
    for (const McHandle<ZxObject>& o : objects)
      if ((dynamic_cast<ZxModule*>(o.get()) != nullptr) == modules && o->isInPool()) take(o);
}

bool ZxObjectPool::contains(const ZxObject* object) const noexcept
{
  return object &&
         std::any_of(m_objects.begin(), m_objects.end(), [&](const auto& o) { return o.get() == object; });
}

ZxObject* ZxObjectPool::find(std::string_view label) const noexcept
{
  const auto it = std::find_if(m_objects.begin(), m_objects.end(),
                               [&](const auto& o) { return o->getLabel().str() == label; });
  return it == m_objects.end() ? nullptr : it->get();
}

ZxObject* ZxObjectPool::create(std::string_view typeName)
{
  const McTypeInfo* type = McTypeInfo::find(typeName);
  auto* object = type ? dynamic_cast<ZxObject*>(type->create()) : nullptr;
  if (!object) return nullptr;
  if (object->getLabel().isEmpty()) object->setLabel(McString(std::string(typeName)));
  add(object);
  return object;
}
