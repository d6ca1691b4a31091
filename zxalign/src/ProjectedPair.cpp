#include "ProjectedPair.h"

#include "zxalign/ZxAlignData.h"
#include "zxalign/ZxAlignSlices.h"

ProjectedPair::ProjectedPair(ZxAlignSlices& module) : m_module(module), m_before(module.getSlices())
{
  m_module.mapSlices();
  m_module.sliceData().holdProjections();
  for (SliceInfo& slice : m_module.slices()) slice.setXForm(SliceXForm());
}

ProjectedPair::~ProjectedPair()
{
  McDArray<SliceInfo>& slices = m_module.slices();
  for (std::size_t k = 0; k < slices.size(); ++k) slices[k].setXForm(slices[k].after(m_before[k]));
  m_module.sliceData().releaseProjections(m_before[static_cast<std::size_t>(m_module.getEditableSlice())],
                                          m_before[static_cast<std::size_t>(m_module.getReferenceSlice())]);
}
