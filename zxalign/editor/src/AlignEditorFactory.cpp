#include "zxalign/AlignEditorFactory.h"

#include "qx/QxMainWindow.h"
#include "zxalign/QxAlignSlices.h"
#include "zxalign/ZxAlignSlices.h"

std::unique_ptr<ZxAlignEditor> makeAlignEditor(ZxAlignSlices& module)
{
  if (!QxMainWindow::getTheMainWindow()) return nullptr;
  auto window = std::make_unique<QxAlignSlices>(&module);
  window->setUseMaxIntProjection(module.usesMaxIntProjection());
  window->setEditMode(QxAlignSlices::EditTransform);
  return window;
}
