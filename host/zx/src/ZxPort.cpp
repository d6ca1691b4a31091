#include "zx/ZxPort.h"

#include "zx/ZxModule.h"

#include <algorithm>
#include <utility>

ZxPort::ZxPort(ZxModule* owner, const char* name, const char* label)
  : m_owner(owner), m_name(name), m_label(label)
{
  m_owner->m_ports.push_back(this);
}

ZxPort::~ZxPort() { std::erase(m_owner->m_ports, this); }

void ZxPort::touch()
{
  m_changed = true;
  appearanceChanged();
}

void ZxPort::setVisible(bool visible)
{
  if (std::exchange(m_visible, visible) != visible) appearanceChanged();
}

void ZxPort::setSensitive(bool sensitive)
{
  if (std::exchange(m_sensitive, sensitive) != sensitive) appearanceChanged();
}

void ZxPort::appearanceChanged() { m_owner->portsChanged(); }

void ZxPort::beginPass() noexcept
{
  m_newInPass = m_changed;
  m_changed = false;
}

void ZxPort::endPass()
{
  if (m_newInPass) passEnded();
  m_newInPass = false;
  m_changed = false;
}

ZxConnection::ZxConnection(ZxModule* owner, const char* name, std::vector<const McTypeInfo*> accepted)
  : ZxPort(owner, name, ""), m_accepted(std::move(accepted))
{
}

bool ZxConnection::accepts(const ZxObject& object) const
{
  return std::any_of(m_accepted.begin(), m_accepted.end(),
                     [&](const McTypeInfo* t) { return object.isOfType(*t); });
}

bool ZxConnection::connect(ZxData* source)
{
  if (source && !accepts(*source)) return false;
  if (source == m_source.get()) return true;
  m_source = McHandle<ZxData>(source);
  touch();
  return true;
}

void ZxConnection::disconnect() { connect(nullptr); }

ZxSpatialData* ZxConnection::getSpatialData() const noexcept
{
  return dynamic_cast<ZxSpatialData*>(m_source.get());
}

ZxLattice* ZxConnection::getLattice() const noexcept
{
  ZxSpatialData* data = getSpatialData();
  return data ? data->getLattice() : nullptr;
}

ZxPortFloatTextN::ZxPortFloatTextN(ZxModule* owner, const char* name, const char* label,
                                   std::vector<Field> fields)
  : ZxPort(owner, name, label), m_fields(std::move(fields))
{
}

void ZxPortFloatTextN::setValue(int i, float value)
{
  float& field = m_fields[static_cast<std::size_t>(i)].value;
  if (field == value) return;
  field = value;
  touch();
}

ZxPortMultiMenu::ZxPortMultiMenu(ZxModule* owner, const char* name, const char* label,
                                 std::vector<std::string> entries, int index)
  : ZxPort(owner, name, label), m_entries(std::move(entries)), m_index(index)
{
}

void ZxPortMultiMenu::setValue(int index)
{
  if (index == m_index || index < 0 || index >= static_cast<int>(m_entries.size())) return;
  m_index = index;
  touch();
}

ZxPortButtonList::ZxPortButtonList(ZxModule* owner, const char* name, const char* label,
                                   std::vector<std::string> buttons)
  : ZxPort(owner, name, label)
{
  for (std::string& b : buttons) m_buttons.push_back({std::move(b)});
}

void ZxPortButtonList::setButtonLabel(int i, const char* label)
{
  std::string& shown = m_buttons[static_cast<std::size_t>(i)].label;
  if (shown == label) return;
  shown = label;
  appearanceChanged();
}

void ZxPortButtonList::setButtonSensitive(int i, bool on)
{
  if (std::exchange(m_buttons[static_cast<std::size_t>(i)].sensitive, on) != on) appearanceChanged();
}

void ZxPortButtonList::hit(int i)
{
  if (i < 0 || i >= getNum() || !isButtonSensitive(i)) return;
  m_hit = i;
  touch();
}
