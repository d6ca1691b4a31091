#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

/// Named parameters of a data object: integers, reals, strings and further bundles, in the order in which
/// they were set. Names match without regard to (ASCII) case; the spelling of the first set() stays.
class ZxParamBundle {
public:
  using Ints = std::vector<int>;
  using Reals = std::vector<double>;
  using Bundle = std::unique_ptr<ZxParamBundle>;
  using Value = std::variant<Ints, Reals, std::string, Bundle>;
  struct Entry {
    std::string name;
    Value value;
  };

  ZxParamBundle() = default;
  ZxParamBundle(const ZxParamBundle& other);
  ZxParamBundle& operator=(const ZxParamBundle& other);
  ZxParamBundle(ZxParamBundle&&) noexcept = default;
  ZxParamBundle& operator=(ZxParamBundle&&) noexcept = default;
  ~ZxParamBundle() = default;

  /// Replaces what stood under the name, of whatever kind.
  void setNum(std::string_view name, int value) { setNums(name, {value}); }
  void setNums(std::string_view name, Ints values) { set(name, std::move(values)); }
  void setReals(std::string_view name, Reals values) { set(name, std::move(values)); }
  void setString(std::string_view name, std::string value) { set(name, std::move(value)); }

  /// Fills out when the name holds exactly n integers (reals: n integers or reals); else leaves it alone.
  bool findNums(std::string_view name, int n, int* out) const;
  bool findReals(std::string_view name, int n, double* out) const;
  bool findString(std::string_view name, std::string& out) const;
  /// The bundle of that name, or null.
  ZxParamBundle* findBundle(std::string_view name);
  const ZxParamBundle* findBundle(std::string_view name) const;
  /// The bundle of that name, created when there is nothing under it; null when it is taken by a plain value.
  ZxParamBundle* getBundle(std::string_view name);

  const std::vector<Entry>& entries() const noexcept { return m_entries; }
  int getNumEntries() const noexcept { return static_cast<int>(m_entries.size()); }
  bool remove(std::string_view name);
  /// Copies every entry of another bundle into this one, replacing entries of the same name.
  void merge(const ZxParamBundle& other);
  void removeAll() noexcept;

private:
  void set(std::string_view name, Value value);
  void append(std::string_view name, Value value);
  const Entry* find(std::string_view name) const;

  std::vector<Entry> m_entries;
  /// Position of an entry by its name in lower case: a stack has one entry a slice, and may have thousands.
  std::unordered_map<std::string, std::size_t> m_index;
};
