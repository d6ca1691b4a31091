#include "zx/ZxObjectPool.h"

#include "zx/ZxMessage.h"
#include "zx/ZxModule.h"

#include <algorithm>

ZxObjectPool& ZxObjectPool::getThePool()
{
  static ZxObjectPool instance;
  return instance;
}

std::string ZxObjectPool::freeLabel(const std::string& wanted, const ZxObject* object) const
{
  std::string label = wanted;
  for (int n = 2;; ++n) {
    const ZxObject* const holder = find(label);
    if (!holder || holder == object) return label;
    label = wanted + " (" + std::to_string(n) + ")";
  }
}

void ZxObjectPool::add(ZxObject* object)
{
  if (!object || contains(object)) return;
  object->setLabel(freeLabel(object->getLabel().str(), object));
  m_objects.emplace_back(object);
  changed();
}

bool ZxObjectPool::remove(ZxObject* object)
{
  const McHandle<ZxObject> alive(object);
  const auto* data = dynamic_cast<ZxData*>(object);
  if (data && data->isInUse()) {
    ZxMessage::getTheMsg()->printf("%s is being written and cannot be removed before that is done.",
                                   data->getLabel().getString());
    return false;
  }
  std::erase(m_objects, alive);
  changed();
  if (!data) return true;
  const std::vector<McHandle<ZxObject>> others = m_objects; // A pass may change the pool.
  for (const McHandle<ZxObject>& o : others)
    if (auto* module = dynamic_cast<ZxModule*>(o.get())) module->forgetData(data);
  return true;
}

void ZxObjectPool::clear()
{
  std::erase_if(m_objects,
                [](const McHandle<ZxObject>& o) { return dynamic_cast<ZxModule*>(o.get()) != nullptr; });
  m_objects.clear();
  changed();
}

int ZxObjectPool::addListener(std::function<void()> changed)
{
  m_listeners.push_back({m_nextNumber, std::move(changed)});
  return m_nextNumber++;
}

void ZxObjectPool::removeListener(int number)
{
  std::erase_if(m_listeners, [&](const Listener& l) { return l.number == number; });
}

void ZxObjectPool::changed()
{
  const std::vector<Listener> listeners = m_listeners; // One that hears of it may leave or come.
  for (const Listener& listener : listeners) listener.changed();
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
