#include "zx/ZxDSO.h"

#include <QLibrary>

ZxDSO::ZxDSO() = default;
ZxDSO::~ZxDSO() = default; // QLibrary's destructor leaves the library loaded.

int ZxDSO::open(const char* fileName, Symbols symbols)
{
  m_library = std::make_unique<QLibrary>(QString::fromUtf8(fileName));
  QLibrary::LoadHints hints = QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint;
  if (symbols == Symbols::Global) hints |= QLibrary::ExportExternalSymbolsHint;
  m_library->setLoadHints(hints);
  if (m_library->load()) return 0;
  m_error = m_library->errorString().toStdString();
  m_library.reset();
  return 1;
}

void* ZxDSO::getSymbol(const char* name)
{
  return m_library ? reinterpret_cast<void*>(m_library->resolve(name)) : nullptr;
}
