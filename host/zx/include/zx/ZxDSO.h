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

  /// Opens a library by file name; 0 on success.
  int open(const char* fileName);
  /// Address of a symbol, or null.
  void* getSymbol(const char* name);
  /// Why the last open() failed.
  const std::string& getError() const noexcept { return m_error; }

private:
  std::unique_ptr<QLibrary> m_library;
  std::string m_error;
};
