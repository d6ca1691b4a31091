// The commands of the module: what scripts can do with it and with its editor.
#include "AlignCommands.h"

#include "AlignCommandArguments.h"
#include "LandmarkTable.h"
#include "zx/ZxMessage.h"
#include "zxalign/AlignRecovery.h"
#include "zxalign/ZxAlignEditor.h"
#include "zxalign/ZxAlignEditorScripting.h"
#include "zxalign/ZxAlignSlices.h"
#include "zxalign/ZxAutoAlignMethodFabrique.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>

namespace {

using Module = ZxAlignSlices;
using Interp = Tcl_Interp*;
using Words = ZxArguments;

int number(Interp interp, int value)
{
  Tcl_VaSetResult(interp, "%d", value);
  return kZxOk;
}

void say(const char* text) { ZxMessage::getTheMsg()->printf("%s", text); }

int noInput(Interp interp) { return zxError(interp, "there is no input"); }

/// True when the editor is open, and can be asked.
bool hasEditor(const Module& module) { return module.isEditorOpen() && module.editor()->scripting(); }

ZxAlignEditorScripting& editor(Module& module) { return *module.editor()->scripting(); }

bool isSlice(const Module& module, int slice) { return slice >= 0 && slice < module.numSlices(); }

/// Calls an operation of the editor that takes nothing; the editor is open.
template <auto operation>
int ask(Module& module, Interp, Words)
{
  (editor(module).*operation)();
  return kZxOk;
}

/// Calls one that takes a whole number.
template <auto operation>
int askNumber(Module& module, Interp, Words words)
{
  (editor(module).*operation)(alignInteger(words[0]));
  return kZxOk;
}

/// Calls one that takes a flag.
template <auto operation>
int askFlag(Module& module, Interp, Words words)
{
  (editor(module).*operation)(alignFlag(words[0]));
  return kZxOk;
}

/// The number that an operation of the editor gives.
template <auto operation>
int tell(Module& module, Interp interp, Words)
{
  return number(interp, (editor(module).*operation)());
}

int performance(Module& module, Interp, Words)
{
  module.performanceTest();
  return kZxOk;
}

// Landmarks.

bool hasLandmark(const Module& module, int slice, int index)
{
  return index >= 0 && static_cast<std::size_t>(index) < module.getSlice(slice).landmarks.size();
}

int setLandmark(Module& module, Interp, Words words)
{
  const int slice = alignInteger(words[0]);
  const int index = alignInteger(words[1]);
  if (!isSlice(module, slice) || !hasLandmark(module, slice, index)) return kZxOk;
  module.getSlice(slice).landmarks[static_cast<std::size_t>(index)] =
      QPoint(alignInteger(words[2]), alignInteger(words[3]));
  module.setModified(true);
  module.recovery().queue();
  editor(module).draw();
  return kZxOk;
}

int getLandmark(Module& module, Interp interp, Words words)
{
  const int slice = alignInteger(words[0]);
  const int index = alignInteger(words[1]);
  if (!hasEditor(module) || !isSlice(module, slice)) {
    say("Invalid slice number");
  } else if (!hasLandmark(module, slice, index)) {
    say("Invalid landmark number");
  } else {
    const QPoint p = module.getSlice(slice).landmarks[static_cast<std::size_t>(index)];
    Tcl_VaSetResult(interp, "%d %d", p.x(), p.y());
  }
  return kZxOk;
}

void landmarksChanged(Module& module)
{
  module.setModified(true);
  module.updateViews();
}

int addLandmark(Module& module, Interp interp, Words words)
{
  const auto x = zxGetInt(interp, words[0]);
  const auto y = x ? zxGetInt(interp, words[1]) : std::nullopt;
  if (!y) return kZxError;
  if (module.numSlices() == 0) return noInput(interp);
  module.undoRedo().saveState();
  module.addPoint(QPoint(*x, *y));
  landmarksChanged(module);
  return kZxOk;
}

int removeLandmark(Module& module, Interp interp, Words words)
{
  const int count = module.numSlices() > 0 ? static_cast<int>(module.getSlice(0).landmarks.size()) : 0;
  const auto index = zxGetIndex(interp, words[0], count, "landmark");
  if (!index) return kZxError;
  if (count < 3) return zxError(interp, "a slice keeps at least two landmarks");
  module.undoRedo().saveState();
  module.removePoint(*index);
  landmarksChanged(module);
  return kZxOk;
}

int getLandmarkCount(Module& module, Interp interp, Words)
{
  return number(interp, module.numSlices() > 0 ? static_cast<int>(module.getSlice(0).landmarks.size()) : 0);
}

int setLandmarks(Module& module, Interp interp, Words words)
{
  const std::string problem = module.setLandmarksFrom(words[0]);
  return problem.empty() ? kZxOk : zxError(interp, problem);
}

// The pair.

int setSliceNumber(Module& module, Interp, Words words)
{
  editor(module).sliceChange(alignReal(words[0]));
  return kZxOk;
}

int getSliceNumber(Module& module, Interp interp, Words) { return number(interp, module.getEditableSlice()); }

int setEditableSlice(Module& module, Interp, Words words)
{
  if (!std::strcmp(words[0], "upper"))
    editor(module).setEditableSlice(1);
  else if (!std::strcmp(words[0], "lower"))
    editor(module).setEditableSlice(-1);
  else
    say("usage: setEditableSlice <lower | upper>");
  return kZxOk;
}

int getEditableSlice(Module& module, Interp interp, Words)
{
  const int side = module.getEditableSide();
  return zxResult(interp, side == 1 ? "upper" : side == -1 ? "lower" : "");
}

int getNumSlices(Module& module, Interp interp, Words) { return number(interp, module.numSlices()); }

int setReferenceSlice(Module& module, Interp, Words words)
{
  const int slice = alignInteger(words[0]);
  if (!isSlice(module, slice)) return kZxOk;
  module.setReferenceSlice(slice);
  module.updateViews();
  module.updateQuality();
  return kZxOk;
}

int getReferenceSlice(Module& module, Interp interp, Words)
{
  return number(interp, module.getReferenceSlice());
}

int setFixReferenceSlice(Module& module, Interp, Words words)
{
  module.setReferenceFixed(alignFlag(words[0]));
  module.updateViews();
  return kZxOk;
}

int getFixReferenceSlice(Module& module, Interp interp, Words)
{
  return number(interp, module.isReferenceFixed());
}

int setTransformAll(Module& module, Interp, Words words)
{
  module.setTransformAll(alignFlag(words[0]));
  module.updateViews();
  return kZxOk;
}

int getTransformAll(Module& module, Interp interp, Words) { return number(interp, module.transformsAll()); }

// Transforms.

/// False, after a message, for a number that no slice can be moved or turned by, or come to lie at.
bool isFinite(const char* command, float value)
{
  if (!std::isfinite(value)) ZxMessage::getTheMsg()->printf("%s: the number is not finite", command);
  return std::isfinite(value);
}

int translate(Module& module, Interp, Words words)
{
  const float dx = alignReal(words[0]);
  const float dy = alignReal(words[1]);
  for (const SliceInfo& slice : module.slices()) // All of them may follow the editable one.
    if (!isFinite("translate", slice.translationX + dx) || !isFinite("translate", slice.translationY + dy))
      return kZxOk;
  module.translateRelative(dx, dy);
  if (hasEditor(module)) editor(module).showEdit();
  return kZxOk;
}

int rotate(Module& module, Interp, Words words)
{
  const float angle = alignReal(words[0]);
  if (!isFinite("rotate", angle)) return kZxOk;
  module.rotateRelative(angle);
  if (hasEditor(module)) editor(module).showEdit();
  return kZxOk;
}

int reset(Module& module, Interp, Words)
{
  if (hasEditor(module))
    editor(module).reset();
  else
    module.resetTransforms(module.getEditableSlice(), module.getEditableSlice());
  return kZxOk;
}

int resetAll(Module& module, Interp, Words)
{
  if (hasEditor(module))
    editor(module).resetAll();
  else
    module.resetTransforms(0, module.numSlices() - 1);
  return kZxOk;
}

/// The shortest text that reads back as the same number.
std::string text(float value)
{
  std::array<char, 32> digits;
  return {digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr};
}

int getTransform(Module& module, Interp interp, Words words)
{
  if (module.numSlices() == 0) return noInput(interp);
  const auto slice = zxGetIndex(interp, words[0], module.numSlices(), "slice");
  if (!slice) return kZxError;
  const SliceXForm& t = module.getSlice(*slice);
  return zxResult(interp, text(t.translationX) + " " + text(t.translationY) + " " + text(t.rotation) + " " +
                              (t.flip ? "1" : "0"));
}

int setTransform(Module& module, Interp interp, Words words)
{
  if (module.numSlices() == 0) return noInput(interp);
  const auto slice = zxGetIndex(interp, words[0], module.numSlices(), "slice");
  if (!slice) return kZxError;
  std::array<float, 3> numbers{};
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const auto value = zxGetFloat(interp, words[i + 1]);
    if (!value) return kZxError;
    numbers[i] = *value;
  }
  const auto flip = zxGetInt(interp, words[4]);
  if (!flip) return kZxError;
  module.undoRedo().saveState();
  module.setTransform(*slice, SliceXForm(numbers[0], numbers[1], numbers[2], *flip != 0));
  return kZxOk;
}

int undo(Module& module, Interp, Words)
{
  module.undoRedo().undo();
  return kZxOk;
}

int redo(Module& module, Interp, Words)
{
  module.undoRedo().redo();
  return kZxOk;
}

int getQuality(Module& module, Interp interp, Words)
{
  if (module.numSlices() == 0) return noInput(interp);
  return zxResult(interp, text(module.computeQuality()));
}

// Modes.

/// The number of the method of a name, or -1.
int methodOfName(const Module& module, std::string_view name)
{
  for (const Module::Method& method : module.methods())
    if (name == method.name) return method.id;
  return -1;
}

int unknownMethod(const Module& module, Interp interp, const char* name)
{
  std::string known;
  for (const Module::Method& method : module.methods()) known += (known.empty() ? "" : ", ") + method.name;
  return zxError(interp, "there is no alignment method \"" + std::string(name) + "\"; there are " + known);
}

int setAlignMode(Module& module, Interp interp, Words words)
{
  const char first = words[0][0];
  const bool isNumber = first == '\0' || std::strchr("+-0123456789 \t", first);
  const int mode = isNumber ? alignInteger(words[0]) : methodOfName(module, words[0]);
  if (!isNumber && mode < 0) return unknownMethod(module, interp, words[0]);
  if (isNumber && static_cast<unsigned>(mode) > 3u) return kZxOk;
  if (hasEditor(module))
    editor(module).changeAlignMode(mode);
  else
    say("invalid mode; 0<=mode<=3");
  return kZxOk;
}

int setViewMode(Module& module, Interp, Words words)
{
  const int mode = alignInteger(words[0]);
  if (mode > 3) return kZxOk; // Negative ones pass, deliberately: the editor knows none of them.
  if (hasEditor(module))
    editor(module).chooseViewMode(mode < 0 ? 0 : mode + 1);
  else
    say("invalid mode; 0<=mode<=3");
  return kZxOk;
}

// Output and settings.

int setOutputDims(Module& module, Interp, Words words)
{
  const int width = alignInteger(words[0]);
  const int height = alignInteger(words[1]);
  if (std::max(width, height) > ZxAlignSettings::maxOutputSize) {
    ZxMessage::getTheMsg()->printf("setOutputDims: a side has at most %d pixels",
                                   ZxAlignSettings::maxOutputSize);
    return kZxOk;
  }
  ZxAlignSettings& settings = module.alignSettings();
  if (width >= settings.outputWidth && height >= settings.outputHeight) {
    settings.outputWidth = width;
    settings.outputHeight = height;
    return kZxOk;
  }
  say("usage: setOutputDims <Width> <Heigth>");
  say("The new dimensions must be bigger than the old dimensions.");
  return kZxOk;
}

int getOutputDims(Module& module, Interp interp, Words)
{
  const ZxAlignSettings& settings = module.alignSettings();
  Tcl_VaSetResult(interp, "%d %d", settings.outputWidth, settings.outputHeight);
  return kZxOk;
}

int setRotationAllowed(Module& module, Interp, Words words)
{
  module.alignSettings().rotationAllowed = alignFlag(words[0]);
  return kZxOk;
}

int getRotationAllowed(Module& module, Interp interp, Words)
{
  return number(interp, module.alignSettings().rotationAllowed);
}

bool isSetting(const Module& module, const char* name)
{
  const auto all = module.settings();
  return std::any_of(all.begin(), all.end(),
                     [&](const ZxAlignSetting& s) { return !std::strcmp(s.name, name); });
}

int getOption(Module& module, Interp interp, Words words)
{
  if (isSetting(module, words[0])) return zxResult(interp, module.getSetting(words[0]));
  std::string known;
  for (const ZxAlignSetting& setting : module.settings())
    known += (known.empty() ? "" : ", ") + std::string(setting.name);
  return zxError(interp, "there is no option \"" + std::string(words[0]) + "\"; there are " + known);
}

int setOption(Module& module, Interp interp, Words words)
{
  if (!isSetting(module, words[0])) return getOption(module, interp, words);
  const std::string problem = module.setSetting(words[0], words[1]);
  return problem.empty() ? kZxOk : zxError(interp, problem);
}

// Projections.

int setUseMaxIntProjection(Module& module, Interp, Words words)
{
  module.setUseMaxIntProjection(alignFlag(words[0]));
  return kZxOk;
}

int getUseMaxIntProjection(Module& module, Interp interp, Words)
{
  return number(interp, module.usesMaxIntProjection());
}

int setReferenceThickness(Module& module, Interp, Words words)
{
  module.setProjectionThickness(alignInteger(words[0]), module.getEditableProjectionThickness());
  return kZxOk;
}

int getReferenceThickness(Module& module, Interp interp, Words)
{
  return number(interp, module.getReferenceProjectionThickness());
}

int setEditableThickness(Module& module, Interp, Words words)
{
  module.setProjectionThickness(module.getReferenceProjectionThickness(), alignInteger(words[0]));
  return kZxOk;
}

int getEditableThickness(Module& module, Interp interp, Words)
{
  return number(interp, module.getEditableProjectionThickness());
}

// The editor, storage, results.

int edit(Module& module, Interp, Words)
{
  if (module.portData.isConnected()) module.doIt(1);
  return kZxOk;
}

int close(Module& module, Interp, Words)
{
  module.doIt(1); // An open editor asks, and goes when it may.
  return kZxOk;
}

int isEditorOpen(Module& module, Interp interp, Words) { return number(interp, module.isEditorOpen()); }

int read(Module& module, Interp, Words)
{
  if (hasEditor(module))
    editor(module).read();
  else
    module.readTransformAgain();
  return kZxOk;
}

int resample(Module& module, Interp, Words)
{
  module.apply(false);
  module.fire();
  return kZxOk;
}

int resampleToResult(Module& module, Interp interp, Words)
{
  if (!module.getResult()) return zxError(interp, "there is no result yet");
  module.apply(true);
  module.fire();
  return kZxOk;
}

int snapshot(Module& module, Interp interp, Words words)
{
  if (!hasEditor(module)) return zxError(interp, "Viewer not active");
  const std::string problem = editor(module).snapshot(words[0]);
  return problem.empty() ? kZxOk : zxError(interp, problem);
}

int setCheckerboardSize(Module& module, Interp interp, Words words)
{
  const auto size = zxGetInt(interp, words[0]);
  if (!size) return kZxError;
  if (*size < 1) return zxError(interp, "a tile is at least 1 pixel large");
  editor(module).setChessFieldSize(*size);
  return kZxOk;
}

using Editor = ZxAlignEditorScripting;
constexpr auto kNothing = AlignCommand::Needs::Nothing;
constexpr auto kEditor = AlignCommand::Needs::Editor;

constexpr AlignCommand commands[] = {
    {{"performance", "", "Repaints the slice view ten times and prints the frames per second."},
     kNothing,
     performance},
    {{"redrawInhibit", "DELTA", "Adds to the number of reasons for which the slice view is not redrawn."},
     kEditor,
     askNumber<&Editor::inhibitRedraw>},
    {{"setLandmark", "SLICE INDEX X Y", "Moves a landmark of a slice to a pixel."}, kEditor, setLandmark},
    {{"getLandmark", "SLICE INDEX", "The pixel of a landmark of a slice: x y."}, kNothing, getLandmark},
    {{"setSliceNumber", "N", "Goes to a slice."}, kEditor, setSliceNumber},
    {{"getSliceNumber", "", "The editable slice."}, kNothing, getSliceNumber},
    {{"setEditableSlice", "SIDE", "Which slice of the pair is edited: lower or upper."},
     kEditor,
     setEditableSlice},
    {{"getEditableSlice", "", "lower or upper."}, kNothing, getEditableSlice},
    {{"translate", "DX DY", "Moves the editable slice by pixels, while the editor is open."},
     kNothing,
     translate},
    {{"rotate", "ANGLE", "Turns the editable slice by degrees, while the editor is open."}, kNothing, rotate},
    {{"setAlignMode", "MODE", "The editor's method by number (0 to 3) or name, also a plug-in's."},
     kNothing,
     setAlignMode},
    {{"getAlignMode", "", "The number of the editor's method."}, kEditor, tell<&Editor::getAlignMode>},
    {{"setOutputDims", "WIDTH HEIGHT", "Size of the resampled slices in pixels; it only grows."},
     kNothing,
     setOutputDims},
    {{"getOutputDims", "", "Width and height of the resampled slices."}, kNothing, getOutputDims},
    {{"setEditMode", "MODE", "What the mouse edits: 1 transforms, 3 landmarks."},
     kEditor,
     askNumber<&Editor::chooseEditMode>},
    {{"getEditMode", "", "What the mouse edits."}, kEditor, tell<&Editor::getEditMode>},
    {{"setViewMode", "MODE", "How the pair is shown: 0 red/green, 1 checkerboard, 2 average, 3 inverted."},
     kNothing,
     setViewMode},
    {{"align", "", "Aligns the current pair with the editor's method."}, kEditor, ask<&Editor::doAutoAlign>},
    {{"alignAll", "", "Aligns all slices with the editor's method, outwards from the reference slice."},
     kEditor,
     ask<&Editor::doAllAutoAlign>},
    {{"snapshot", "FILE", "Writes a picture of the editor without its toolbars."},
     kNothing,
     snapshot,
     {},
     "Usage: snapshot [filename]"},
    {{"edit", "", "Opens the editor; an open one is closed, as its button does."}, kNothing, edit},
    {{"mirror", "", "Flips the editable slice."}, kEditor, ask<&Editor::mirror>},
    {{"close", "", "Closes the editor."}, kEditor, close},
    {{"save", "", "Stores the alignment in the parameters of the input."}, kEditor, ask<&Editor::save>},
    {{"resample", "", "Resamples input and label field into new results."}, kNothing, resample},
    {{"setRotationAllowed", "FLAG", "Whether automatic methods may turn slices."},
     kNothing,
     setRotationAllowed},
    {{"getRotationAllowed", "", "1 or 0."}, kNothing, getRotationAllowed},
    {{"setReferenceSlice", "N", "The slice that the editable one is compared with."},
     kNothing,
     setReferenceSlice},
    {{"getReferenceSlice", "", "The reference slice."}, kNothing, getReferenceSlice},
    {{"setFixReferenceSlice", "FLAG", "Whether the reference slice stays when another slice is gone to."},
     kNothing,
     setFixReferenceSlice},
    {{"getFixReferenceSlice", "", "1 or 0."}, kNothing, getFixReferenceSlice},
    {{"showCoronalView", "FLAG", "Shows or hides the view along x and z."},
     kEditor,
     askFlag<&Editor::showCoronalView>,
     "showXZView"},
    {{"showSagittalView", "FLAG", "Shows or hides the view along y and z."},
     kEditor,
     askFlag<&Editor::showSagittalView>,
     "showYZView"},
    {{"orthoViewZoomIn", "", "Zooms the orthogonal views in."}, kEditor, ask<&Editor::orthoViewZoomIn>},
    {{"orthoViewZoomOut", "", "Zooms the orthogonal views out."}, kEditor, ask<&Editor::orthoViewZoomOut>},
    {{"viewZoomIn", "", "Zooms the slice view in."}, kEditor, ask<&Editor::viewZoomIn>},
    {{"viewZoomOut", "", "Zooms the slice view out."}, kEditor, ask<&Editor::viewZoomOut>},
    {{"setSagittalViewSliceNumber", "X", "Where the stack is cut along y and z."},
     kEditor,
     askNumber<&Editor::setSagittalViewSliceNumber>,
     "setYZViewSliceNumber"},
    {{"getSagittalViewSliceNumber", "", "That position."},
     kEditor,
     tell<&Editor::getSagittalViewSliceNumber>,
     "getYZViewSliceNumber"},
    {{"setCoronalViewSliceNumber", "Y", "Where the stack is cut along x and z."},
     kEditor,
     askNumber<&Editor::setCoronalViewSliceNumber>,
     "setXZViewSliceNumber"},
    {{"setOrthoViewLineWidth", "PERCENT", "Length of the slice marker in the orthogonal views, 0 to 100."},
     kEditor,
     askNumber<&Editor::setOrthoViewLineWidth>},
    {{"getCoronalViewSliceNumber", "", "The position of the cut along x and z."},
     kEditor,
     tell<&Editor::getCoronalViewSliceNumber>,
     "getXZViewSliceNumber"},
    {{"setUseMaxIntProjection", "FLAG", "Shows maximum-intensity projections instead of slices."},
     kNothing,
     setUseMaxIntProjection},
    {{"getUseMaxIntProjection", "", "1 or 0."}, kNothing, getUseMaxIntProjection},
    {{"setMaxIntProjectionRefThickness", "N", "Number of slices projected for the reference slice."},
     kNothing,
     setReferenceThickness},
    {{"getMaxIntProjectionRefThickness", "", "That number."}, kNothing, getReferenceThickness},
    {{"setMaxIntProjectionSliceThickness", "N", "Number of slices projected for the editable slice."},
     kNothing,
     setEditableThickness},
    {{"getMaxIntProjectionSliceThickness", "", "That number."}, kNothing, getEditableThickness},

    {{"undo", "", "Takes back the last change of the alignment."}, kNothing, undo},
    {{"redo", "", "Does again what was taken back."}, kNothing, redo},
    {{"reset", "", "Takes away the transform of the editable slice."}, kNothing, reset},
    {{"resetAll", "", "Takes away all transforms."}, kNothing, resetAll},
    {{"read", "", "Reads the alignment stored in the parameters of the input."}, kNothing, read},
    {{"getTransform", "SLICE", "Translation x and y in pixels, rotation in degrees, flip (1 or 0)."},
     kNothing,
     getTransform},
    {{"setTransform", "SLICE TX TY ANGLE FLIP", "Gives one slice a transform."}, kNothing, setTransform},
    {{"getQuality", "", "Quality of the current pair, 0 to 1."}, kNothing, getQuality},
    {{"getOption", "NAME", "The value of a setting of the options dialog."}, kNothing, getOption},
    {{"setOption", "NAME VALUE", "Changes a setting of the options dialog."}, kNothing, setOption},
    {{"setLandmarks", "FILE", "Replaces all landmarks by those of a table slice,index,x,y."},
     kNothing,
     setLandmarks},
    {{"addLandmark", "X Y", "Adds a landmark at a pixel of the editable slice."}, kNothing, addLandmark},
    {{"removeLandmark", "INDEX", "Removes a landmark from all slices; two stay."}, kNothing, removeLandmark},
    {{"getLandmarkCount", "", "Number of landmarks of every slice."}, kNothing, getLandmarkCount},
    {{"setTransformAll", "FLAG", "Whether the slices beyond the editable one move with it."},
     kNothing,
     setTransformAll},
    {{"getTransformAll", "", "1 or 0."}, kNothing, getTransformAll},
    {{"getNumSlices", "", "Number of slices of the input, 0 without one."}, kNothing, getNumSlices},
    {{"isEditorOpen", "", "1 or 0."}, kNothing, isEditorOpen},
    {{"resampleToResult", "", "Resamples into the existing results."}, kNothing, resampleToResult},
    {{"showTransformToolBar", "FLAG", "Shows or hides the toolbar with the transform's numbers."},
     kEditor,
     askFlag<&Editor::showTransformToolBar>},
    {{"setCheckerboardSize", "PIXELS", "Size of the tiles of the checkerboard on the screen."},
     kEditor,
     setCheckerboardSize},
    {{"setOrthoViewZWindow", "N", "Limits the orthogonal views to N slices on either side; -1 shows all."},
     kEditor,
     askNumber<&Editor::setOrthoViewZWindow>},
    {{"setOrthoViewAutoUpdate", "FLAG", "Whether the orthogonal views follow every change."},
     kEditor,
     askFlag<&Editor::setOrthoViewAutoUpdate>},
    {{"updateOrthoViews", "", "Computes both orthogonal views anew."},
     kEditor,
     ask<&Editor::updateOrthogonalViews>},
};
static_assert(zxNamesUnique(commands)); // A duplicate does not compile.

const AlignCommand* findCommand(std::string_view word)
{
  const auto it = std::find_if(std::begin(commands), std::end(commands),
                               [&](const AlignCommand& command) { return command.isCalled(word); });
  return it == std::end(commands) ? nullptr : it;
}

} // namespace

std::span<const AlignCommand> alignCommands() { return commands; }

int ZxAlignSlices::parse(Tcl_Interp* interp, int argc, char** argv)
{
  const std::span<char* const> words(argv, static_cast<std::size_t>(argc));
  const AlignCommand* command = findCommand(words[1]);
  if (!command) return ZxCompModule::parse(interp, argc, argv);
  const McHandle<ZxAlignSlices> alive(this); // A command may let events in.
  const ZxArguments arguments = words.subspan(2);
  if (!command->accepts(arguments.size()))
    return command->countError.empty() ? zxWrongArguments(interp, words.first(2), command->arguments)
                                       : zxError(interp, std::string(command->countError));
  if (command->needs == AlignCommand::Needs::Editor && !hasEditor(*this)) return kZxOk;
  return command->run(*this, interp, arguments);
}

std::vector<ZxCommandHelp> ZxAlignSlices::commands() const
{
  std::vector<ZxCommandHelp> list = ZxCompModule::commands();
  zxAppendHelp(list, ::commands);
  for (const AlignCommand& command : ::commands)
    if (!command.alias.empty()) list.push_back({command.alias, command.arguments, command.help});
  return list;
}
