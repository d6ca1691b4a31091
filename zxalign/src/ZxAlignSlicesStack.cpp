// What ZxAlignSlices does with its slices: whole-stack operations, landmarks, storage, quality, runs over the
// whole stack.
#include "AlignmentGeometry.h"
#include "AlignmentMatrix.h"
#include "AlignmentOrder.h"
#include "AlignmentQuality.h"
#include "AlignmentStorage.h"
#include "LandmarkTable.h"
#include "MostFrequentColor.h"
#include "ReducedVoxels.h"
#include "RigidFit.h"
#include "ZxAlignResampler.h"
#include "mc/McRound.h"
#include "zx/ZxMessage.h"
#include "zx/ZxWorkArea.h"
#include "zxalign/AlignRecovery.h"
#include "zxalign/PairConfidence.h"
#include "zxalign/ZxAlignData.h"
#include "zxalign/ZxAlignEditor.h"
#include "zxalign/ZxAlignSlices.h"
#include "zxalign/ZxAutoAlignMethodFabrique.h"
#include "zxalign/ZxDefaultAlignmentEvaluator.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

constexpr double unreadable = -1.0; // the quality of a pair that could not be read

void shift(SliceInfo& slice, float dx, float dy)
{
  slice.translationX += dx;
  slice.translationY += dy;
}

ZxAlignTransform toControl(const SliceXForm& x)
{
  return {x.translationX, x.translationY, x.rotation, x.flip};
}

/// One byte a pixel, as the evaluator takes masks.
std::vector<unsigned char> maskBytes(const std::vector<std::uint8_t>& bits, std::size_t pixels)
{
  std::vector<unsigned char> bytes(bits.empty() ? 0 : pixels);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = bits[i / 8] >> (i % 8) & 1U;
  return bytes;
}

} // namespace

template <class Change>
void ZxAlignSlices::forAffectedSlices(Change change)
{
  if (!hasEditableSlice()) return;
  const int n = static_cast<int>(m_slices.size());
  if (m_fixReference || (!m_transformAll && (m_editableSide == 1 || m_editableSide == -1))) {
    change(getSlice(m_editableSlice));
  } else if (m_editableSide == 1) {
    for (int i = m_editableSlice; i < n; ++i) change(getSlice(i));
  } else if (m_editableSide == -1) {
    for (int i = m_editableSlice; i >= 0; --i) change(getSlice(i));
  }
}

bool ZxAlignSlices::hasEditableSlice() const noexcept
{
  return m_editableSlice >= 0 && m_editableSlice < numSlices();
}

void ZxAlignSlices::showEditableSlice()
{
  if (m_editor && hasEditableSlice()) m_editor->setSliceInfo(SliceInfo(getSlice(m_editableSlice)));
}

void ZxAlignSlices::translateAll(float dx, float dy)
{
  forAffectedSlices([&](SliceInfo& slice) { shift(slice, dx, dy); });
  showEditableSlice();
}

void ZxAlignSlices::rotateAll(float angle)
{
  if (!hasEditableSlice()) return;
  const SliceInfo& editable = getSlice(m_editableSlice);
  // The pivot is read afresh for each slice; turning the editable one in place leaves it where it is.
  forAffectedSlices(
      [&](SliceInfo& slice) { slice.rotate(angle, editable.translationX, editable.translationY); });
  showEditableSlice();
}

void ZxAlignSlices::rotateAll(float angle, float pivotX, float pivotY)
{
  forAffectedSlices([&](SliceInfo& slice) { slice.rotate(angle, pivotX, pivotY); });
  showEditableSlice();
}

void ZxAlignSlices::translate(float x, float y, bool all)
{
  if (!hasEditableSlice()) return;
  const float dx = x - getSlice(m_editableSlice).translationX;
  const float dy = y - getSlice(m_editableSlice).translationY;
  if (all) {
    for (SliceInfo& slice : m_slices) shift(slice, dx, dy);
    showEditableSlice();
  } else {
    translateAll(dx, dy);
  }
  m_modified = true;
  updateQuality();
}

void ZxAlignSlices::rotate(float angle, bool all)
{
  if (!hasEditableSlice()) return;
  const SliceXForm editable = getSlice(m_editableSlice);
  const float d = angle - editable.rotation;
  if (all) {
    for (SliceInfo& slice : m_slices) slice.rotate(d, editable.translationX, editable.translationY);
    showEditableSlice();
  } else {
    rotateAll(d);
  }
  m_modified = true;
  updateQuality();
}

void ZxAlignSlices::translateRelative(float dx, float dy)
{
  if (!m_editor || !m_editorOpen) return;
  m_undoRedo.saveState();
  translateAll(dx, dy);
  m_modified = true;
  updateQuality();
}

void ZxAlignSlices::rotateRelative(float angle)
{
  if (!m_editor || !m_editorOpen) return;
  m_undoRedo.saveState();
  rotateAll(angle);
  m_modified = true;
  updateQuality();
}

void ZxAlignSlices::calcMinBox(int* width, int* height) const
{
  const ZxLattice* lattice = m_data->getLattice();
  *width = *height = 0;
  if (lattice) minimalOutputSize(m_slices, lattice->getDims(), lattice->getBoundingBox(), *width, *height);
}

void ZxAlignSlices::calculateOrigin(int* xBorders, int* yBorders, int width, int height) const
{
  OutputBorders b;
  if (const ZxLattice* lattice = m_data->getLattice())
    b = originBorders(m_slices, lattice->getDims(), lattice->getBoundingBox(), m_settings.outputWidth,
                      m_settings.outputHeight, width, height);
  xBorders[0] = b.left;
  xBorders[1] = b.right;
  yBorders[0] = b.top;
  yBorders[1] = b.bottom;
}

void ZxAlignSlices::addPoint(QPoint p)
{
  for (SliceInfo& slice : m_slices) slice.landmarks.append(p);
}

void ZxAlignSlices::removePoint(int index)
{
  const auto k = static_cast<std::size_t>(index);
  for (SliceInfo& slice : m_slices)
    if (k < slice.landmarks.size()) slice.landmarks.remove(k);
}

void ZxAlignSlices::movePoints(QPoint offset, int index)
{
  const auto k = static_cast<std::size_t>(index);
  for (SliceInfo& slice : m_slices)
    if (k < slice.landmarks.size()) slice.landmarks[k] += offset;
}

void ZxAlignSlices::createDefaultPoints()
{
  const ZxDims& dims = m_data->getDims();
  for (const double share : {0.25, 0.75})
    addPoint(QPoint(mc::truncToInt(share * dims.width), mc::truncToInt(share * dims.height)));
}

QTransform ZxAlignSlices::getTransform(const McDArray<QPoint>& a, const McDArray<QPoint>& b) const
{
  return fitRigidMotion(a, b);
}

bool ZxAlignSlices::saveTransform(ZxParamBundle& target, McDArray<SliceInfo>& slices)
{
  ZxParamBundle* input = m_data->getParameters();
  if (!input) return false;
  input->setNum("OutputImageWidth", m_settings.outputWidth);
  input->setNum("OutputImageHeigth", m_settings.outputHeight);
  m_data->touchInputData();
  if (const char* taken = storage::takenName(target)) {
    ZxMessage::getTheMsg()->printf(
        "The alignment cannot be stored with %s: \"%s\" is taken by a plain parameter.",
        m_data->getInputDataName().getString(), taken);
    return false;
  }
  storage::writeTransforms(target, slices, m_data->getDims());
  savePoints(target, slices);
  if (&target == input) m_recovery->stored();
  return true;
}

bool ZxAlignSlices::savePoints(ZxParamBundle& target, McDArray<SliceInfo>& slices)
{
  return storage::writePoints(target, slices);
}

void ZxAlignSlices::readTransform()
{
  if (const ZxParamBundle* input = m_data->getParameters())
    storage::readTransforms(*input, m_slices, m_data->getDims(), storage::Missing::Tell);
  readPoints();
}

void ZxAlignSlices::readPoints()
{
  if (const ZxParamBundle* input = m_data->getParameters())
    storage::readPoints(*input, m_slices, m_data->getDims(), storage::pointBundle, storage::Missing::Tell);
  if (!m_slices.isEmpty() && m_slices[0].landmarks.size() < 2) createDefaultPoints();
}

void ZxAlignSlices::readReference(ZxField3* reference)
{
  if (!m_data->getLattice() || m_slices.isEmpty() || !reference) return;
  const ZxLattice* lattice = reference->getLattice();
  if (lattice->getNumDataVars() != 1 && lattice->getNumDataVars() != 4) return;
  const ZxDims& dims = m_data->getDims();
  if (lattice->getDims() != dims) {
    ZxMessage::getTheMsg()->printf("Wrong dimensions in reference object");
    return;
  }
  const ZxParamBundle& source = reference->parameters();
  storage::readTransforms(source, m_slices, dims, storage::Missing::PassOver);
  // Landmarks of a reference refer to the image size that its transforms were stored with.
  storage::readPoints(source, m_slices, dims, storage::transformBundle, storage::Missing::PassOver);
  updateViews();
}

void ZxAlignSlices::computeMostFrequentColor(const unsigned char* data, int width, int height, int channels,
                                             McPrimType type, McDArray<float>& color) const
{
  mostFrequentColor(data, ZxDims{width, height, 1}.slicePixels(), channels, type, color);
}

namespace {

/// Quality of two images of one size; each is walked by the mapping from the aligned frame into it.
float qualityOf(const unsigned char* image0, const unsigned char* image1, int width, int height, int channels,
                const kernels::Affine16& mapping0, const kernels::Affine16& mapping1)
{
  const kernels::PairDifference difference = kernels::pairDifference(
      {image0, width, height}, mapping0, {image1, width, height}, mapping1, width, height, channels);
  return alignmentQuality(difference, channels, ZxDims{width, height, 1}.slicePixels());
}

} // namespace

float ZxAlignSlices::computeQuality(const unsigned char* image0, const unsigned char* image1, int width,
                                    int height, int channels, const SliceXForm& xform0,
                                    const SliceXForm& xform1) const
{
  return qualityOf(image0, image1, width, height, channels, inverse16(xform0, width, height),
                   inverse16(xform1, width, height));
}

float ZxAlignSlices::computeQuality()
{
  const int n = static_cast<int>(m_slices.size());
  return m_editableSlice >= 0 && m_editableSlice < n ? computeQuality(getSlice(m_editableSlice)) : 0.0f;
}

float ZxAlignSlices::computeQuality(const SliceXForm& editable)
{
  const ZxDims& dims = m_data->getDims();
  const int n = static_cast<int>(m_slices.size());
  if (!m_data->getLattice() || m_referenceSlice < 0 || m_referenceSlice >= n) return 0.0f;
  const bool colour = m_data->isColorField();
  return qualityOf(
      colour ? m_data->getReferenceColorPtr() : m_data->getReferenceSlicePtr(),
      colour ? m_data->getEditableColorPtr() : m_data->getEditableSlicePtr(), dims.width, dims.height,
      colour ? 4 : 1,
      inverse16(getSlice(m_referenceSlice), dims.width, dims.height, m_data->getReferenceProjection()),
      inverse16(editable, dims.width, dims.height, m_data->getEditableProjection()));
}

void ZxAlignSlices::updateQuality()
{
  ZxWorkArea* workArea = ZxWorkArea::getTheWorkArea();
  if (workArea->isBusy() || !m_data->getLattice()) return;
  const auto flipped = [this](int slice) {
    return slice >= 0 && slice < numSlices() && getSlice(slice).flip ? "flipped" : "unflipped";
  };
  workArea->setProgressText("Current slices: %d - %d (%s - %s) quality = %.2f", m_referenceSlice,
                            m_editableSlice, flipped(m_referenceSlice), flipped(m_editableSlice),
                            static_cast<double>(computeQuality()) * 100.0);
}

std::span<const ZxAlignSetting> ZxAlignSlices::settings() const { return m_methods->getSettings(); }

std::string ZxAlignSlices::setSetting(const std::string& name, const std::string& value)
{
  // What the module itself has goes before settings of that name in plug-ins.
  const bool own = !m_settings.get(name).empty() || !m_methods->hasSetting(name);
  return own ? m_settings.set(name, value) : m_methods->setSetting(name, value);
}

std::string ZxAlignSlices::getSetting(const std::string& name) const
{
  const std::string own = m_settings.get(name);
  return own.empty() ? m_methods->getSetting(name) : own;
}

std::vector<ZxAlignControl::Method> ZxAlignSlices::methods() const
{
  McDArray<int> ids;
  McDArray<McString> names;
  m_methods->getAutoAlignMethods(ids, names);
  std::vector<Method> all;
  for (std::size_t i = 0; i < ids.size(); ++i) all.push_back({ids[i], names[i].str()});
  return all;
}

std::vector<ZxAlignPlugIn> ZxAlignSlices::plugIns() const { return m_methods->getPlugIns(); }

int ZxAlignSlices::numSlices() const { return m_data->getLattice() ? m_data->getDims().slices : 0; }

std::vector<ZxAlignTransform> ZxAlignSlices::transforms() const
{
  std::vector<ZxAlignTransform> all;
  for (int k = 0; k < numSlices(); ++k) all.push_back(toControl(getSlice(k)));
  return all;
}

bool ZxAlignSlices::setTransforms(std::span<const ZxAlignTransform> transforms)
{
  if (transforms.size() != static_cast<std::size_t>(numSlices())) return false;
  for (std::size_t i = 0; i < transforms.size(); ++i) {
    const ZxAlignTransform& t = transforms[i];
    m_slices[i].setXForm(SliceXForm(t.tx, t.ty, t.angleDegrees, t.flip));
  }
  transformsChanged();
  return true;
}

void ZxAlignSlices::setTransform(int slice, const SliceXForm& xform)
{
  getSlice(slice).setXForm(xform);
  transformsChanged();
}

void ZxAlignSlices::resetTransforms(int first, int last)
{
  if (numSlices() == 0) return;
  m_undoRedo.saveState();
  for (int slice = first; slice <= last; ++slice) getSlice(slice).setXForm(SliceXForm());
  transformsChanged();
}

void ZxAlignSlices::readTransformAgain()
{
  if (numSlices() == 0) return;
  m_undoRedo.saveState();
  readTransform();
  const bool wasModified = m_modified; // What is read is stored.
  transformsChanged();
  m_modified = wasModified;
}

void ZxAlignSlices::transformsChanged()
{
  m_modified = true;
  if (m_useMaxIntProjection) mapSlices(); // projections are made with the transforms
  if (m_editor) m_editor->showPair();
  updateQuality();
}

bool ZxAlignSlices::setLandmarks(std::span<const std::vector<ZxAlignPoint>> landmarks)
{
  if (landmarks.size() != static_cast<std::size_t>(numSlices())) return false;
  for (const std::vector<ZxAlignPoint>& points : landmarks)
    if (points.size() != landmarks[0].size()) return false;
  for (std::size_t i = 0; i < landmarks.size(); ++i) {
    m_slices[i].landmarks.clear();
    for (const ZxAlignPoint& p : landmarks[i]) m_slices[i].landmarks.append(QPoint(p.x, p.y));
  }
  m_modified = true;
  updateViews();
  return true;
}

std::vector<std::vector<ZxAlignPoint>> ZxAlignSlices::landmarks() const
{
  std::vector<std::vector<ZxAlignPoint>> all;
  for (int k = 0; k < numSlices(); ++k) {
    std::vector<ZxAlignPoint>& points = all.emplace_back();
    for (const QPoint& p : getSlice(k).landmarks) points.push_back({p.x(), p.y()});
  }
  return all;
}

std::string ZxAlignSlices::setLandmarksFrom(const std::string& fileName)
{
  if (numSlices() == 0) return "There is no input whose landmarks " + fileName + " could hold.";
  std::vector<std::vector<ZxAlignPoint>> landmarks;
  std::string problem = readLandmarkTable(fileName, numSlices(), landmarks);
  if (!problem.empty()) return problem;
  m_undoRedo.saveState();
  setLandmarks(landmarks);
  return {};
}

void ZxAlignSlices::selectPair(const ZxAlignPair& pair)
{
  m_editableSide = pair.side;
  setReferenceSlice(pair.reference);
  setSlice(pair.editable);
}

bool ZxAlignSlices::alignPair(const ZxAlignPair& pair, int method, ZxAlignPairResult& result)
{
  result.pair = pair;
  result.qualityBefore = static_cast<double>(computeQuality());
  const ZxAlignTransform before = toControl(getSlice(pair.editable));
  // A method without memory for its work ends like one that leaves the pair as it is, but for the message.
  const int memErrors = ZxMessage::getTheMsg()->numMemErrors();
  if (!doLayout(method) || ZxMessage::getTheMsg()->numMemErrors() != memErrors) return false;
  result.transform = toControl(getSlice(pair.editable));
  result.changed = !(result.transform == before);
  result.qualityAfter = static_cast<double>(computeQuality());
  return true;
}

int ZxAlignSlices::alignPairs(const std::vector<ZxAlignPair>& pairs, int firstPair, int method,
                              const SelectPair& select, const PairDone& done)
{
  using Clock = std::chrono::steady_clock;
  ZxWorkArea* workArea = ZxWorkArea::getTheWorkArea();
  const ZxWorkingPhase phase("");
  const auto first = static_cast<std::size_t>(std::max(firstPair, 0));
  std::size_t next = first;
  for (; next < pairs.size(); ++next) {
    const ZxAlignPair& pair = pairs[next];
    const Clock::time_point start = Clock::now();
    select(pair);
    workArea->setProgressText("Aligning slice %d with %d", pair.editable, pair.reference);
    workArea->setProgressFraction((static_cast<float>(next) + 0.5f) / static_cast<float>(pairs.size()));
    ZxAlignPairResult result;
    const bool aligned = done ? alignPair(pair, method, result) : doLayout(method) != 0;
    if (!aligned || workArea->wasInterrupted(1)) break;
    result.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    if (done) done(result);
  }
  return static_cast<int>(next - std::min(first, next));
}

int ZxAlignSlices::runOverStack(int method, int reference, const SelectPair& select, const PairDone& done,
                                int firstPair)
{
  if (isRunning()) return 0;
  std::vector<ZxAlignPair> pairs = alignmentOrder(reference, numSlices());
  if (m_fixReference)
    for (ZxAlignPair& pair : pairs) pair.reference = reference;
  int count = 0;
  withoutPasses([&] {
    m_stackRuns = true;
    count = alignPairs(pairs, firstPair, method, select, done);
    m_stackRuns = false;
  });
  return count;
}

int ZxAlignSlices::alignAll(int method, int reference, const PairDone& done)
{
  return alignRest(0, method, reference, done);
}

int ZxAlignSlices::alignRest(int firstPair, int method, int reference, const PairDone& done)
{
  // A run needs these two; the user finds them as they were.
  const bool transformAll = std::exchange(m_transformAll, true);
  const bool fixReference = std::exchange(m_fixReference, false);
  const int count = runOverStack(
      method, reference, [this](const ZxAlignPair& pair) { selectPair(pair); }, done, firstPair);
  m_transformAll = transformAll;
  m_fixReference = fixReference;
  return count;
}

double ZxAlignSlices::pairQuality(int lower)
{
  if (lower < 0 || lower + 1 >= numSlices()) return 0.0;
  selectPair({lower + 1, lower, +1});
  return m_data->isPairReadable() ? static_cast<double>(computeQuality()) : unreadable;
}

double ZxAlignSlices::maskedPairQuality(int lower)
{
  if (lower < 0 || lower + 1 >= numSlices()) return 0.0;
  selectPair({lower + 1, lower, +1});
  if (!m_data->isPairReadable()) return unreadable;
  const ZxDims& dims = m_data->getDims();
  const bool colour = m_data->isColorField();
  std::vector<unsigned char> mask0 = maskBytes(m_data->getMaskBitfield(lower), dims.slicePixels());
  std::vector<unsigned char> mask1 = maskBytes(m_data->getMaskBitfield(lower + 1), dims.slicePixels());
  const McHandle<ZxAlignmentEvaluator> evaluator(new ZxDefaultAlignmentEvaluator);
  evaluator->setImageStackParams(dims.width, dims.height, colour ? 4 : 1);
  evaluator->setImage0(colour ? m_data->getReferenceColorPtr() : m_data->getReferenceSlicePtr());
  evaluator->setImage1(colour ? m_data->getEditableColorPtr() : m_data->getEditableSlicePtr());
  evaluator->setMask0(mask0.empty() ? nullptr : mask0.data());
  evaluator->setMask1(mask1.empty() ? nullptr : mask1.data());
  return static_cast<double>(evaluator->quality(getSlice(lower), getSlice(lower + 1), 0));
}

bool ZxAlignSlices::liesAsMatched(int slice)
{
  const auto said = PairConfidences(m_data->getParameters(), m_data->getDims()).find(slice);
  return !said || !isInStack(slice) || !isInStack(said->reference) ||
         said->isOf(getSlice(slice), getSlice(said->reference), m_data->getDims());
}

McHandle<ZxSpatialData> ZxAlignSlices::alignedVolume()
{
  return m_data->getLattice() ? ZxAlignResampler(*this).volumeOnDemand() : McHandle<ZxSpatialData>();
}

McHandle<ZxSpatialData> ZxAlignSlices::alignedLabels()
{
  const bool has = m_data->getLattice() && portLabelField.isConnected();
  return has ? ZxAlignResampler(*this).labelsOnDemand() : McHandle<ZxSpatialData>();
}

McHandle<ZxSpatialData> ZxAlignSlices::reduced(const McHandle<ZxSpatialData>& data, int factor) const
{
  return ReducedVoxels::reduce(data, factor);
}

bool ZxAlignSlices::saveAlignment()
{
  ZxParamBundle* input = m_data->getParameters();
  if (!input || !saveTransform(*input, m_slices)) return false;
  m_modified = false;
  return true;
}
