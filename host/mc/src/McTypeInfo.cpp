#include "mc/McTypeInfo.h"

#include <algorithm>
#include <mutex>

namespace {

struct Registry {
  std::mutex mutex;
  std::vector<const McTypeInfo*> records;
};

Registry& registry()
{
  static Registry instance;
  return instance;
}

} // namespace

McTypeInfo::McTypeInfo(const char* name, std::vector<const McTypeInfo*> bases, Factory factory)
  : m_name(name), m_bases(std::move(bases)), m_create(factory)
{
  Registry& r = registry();
  const std::lock_guard lock(r.mutex);
  r.records.push_back(this);
}

McTypeInfo::~McTypeInfo()
{
  Registry& r = registry();
  const std::lock_guard lock(r.mutex);
  std::erase(r.records, this);
}

bool McTypeInfo::isDerivedFrom(const McTypeInfo& base) const noexcept
{
  if (this == &base) return true;
  return std::any_of(m_bases.begin(), m_bases.end(),
                     [&](const McTypeInfo* b) { return b->isDerivedFrom(base); });
}

const McTypeInfo* McTypeInfo::find(std::string_view name)
{
  Registry& r = registry();
  const std::lock_guard lock(r.mutex);
  const auto it = std::find_if(r.records.begin(), r.records.end(),
                               [&](const McTypeInfo* t) { return t->name() == name; });
  return it == r.records.end() ? nullptr : *it;
}

std::vector<const McTypeInfo*> McTypeInfo::all()
{
  Registry& r = registry();
  const std::lock_guard lock(r.mutex);
  return r.records;
}
