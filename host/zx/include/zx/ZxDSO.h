#pragma once

#include <memory>
#include <string>

class QLibrary;

/// Loads a shared library and finds symbols in it. Libraries stay loaded for the life of the process: they
/// may have registered classes, and libraries with toolkit code cannot be unloaded safely.
class ZxDSO {
public:
  ZxDSO();
  ~ZxDSO();

  /// Whether libraries that are opened later find the symbols of this one. Those of a package are global, so
  /// that plug-ins find its classes; those of plug-ins are local, so that two of them may use the same names.
  enum class Symbols { Global, Local };

  /// Opens a library by file name; 0 on success. All symbols that it needs must be there.
  int open(const char* fileName, Symbols symbols = Symbols::Global);
  /// Address of a symbol, or null.
  void* getSymbol(const char* name);
  /// Why the last open() failed.
  const std::string& getError() const noexcept { return m_error; }

private:
  std::unique_ptr<QLibrary> m_library;
  std::string m_error;
};
