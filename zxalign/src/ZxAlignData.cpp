#include "zxalign/ZxAlignData.h"

#include "AlignmentMatrix.h"
#include "SliceMapping.h"
#include "kernels/Projection.h"
#include "zx/ZxMessage.h"
#include "zx/ZxWorkArea.h"
#include "zxalign/ZxAlignSlices.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <utility>

ZxAlignData::ZxAlignData(ZxAlignSlices* module) : m_module(module) {}

ZxAlignData::~ZxAlignData() = default;

bool ZxAlignData::init(ZxSpatialData* data, ZxLattice* lattice)
{
  reset();
  if (!data || !lattice) return false;
  const std::size_t bytes = lattice->shape().sliceBytes();
  try {
    for (auto* buffer : {&m_editableImage, &m_referenceImage, &m_rawSlice}) buffer->resize(bytes);
    if (lattice->isColor())
      for (auto* buffer : {&m_editableColour, &m_referenceColour}) buffer->resize(bytes);
  } catch (const std::bad_alloc&) {
    reset();
    ZxMessage::getTheMsg()->memError(bytes);
    return false;
  }
  const std::lock_guard lock(m_mutex);
  m_data = McHandle<ZxSpatialData>(data);
  m_lattice = lattice;
  m_dims = lattice->getDims();
  return true;
}

void ZxAlignData::resetData()
{
  for (auto* buffer :
       {&m_editableImage, &m_referenceImage, &m_editableColour, &m_referenceColour, &m_rawSlice})
    buffer->release();
}

void ZxAlignData::reset()
{
  McHandle<ZxSpatialData> old; // goes when the mutex has been given back
  // Who reads the lattice on another thread is done with it now, or finds it gone.
  const std::lock_guard lock(m_mutex);
  resetData();
  m_editableSlice = m_referenceSlice = -1;
  m_editableProjection.reset();
  m_referenceProjection.reset();
  m_lattice = nullptr;
  m_mask = nullptr;
  std::swap(old, m_data);
  m_dims = {};
}

int ZxAlignData::getNumDataVars() const noexcept { return m_lattice ? m_lattice->getNumDataVars() : 0; }

McPrimType ZxAlignData::getPrimType() const noexcept
{
  return m_lattice ? m_lattice->primType() : McPrimType::UInt8;
}

bool ZxAlignData::isColorField() const noexcept { return m_lattice && m_lattice->isColor(); }

ZxParamBundle* ZxAlignData::getParameters() const noexcept
{
  return m_data ? &m_data->parameters() : nullptr;
}

McString ZxAlignData::getInputDataName() const { return m_data ? m_data->getLabel() : McString(); }

void ZxAlignData::touchInputData()
{
  if (m_data) m_data->touch();
}

void ZxAlignData::setEditableSlice(int slice)
{
  if (slice == m_editableSlice) return;
  m_editableSlice = slice;
  mapSlice(Role::Editable);
}

void ZxAlignData::setReferenceSlice(int slice)
{
  if (slice == m_referenceSlice) return;
  m_referenceSlice = slice;
  mapSlice(Role::Reference);
}

void ZxAlignData::setMaskLattice(ZxLabelLattice* mask)
{
  if (mask == m_mask) return;
  m_mask = mask;
  mapSlices();
}

void ZxAlignData::mapSlices()
{
  mapSlice(Role::Editable);
  mapSlice(Role::Reference);
}

unsigned char* ZxAlignData::getEditableColorPtr() noexcept
{
  return isColorField() ? m_editableColour.data() : m_editableImage.data();
}

unsigned char* ZxAlignData::getReferenceColorPtr() noexcept
{
  return isColorField() ? m_referenceColour.data() : m_editableImage.data();
}

unsigned char* ZxAlignData::getOriginalDataPtr(int slice)
{
  if (!m_lattice || slice < 0 || slice >= m_dims.slices) return nullptr;
  {
    const std::lock_guard lock(m_mutex);
    if (m_lattice->readSlice(slice, m_rawSlice.data())) return m_rawSlice.data();
  }
  tellUnreadable(slice); // Not under the mutex: a console may repaint, and what it shows may want the mutex.
  return nullptr;
}

void ZxAlignData::tellUnreadable(int slice) const
{
  ZxMessage::getTheMsg()->printf("Slice %d of %s cannot be read.", slice, getInputDataName().getString());
}

std::vector<std::uint8_t> ZxAlignData::getMaskBitfield(int slice)
{
  return readMaskBits(m_mask, slice, m_mutex);
}

void ZxAlignData::holdProjections()
{
  m_holdsProjections = true;
  m_editableProjection = m_referenceProjection = SliceXForm();
}

void ZxAlignData::releaseProjections(const SliceXForm& editable, const SliceXForm& reference)
{
  m_holdsProjections = false;
  m_editableProjection = editable;
  m_referenceProjection = reference;
}

void ZxAlignData::mapSlice(Role role)
{
  if (!m_lattice || m_holdsProjections) return;
  const bool editable = role == Role::Editable;
  const int slice = editable ? m_editableSlice : m_referenceSlice;
  if (slice < 0 || slice >= m_dims.slices) return;
  McDArray<unsigned char>& grey = editable ? m_editableImage : m_referenceImage;
  std::optional<SliceXForm>& projection = editable ? m_editableProjection : m_referenceProjection;
  projection.reset();
  bool& isRead = editable ? m_editableIsRead : m_referenceIsRead;
  isRead = true;
  if (m_module->usesMaxIntProjection()) {
    int first = 0, last = 0;
    projectionRange(role, first, last);
    project(first, last, grey);
    projection = m_module->getSlice(slice);
  } else {
    isRead = mapNormally(slice, grey, editable ? m_editableColour : m_referenceColour);
  }
}

SliceMapping ZxAlignData::mapping() const
{
  const ZxPortFloatTextN& window = m_module->portLinearRange;
  return {m_lattice, m_mask, window.getValue(0), window.getValue(1)};
}

bool ZxAlignData::mapNormally(int slice, McDArray<unsigned char>& grey, McDArray<unsigned char>& colour)
{
  // The message comes without the mutex: a console may repaint, and what it shows may want the mutex.
  try {
    const bool isRead = ::mapSlice(mapping(), slice, m_mutex, m_rawSlice.data(), grey.data(), colour.data());
    if (!isRead) tellUnreadable(slice);
    return isRead;
  } catch (const std::bad_alloc&) { // A mask is read in one piece.
    ZxMessage::getTheMsg()->memError(m_mask ? m_mask->shape().sliceBytes() : m_rawSlice.size());
    return false;
  }
}

void ZxAlignData::projectionRange(Role role, int& first, int& last) const
{
  const bool editable = role == Role::Editable;
  const int slice = editable ? m_editableSlice : m_referenceSlice;
  const int thickness =
      editable ? m_module->getEditableProjectionThickness() : m_module->getReferenceProjectionThickness();
  // Each range extends away from the other slice of the pair.
  const bool upwards = editable == (m_module->getEditableSide() == 1);
  // A thickness may be as large as an integer can be.
  first = upwards ? slice : slice - std::min(thickness - 1, slice);
  last = upwards ? slice + std::min(thickness - 1, m_dims.slices - 1 - slice) : slice;
}

void ZxAlignData::project(int first, int last, McDArray<unsigned char>& grey)
{
  {
    const std::lock_guard lock(m_mutex);
    std::fill(grey.begin(), grey.end(), static_cast<unsigned char>(0));
  }
  ZxMessage* msg = ZxMessage::getTheMsg();
  if (getPrimType() != McPrimType::UInt8) return msg->printf("Cannot project, only unsigned chars allowed");
  if (getNumDataVars() != 1) return msg->printf("Cannot project, only 1 channel images allowed");
  ZxWorkArea* workArea = ZxWorkArea::getTheWorkArea();
  const ZxWorkingPhase phase("Projecting");
  workArea->setProgressText("Projecting");
  for (int s = first; s <= last; ++s) {
    workArea->setProgressFraction(static_cast<float>(s - first) / static_cast<float>(last - first + 1));
    workArea->setProgressText("Projecting slice %d\n", s);
    QTransform inverse;
    m_module->getSlice(s).getInverseMatrix(inverse, sliceCentre(m_dims.width), sliceCentre(m_dims.height));
    const unsigned char* raw = getOriginalDataPtr(s);
    if (!raw) continue;
    const std::lock_guard lock(m_mutex);
    kernels::projectSlice(raw, m_dims.width, m_dims.height, toAffine(inverse), grey.data());
  }
  const SliceMapping window = mapping();
  const std::lock_guard lock(m_mutex);
  kernels::windowProjected(grey.data(), m_dims.slicePixels(), window.min, window.scale());
}
