#pragma once

#include <string>
#include <string_view>
#include <vector>

class McHandable;

/// Run-time record of a class of the object model: its name, its bases and, for classes that can be created
/// by name, a factory.
///
/// Records are registered for the life of the process when they are constructed; names are unique. Classes
/// keep their record in a function-local static, which makes its creation happen once and thread-safe.
class McTypeInfo {
public:
  using Factory = McHandable* (*)();

  McTypeInfo(const char* name, std::vector<const McTypeInfo*> bases, Factory factory = nullptr);
  McTypeInfo(const McTypeInfo&) = delete;
  McTypeInfo& operator=(const McTypeInfo&) = delete;
  ~McTypeInfo();

  const std::string& name() const noexcept { return m_name; }
  const std::vector<const McTypeInfo*>& bases() const noexcept { return m_bases; }
  /// True for the class itself and everything derived from it, over all bases.
  bool isDerivedFrom(const McTypeInfo& base) const noexcept;
  bool canCreate() const noexcept { return m_create != nullptr; }
  /// A new object without an owner (put it into a McHandle), or null when the class cannot be created.
  McHandable* create() const { return m_create ? m_create() : nullptr; }

  /// The record registered under a name, or null.
  static const McTypeInfo* find(std::string_view name);
  /// All records in the order of their registration.
  static std::vector<const McTypeInfo*> all();

private:
  std::string m_name;
  std::vector<const McTypeInfo*> m_bases;
  Factory m_create;
};
