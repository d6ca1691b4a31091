#include "zxalign/ZxAlignSlices.h"

#include "Guarded.h"
#include "ProjectedPair.h"
#include "ZxAlignResampler.h"
#include "ZxEditorPause.h"
#include "mc/McMath.h"
#include "mc/McRound.h"
#include "zx/ZxController.h"
#include "zx/ZxMessage.h"
#include "zx/ZxWorkArea.h"
#include "zxalign/AlignRecovery.h"
#include "zxalign/PairConfidence.h"
#include "zxalign/ZxAlignData.h"
#include "zxalign/ZxAlignEditor.h"
#include "zxalign/ZxAutoAlignMethod.h"
#include "zxalign/ZxAutoAlignMethodFabrique.h"

#include <algorithm>
#include <chrono>

namespace {

// What positions in 16.16 fixed point reach.
constexpr int maxSide = 65535;

constexpr int mainViewer = 0;
constexpr int landmarkMethod = 2;

enum Action { ActionEdit, ActionResample, ActionResampleToResult };

std::vector<const McTypeInfo*> inputTypes()
{
  return {&ZxLatticeInterface::getClassTypeId(), &ZxRegScalarField3::getClassTypeId(),
          &ZxUniformColorField3::getClassTypeId(), &ZxExternalData::getClassTypeId()};
}

bool sameDims(const ZxLattice* a, const ZxLattice& b) { return a && a->getDims() == b.getDims(); }

/// A stored output size; that of the input where there is none, or one that no volume can have.
int storedSize(const ZxParamBundle& parameters, const char* name, int inputSize)
{
  int size = 0;
  return parameters.findNums(name, 1, &size) && size > 0 && size <= ZxAlignSettings::maxOutputSize
             ? size
             : inputSize;
}

} // namespace

const McTypeInfo& ZxAlignSlices::getClassTypeId()
{
  static const McTypeInfo type("ZxAlignSlices", {&ZxCompModule::getClassTypeId()},
                               &ZxAlignSlices::createInstance);
  return type;
}

void ZxAlignSlices::initClass() { getClassTypeId(); }

McHandable* ZxAlignSlices::createInstance() { return new ZxAlignSlices; }

ZxAlignSlices::ZxAlignSlices()
  : ZxCompModule(inputTypes()), portMask(this, "mask", {&ZxLabelLatticeInterface::getClassTypeId()}),
    portLabelField(this, "LabelField", {&ZxLabelLatticeInterface::getClassTypeId()}),
    portReference(this, "reference",
                  {&ZxRegScalarField3::getClassTypeId(), &ZxStackedScalarField3::getClassTypeId(),
                   &ZxUniformColorField3::getClassTypeId()}),
    portLinearRange(this, "linearRange", "Data Window:", {{"min", 0.0f}, {"max", 255.0f}}),
    portDisplayMode(this, "displayMode", "Display mode:", {"Normal", "Max. intensity projection"}, 0),
    portMaxIntNumSlices(this, "maxIntNumSlices",
                        "Number of slices projected:", {{"Reference:", 10.0f}, {"Editable:", 10.0f}}),
    portResampleMethod(this, "resampleMethod", "Resample method", {"Preview", "High Quality"}, 1),
    portAction(this, "action", "Action:", {"Edit", "Resample", "Resample to Result"}),
    m_data(std::make_unique<ZxAlignData>(this)), m_methods(ZxAutoAlignMethodFabrique::getInstance()),
    m_recovery(std::make_unique<AlignRecovery>(*this))
{
  describePorts();
  ZxAlignSlices::update();
}

void ZxAlignSlices::describePorts()
{
  portData.setTip("The volume whose slices are aligned: at least two slices, grey or colour.");
  portMask.setTip(
      "Labels of the same size as the volume: quality and automatic methods use labelled pixels only.");
  portLabelField.setTip("Labels that belong to the volume, of the same size: they are resampled with it.");
  portReference.setTip("A volume of the same size that carries an alignment, which is read.");
  portLinearRange.setTip("Values of the data that are shown black (min) and white (max).");
  portDisplayMode.setTip("Slices as they are, or the largest values of several slices.");
  portMaxIntNumSlices.setTip("How many slices are projected into one, for each slice of the pair.");
  portResampleMethod.setTip("Preview takes the nearest pixel, High Quality interpolates.");
  portAction.setTip(
      "Edit opens the editor of the alignment. Resample makes a new aligned volume, Resample to "
      "Result writes into the one made before.");
}

ZxAlignSlices::~ZxAlignSlices()
{
  m_editor.reset(); // It shows and edits everything else.
  m_recovery.reset();
  m_data.reset();
}

void ZxAlignSlices::update()
{
  portAction.setButtonSensitive(ActionResampleToResult, getResult(0) != nullptr);
  if (const ZxLattice* input = portData.getLattice()) {
    portLinearRange.setVisible(!input->isColor());
    portDisplayMode.setVisible(!input->isColor());
  }
  portMaxIntNumSlices.setVisible(portDisplayMode.getValue() != 0);
}

void ZxAlignSlices::compute()
{
  if (portData.isNew() && !computeData()) return;
  if (!m_data->getLattice()) return;
  if (portMask.isNew()) computeMask();
  if (portReference.isNew()) computeReference();
  if (portLinearRange.isNew()) setRangeCurrent(portLinearRange.getValue(0), portLinearRange.getValue(1));
  if (portAction.isNew()) computeAction();
  if (portDisplayMode.isNew()) setUseMaxIntProjection(portDisplayMode.getValue() != 0);
  if (portMaxIntNumSlices.isNew()) computeMaxIntNumSlices();
}

bool ZxAlignSlices::computeData()
{
  ZxLattice* lattice = portData.getLattice();
  if (!lattice || !lattice->isValid()) {
    rejectInput();
    return true;
  }
  return lattice == m_data->getLattice() || acceptInput(portData.getSpatialData(), lattice);
}

void ZxAlignSlices::rejectInput()
{
  // The editor shows the input until it has heard of the new one.
  const McHandle<ZxSpatialData> before(m_data->getSpatialData());
  const ZxEditorPause pause(m_editor.get());
  portData.disconnect();
  leaveInput();
  m_data->reset();
  if (m_editor) m_editor->reinitialise();
}

// What was edited and not saved stays in the recovery file of the old input.
void ZxAlignSlices::leaveInput()
{
  m_recovery->detach();
  m_undoRedo.clear(); // its snapshots are of other slices
  m_modified = false;
}

bool ZxAlignSlices::acceptInput(ZxSpatialData* data, ZxLattice* lattice)
{
  const McHandle<ZxSpatialData> before(m_data->getSpatialData()); // as in rejectInput()
  const ZxEditorPause pause(m_editor.get());
  leaveInput();
  if (!m_data->init(data, lattice)) {
    if (m_editor) m_editor->reinitialise();
    return false;
  }
  if (lattice->isColor()) {
    setUseMaxIntProjection(false);
    portDisplayMode.setValue(0);
  }
  if (lattice->getDims().slices < 2) {
    ZxMessage::getTheMsg()->printf("At least 2 slices required");
    rejectInput();
    return false;
  }
  if (std::max(lattice->getDims().width, lattice->getDims().height) > maxSide) {
    ZxMessage::getTheMsg()->printf("Slices of more than %d pixels a side cannot be aligned", maxSide);
    rejectInput();
    return false;
  }
  checkAuxiliaryInputs(*lattice);
  initDataWindow(*lattice);
  initTransforms();
  initPair();
  m_recovery->attach();
  return true;
}

void ZxAlignSlices::checkAuxiliaryInputs(const ZxLattice& lattice)
{
  // A reference that fits is read when the transforms have their new length.
  for (ZxConnection* connection : {&portMask, &portReference, &portLabelField})
    if (connection->isConnected() && !sameDims(connection->getLattice(), lattice)) connection->disconnect();
  useMask(dynamic_cast<ZxLabelLattice*>(portMask.getLattice()));
}

void ZxAlignSlices::initDataWindow(ZxLattice& lattice)
{
  float min = 0.0f, max = 255.0f;
  double stored[2];
  if (m_data->getParameters()->findReals("DataWindow", 2, stored)) {
    min = static_cast<float>(stored[0]);
    max = static_cast<float>(stored[1]);
  } else if (!lattice.isColor()) {
    lattice.getRange(min, max);
  }
  portLinearRange.setValue(0, min);
  portLinearRange.setValue(1, max);
}

void ZxAlignSlices::initTransforms()
{
  const ZxParamBundle& parameters = *m_data->getParameters();
  const ZxDims& dims = m_data->getDims();
  m_settings.outputWidth = storedSize(parameters, "OutputImageWidth", dims.width);
  m_settings.outputHeight = storedSize(parameters, "OutputImageHeigth", dims.height);
  for (McDArray<SliceInfo>* slices : {&m_slices, &m_appliedLabelSlices}) {
    slices->resize(static_cast<std::size_t>(dims.slices));
    for (SliceInfo& slice : *slices) slice.setXForm(SliceXForm());
  }
  int applied = 0;
  if (!parameters.findNums("AlignIsApplied", 1, &applied) || applied == 0) readTransform();
  PairConfidences(m_data->getParameters(), dims).adopt(m_slices);
  if (portReference.isConnected()) readReference(dynamic_cast<ZxField3*>(portReference.getSource()));
}

void ZxAlignSlices::initPair()
{
  const ZxDims& dims = m_data->getDims();
  const int editable = dims.slices / 2;
  // Of two slices the upper one cannot be a reference for one above it.
  if (editable - m_editableSide >= dims.slices) m_editableSide = 1;
  setReferenceSlice(editable - m_editableSide);
  setSlice(editable);
  updateViews();
  updateQuality();
  m_settings.rotationStep = static_cast<float>(360.0 / (mc::kPi * dims.width));
  if (m_editor) m_editor->reinitialise();
}

void ZxAlignSlices::computeMask()
{
  auto* mask = dynamic_cast<ZxLabelLattice*>(portMask.getLattice());
  if (mask && !sameDims(mask, *m_data->getLattice())) mask = nullptr;
  if (!mask) portMask.disconnect();
  useMask(mask);
  updateViews();
}

void ZxAlignSlices::useMask(ZxLabelLattice* mask)
{
  const McHandle<ZxData> before = m_maskSource; // until the slices are mapped without it
  m_maskSource = McHandle<ZxData>(mask ? portMask.getSource() : nullptr);
  m_data->setMaskLattice(mask);
}

void ZxAlignSlices::computeReference()
{
  auto* reference = dynamic_cast<ZxField3*>(portReference.getSource());
  if (reference && sameDims(reference->getLattice(), *m_data->getLattice()))
    readReference(reference);
  else
    portReference.disconnect();
  if (m_editor) m_editor->reinitialise();
}

void ZxAlignSlices::computeAction()
{
  if (!portData.isConnected()) return;
  switch (portAction.getHit()) {
  case ActionEdit:
    doIt(1);
    break;
  case ActionResample:
    apply(false);
    update();
    break;
  case ActionResampleToResult:
    apply(true);
    break;
  default:
    break;
  }
}

void ZxAlignSlices::computeMaxIntNumSlices()
{
  useThickness(mc::addHalfAndTrunc(portMaxIntNumSlices.getValue(0)),
               mc::addHalfAndTrunc(portMaxIntNumSlices.getValue(1)));
}

void ZxAlignSlices::setProjectionThickness(int reference, int editable)
{
  if (!useThickness(reference, editable)) return;
  portMaxIntNumSlices.setValue(0, static_cast<float>(m_referenceThickness));
  portMaxIntNumSlices.setValue(1, static_cast<float>(m_editableThickness));
}

bool ZxAlignSlices::useThickness(int reference, int editable)
{
  reference = std::max(1, reference);
  editable = std::max(1, editable);
  if (reference == m_referenceThickness && editable == m_editableThickness) return false;
  m_referenceThickness = reference;
  m_editableThickness = editable;
  mapSlices();
  updateViews();
  return true;
}

void ZxAlignSlices::doIt(int activate)
{
  if (m_switchingEditor) return;
  if (!m_editorOpen && !makeEditor()) {
    ZxMessage::getTheMsg()->printf("This program has no editor window for ZxAlignSlices.");
    return;
  }
  const McHandle<ZxAlignSlices> alive(this); // Closing may ask the user, and much can happen meanwhile.
  m_switchingEditor = true;
  if (!m_editorOpen)
    openEditor(activate);
  else if (m_editor->cancel())
    editorClosed();
  else if (m_editor && activate)
    m_editor->setActive(true);
  ZxWorkArea::getTheWorkArea()->processPendingEvents();
  m_switchingEditor = false;
}

bool ZxAlignSlices::makeEditor()
{
  if (!m_editor) m_editor = ZxAlignEditor::create(*this);
  return m_editor != nullptr;
}

void ZxAlignSlices::openEditor(int activate)
{
  const ZxViewer* viewer = ZxController::getTheController()->viewer(mainViewer);
  m_viewerWasShown = viewer && viewer->isShown();
  m_editorOpen = true;
  portAction.setButtonLabel(ActionEdit, "Close");
  if (activate) m_editor->setActive(true);
}

void ZxAlignSlices::editorClosed()
{
  if (!m_editorOpen) return;
  m_editorOpen = false;
  portAction.setButtonLabel(ActionEdit, "Edit");
  ZxViewer* viewer = ZxController::getTheController()->viewer(mainViewer);
  if (!viewer) return;
  if (m_viewerWasShown)
    viewer->show(1);
  else
    viewer->hide();
}

void ZxAlignSlices::forgetEditor(const ZxAlignEditor* editor)
{
  if (!editor || m_editor.get() != editor) return;
  static_cast<void>(m_editor.release()); // It is on its way out already.
  editorClosed();
}

void ZxAlignSlices::setEditor(std::unique_ptr<ZxAlignEditor> editor) { m_editor = std::move(editor); }

void ZxAlignSlices::setSlice(int slice)
{
  m_editableSlice = slice;
  m_data->setEditableSlice(slice);
}

void ZxAlignSlices::setReferenceSlice(int slice)
{
  m_referenceSlice = slice;
  m_data->setReferenceSlice(slice);
}

void ZxAlignSlices::restoreState(const AlignState& state)
{
  const ZxEditorPause pause(m_editor.get());
  m_slices = state.slices;
  restorePair(state.currentSlice, state.side);
  if (m_useMaxIntProjection) mapSlices(); // projections are made with the transforms
  m_modified = true;
  if (m_editor) m_editor->showPair();
  m_recovery->queue();
  updateQuality();
}

void ZxAlignSlices::restorePair(int editable, int side)
{
  // A fixed reference stays where it is, and with one the side may be that of a slice outside the stack.
  const bool keepsReference = m_fixReference && isInStack(m_referenceSlice) && m_referenceSlice != editable;
  m_editableSide = keepsReference || isInStack(editable - side) ? side : -side;
  if (!keepsReference) setReferenceSlice(editable - m_editableSide);
  setSlice(editable);
}

bool ZxAlignSlices::isInStack(int slice) const { return slice >= 0 && slice < numSlices(); }

void ZxAlignSlices::mapSlices() { m_data->mapSlices(); }

void ZxAlignSlices::updateViews()
{
  if (m_editor) m_editor->updateViews();
}

void ZxAlignSlices::setRangeCurrent(float min, float max)
{
  portLinearRange.setValue(0, min);
  portLinearRange.setValue(1, max);
  mapSlices();
  updateViews();
}

void ZxAlignSlices::setUseMaxIntProjection(bool on)
{
  if (on == m_useMaxIntProjection) return;
  portDisplayMode.setValue(on ? 1 : 0);
  m_useMaxIntProjection = on;
  mapSlices();
  if (m_editor) m_editor->setUseMaxIntProjection(on);
}

ZxLattice* ZxAlignSlices::getDataLattice() const noexcept { return m_data->getLattice(); }

unsigned char* ZxAlignSlices::getComputedEditableSlicePtr() { return m_data->getEditableSlicePtr(); }

unsigned char* ZxAlignSlices::getComputedReferenceSlicePtr() { return m_data->getReferenceSlicePtr(); }

void ZxAlignSlices::lockDataMutex() { m_data->dataMutex().lock(); }

void ZxAlignSlices::unlockDataMutex() { m_data->dataMutex().unlock(); }

int ZxAlignSlices::doLayout(int mode)
{
  if (m_methodRuns || !hasEditableSlice() || !isInStack(m_referenceSlice)) return 0;
  if (!m_data->isPairReadable()) return 0; // Said when it was mapped; it looks like a black slice.
  const std::unique_ptr<ZxAutoAlignMethod> method(m_methods->createAutoAlignMethod(this, mode));
  if (!method) return 0;
  int result = 0;
  const auto confidences = [this] { return PairConfidences(m_data->getParameters(), m_data->getDims()); };
  const int slice = m_editableSlice;
  const McDArray<SliceInfo> slicesBefore = m_slices;
  const std::optional<PairConfidence> before = confidences().find(slice);
  withoutPasses([&] {
    // Landmarks are points of the slices themselves, whatever is shown of them.
    std::optional<ProjectedPair> projected;
    if (m_useMaxIntProjection && mode != landmarkMethod) projected.emplace(*this);
    result = runMethod(*method, mode);
  });
  if (result) confidences().follow(slice, before, slicesBefore, m_slices);
  if (result) m_recovery->queue();
  updateViews();
  return result;
}

int ZxAlignSlices::runMethod(ZxAutoAlignMethod& method, int mode)
{
  const McDArray<SliceInfo> before = m_slices;
  const bool wasModified = m_modified;
  m_methodRuns = true;
  const std::string problem = guarded([&] { method.doLayout(); });
  m_methodRuns = false;
  if (problem.empty()) return 1;
  m_slices = before;
  m_modified = wasModified;
  showEditableSlice();
  ZxMessage::getTheMsg()->printf("The automatic method %d failed: %s.", mode, problem.c_str());
  return 0;
}

float ZxAlignSlices::performanceTest()
{
  if (!m_editor || !m_editorOpen) return 0.0f;
  using Clock = std::chrono::steady_clock;
  const Clock::time_point start = Clock::now();
  for (int i = 0; i < 10; ++i) m_editor->repaintSliceView();
  const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
  const double rate = 10.0 / seconds;
  ZxMessage::getTheMsg()->printf("Time = %g s for 10 frames. Rate= %.2f fps\n", seconds, rate);
  return static_cast<float>(rate);
}

void ZxAlignSlices::apply(bool reuse)
{
  if (m_data->getLattice()) ZxAlignResampler(*this).run(reuse);
}
