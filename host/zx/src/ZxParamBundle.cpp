#include "zx/ZxParamBundle.h"

#include <algorithm>
#include <utility>

namespace {

constexpr char lower(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::string folded(std::string_view name)
{
  std::string text(name);
  std::transform(text.begin(), text.end(), text.begin(), lower);
  return text;
}

ZxParamBundle::Value copyOf(const ZxParamBundle::Value& value)
{
  if (const auto* bundle = std::get_if<ZxParamBundle::Bundle>(&value))
    return std::make_unique<ZxParamBundle>(**bundle);
  if (const auto* ints = std::get_if<ZxParamBundle::Ints>(&value)) return *ints;
  if (const auto* reals = std::get_if<ZxParamBundle::Reals>(&value)) return *reals;
  return std::get<std::string>(value);
}

} // namespace

ZxParamBundle::ZxParamBundle(const ZxParamBundle& other) : m_index(other.m_index)
{
  m_entries.reserve(other.m_entries.size());
  for (const Entry& e : other.m_entries) m_entries.push_back({e.name, copyOf(e.value)});
}

ZxParamBundle& ZxParamBundle::operator=(const ZxParamBundle& other)
{
  if (this != &other) *this = ZxParamBundle(other);
  return *this;
}

const ZxParamBundle::Entry* ZxParamBundle::find(std::string_view name) const
{
  const auto it = m_index.find(folded(name));
  return it == m_index.end() ? nullptr : &m_entries[it->second];
}

void ZxParamBundle::append(std::string_view name, Value value)
{
  m_index.emplace(folded(name), m_entries.size());
  m_entries.push_back({std::string(name), std::move(value)});
}

void ZxParamBundle::set(std::string_view name, Value value)
{
  if (const Entry* entry = find(name))
    const_cast<Entry*>(entry)->value = std::move(value);
  else
    append(name, std::move(value));
}

bool ZxParamBundle::findNums(std::string_view name, int n, int* out) const
{
  const Entry* entry = find(name);
  const auto* ints = entry ? std::get_if<Ints>(&entry->value) : nullptr;
  if (!ints || ints->size() != static_cast<std::size_t>(n)) return false;
  std::copy(ints->begin(), ints->end(), out);
  return true;
}

bool ZxParamBundle::findReals(std::string_view name, int n, double* out) const
{
  const Entry* entry = find(name);
  if (!entry) return false;
  const auto fill = [&](const auto& values) {
    if (values.size() != static_cast<std::size_t>(n)) return false;
    std::copy(values.begin(), values.end(), out);
    return true;
  };
  if (const auto* reals = std::get_if<Reals>(&entry->value)) return fill(*reals);
  if (const auto* ints = std::get_if<Ints>(&entry->value)) return fill(*ints);
  return false;
}

bool ZxParamBundle::findString(std::string_view name, std::string& out) const
{
  const Entry* entry = find(name);
  const auto* text = entry ? std::get_if<std::string>(&entry->value) : nullptr;
  if (text) out = *text;
  return text != nullptr;
}

const ZxParamBundle* ZxParamBundle::findBundle(std::string_view name) const
{
  const Entry* entry = find(name);
  const auto* bundle = entry ? std::get_if<Bundle>(&entry->value) : nullptr;
  return bundle ? bundle->get() : nullptr;
}

ZxParamBundle* ZxParamBundle::findBundle(std::string_view name)
{
  return const_cast<ZxParamBundle*>(std::as_const(*this).findBundle(name));
}

ZxParamBundle* ZxParamBundle::getBundle(std::string_view name)
{
  if (!find(name)) append(name, std::make_unique<ZxParamBundle>());
  return findBundle(name);
}

bool ZxParamBundle::remove(std::string_view name)
{
  const auto it = m_index.find(folded(name));
  if (it == m_index.end()) return false;
  const std::size_t position = it->second;
  m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(position));
  m_index.erase(it);
  for (auto& [key, index] : m_index)
    if (index > position) --index;
  return true;
}

void ZxParamBundle::removeAll() noexcept
{
  m_entries.clear();
  m_index.clear();
}

void ZxParamBundle::merge(const ZxParamBundle& other)
{
  for (const Entry& e : other.m_entries) set(e.name, copyOf(e.value));
}
