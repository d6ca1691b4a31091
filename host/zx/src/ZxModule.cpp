#include "zx/ZxModule.h"

#include "zx/ZxObjectPool.h"

#include <algorithm>
#include <utility>

const McTypeInfo& ZxModule::getClassTypeId()
{
  static const McTypeInfo type("ZxModule", {&ZxObject::getClassTypeId()});
  return type;
}

ZxModule::ZxModule(std::vector<const McTypeInfo*> dataTypes) : portData(this, "data", std::move(dataTypes)) {}

void ZxModule::fire()
{
  if (m_inPass) return;
  const McHandle<ZxModule> alive(this); // A pass may remove the module from the pool.
  do {
    runPass();
  } while (takeUpWaiting());
}

void ZxModule::runPass()
{
  m_inPass = true;
  update();
  for (ZxPort* p : m_ports) p->beginPass();
  compute();
  for (ZxPort* p : m_ports) p->endPass();
  update();
  m_inPass = false;
  m_last.clear();
  portsChanged();
}

bool ZxModule::takeUpWaiting()
{
  const bool again = !m_forgotten.empty() || !m_waiting.empty();
  for (ZxPort* p : std::exchange(m_forgotten, {})) p->touch();
  if (!m_waiting.empty()) {
    const std::function<void()> edit = std::move(m_waiting.front());
    m_waiting.pop_front();
    edit();
  }
  return again;
}

void ZxModule::change(std::function<void()> edit)
{
  m_waiting.push_back(std::move(edit));
  if (m_inPass) return;
  const McHandle<ZxModule> alive(this);
  takeUpWaiting();
  fire();
}

void ZxModule::withoutPasses(const std::function<void()>& work)
{
  if (m_inPass) return work();
  const McHandle<ZxModule> alive(this);
  m_inPass = true;
  work();
  m_inPass = false;
  m_last.clear();
  const bool touched =
      std::any_of(m_ports.begin(), m_ports.end(), [](const ZxPort* p) { return p->m_changed; });
  if (takeUpWaiting() || touched) fire();
}

void ZxModule::portsChanged()
{
  if (isInPool()) ZxObjectPool::getThePool().tellPortsChanged(this);
}

ZxPort* ZxModule::findPort(std::string_view name) const noexcept
{
  const auto it =
      std::find_if(m_ports.begin(), m_ports.end(), [&](const ZxPort* p) { return p->getName() == name; });
  return it == m_ports.end() ? nullptr : *it;
}

void ZxModule::forgetData(const ZxData* data)
{
  bool found = false;
  for (ZxPort* p : m_ports) {
    auto* connection = dynamic_cast<ZxConnection*>(p);
    if (!connection || !data || connection->getSource() != data) continue;
    if (m_inPass) m_last.emplace_back(connection->getSource());
    connection->disconnect();
    if (m_inPass) m_forgotten.push_back(p);
    found = true;
  }
  if (found) fire();
}

const McTypeInfo& ZxCompModule::getClassTypeId()
{
  static const McTypeInfo type("ZxCompModule", {&ZxModule::getClassTypeId()});
  return type;
}

ZxData* ZxCompModule::getResult(int slot) const noexcept
{
  const auto i = static_cast<std::size_t>(slot);
  if (i >= m_results.size() || !ZxObjectPool::getThePool().contains(m_results[i].get())) return nullptr;
  return m_results[i].get();
}

void ZxCompModule::forgetData(const ZxData* data)
{
  for (McHandle<ZxData>& result : m_results)
    if (result.get() == data) result = {};
  ZxModule::forgetData(data);
  update();
}

void ZxCompModule::setResult(int slot, ZxData* result)
{
  const auto i = static_cast<std::size_t>(slot);
  if (i >= m_results.size()) m_results.resize(i + 1);
  m_results[i] = McHandle<ZxData>(result);
  if (result) ZxObjectPool::getThePool().add(result);
}
