#include "zxalign/QxAlignSlices.h"

#include "zxalign/ZxAlignSlices.h"

QxAlignSlices::QxAlignSlices(ZxAlignSlices* module) : m_module(module) {}

QxAlignSlices::~QxAlignSlices() = default;

McDArray<SliceInfo>& QxAlignSlices::getTransform() { return m_module->slices(); }

int QxAlignSlices::getDrawAreaWidth() const { return centralWidget() ? centralWidget()->width() : width(); }

int QxAlignSlices::getDrawAreaHeight() const
{
  return centralWidget() ? centralWidget()->height() : height();
}
