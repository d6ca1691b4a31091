#include "zxalign/ZxAlignEditor.h"

namespace {
ZxAlignEditor::Factory theFactory = nullptr;
}

void ZxAlignEditor::setFactory(Factory factory) noexcept { theFactory = factory; }

std::unique_ptr<ZxAlignEditor> ZxAlignEditor::create(ZxAlignSlices& module)
{
  return theFactory ? theFactory(module) : nullptr;
}
