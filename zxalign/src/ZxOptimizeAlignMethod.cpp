#include "ZxOptimizeAlignMethod.h"

#include "zx/ZxMessage.h"
#include "zx/ZxWorkArea.h"
#include "zxalign/ZxAlignData.h"
#include "zxalign/ZxAlignSlices.h"

int ZxOptimizeAlignMethod::doLayout()
{
  const ImagePair pair = readPair();
  LeastSquaresSearch search(pair, m_module->alignSettings(),
                            m_module->getSlice(m_module->getReferenceSlice()),
                            m_module->getSlice(m_module->getEditableSlice()));
  if (const std::size_t missing = search.allocate()) {
    ZxMessage::getTheMsg()->memError(missing);
    return 0;
  }
  search.run([] { return ZxWorkArea::getTheWorkArea()->wasInterrupted(1); });
  apply(search.editable());
  return 1;
}

ImagePair ZxOptimizeAlignMethod::readPair()
{
  // The module has mapped both slices when they were chosen; ports may have changed since.
  m_module->mapSlices();
  ZxAlignData& data = m_module->sliceData();
  const bool colour = data.isColorField();
  return {colour ? data.getReferenceColorPtr() : data.getReferenceSlicePtr(),
          colour ? data.getEditableColorPtr() : data.getEditableSlicePtr(), data.getDims().width,
          data.getDims().height, colour ? 4 : 1};
}

void ZxOptimizeAlignMethod::apply(const SliceXForm& editable)
{
  const SliceInfo& present = m_module->getSlice(m_module->getEditableSlice());
  m_module->rotateAll(editable.rotation - present.rotation);
  // Read again: turning may have moved it by a rounding.
  m_module->translateAll(editable.translationX - present.translationX,
                         editable.translationY - present.translationY);
  m_module->setModified(true);
  m_module->updateViews();
  m_module->updateQuality();
}
