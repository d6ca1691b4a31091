#include "zx/ZxDSO.h"

#include <QLibrary>

ZxDSO::ZxDSO() = default;
ZxDSO::~ZxDSO() = default; // QLibrary's destructor leaves the library loaded.

int ZxDSO::open(const char* fileName)
{
  m_library = std::make_unique<QLibrary>(QString::fromUtf8(fileName));
  // Methods in other libraries find the package's classes among the global symbols.
  m_library->setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::ExportExternalSymbolsHint |
                          QLibrary::PreventUnloadHint);
  if (m_library->load()) return 0;
  m_error = m_library->errorString().toStdString();
  m_library.reset();
  return 1;
}

void* ZxDSO::getSymbol(const char* name)
{
  return m_library ? reinterpret_cast<void*>(m_library->resolve(name)) : nullptr;
}
