#pragma once

#include "mc/McHandable.h"
#include "zxalign/ZxAlignSlices.h"

#include <QCoreApplication>
#include <QMetaObject>

/// Keeps a module, and its editor window with it, through work that runs an event loop, and on until control
/// is back in the event loop that called: nothing is deleted below the feet of its own slots.
class AlignModuleKeeper {
public:
  explicit AlignModuleKeeper(ZxAlignSlices* module) : m_module(module) {}
  ~AlignModuleKeeper()
  {
    if (QCoreApplication* application = QCoreApplication::instance())
      QMetaObject::invokeMethod(
          application, [module = std::move(m_module)] {}, Qt::QueuedConnection);
  }
  AlignModuleKeeper(const AlignModuleKeeper&) = delete;
  AlignModuleKeeper& operator=(const AlignModuleKeeper&) = delete;

private:
  McHandle<ZxAlignSlices> m_module;
};
