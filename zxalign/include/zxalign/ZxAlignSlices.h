#pragma once

#include "mc/McDArray.h"
#include "zx/ZxField3.h"
#include "zx/ZxModule.h"
#include "zxalign/AlignHistory.h"
#include "zxalign/SliceInfo.h"
#include "zxalign/ZxAlignControl.h"
#include "zxalign/ZxAlignSettings.h"
#include "zxalign/ZxAlignUndoRedo.h"

#include <QPoint>
#include <QTransform>

#include <memory>

class AlignRecovery;
class ZxAlignData;
class ZxAlignEditor;
class ZxAutoAlignMethod;
class ZxAutoAlignMethodFabrique;
class ZxLabelLattice;

/// The module that aligns the slices of a volume. Owns one SliceInfo per slice, the access to the slice
/// images, the settings and, when open, the editor window.
///
/// The editable slice is aligned to the reference slice beside it. Editable side +1: the editable slice is
/// the upper one of the pair and the slices beyond it are those above; -1: the lower one and those below.
/// While the transform-all flag is on, the slices beyond follow every move of the editable one.
class ZxAlignSlices : public ZxCompModule, public ZxAlignControl {
public:
  /// A module without an input.
  ZxAlignSlices();
  ~ZxAlignSlices() override;

  /// The type's record; initClass() only makes sure that it is there.
  static const McTypeInfo& getClassTypeId();
  static void initClass();
  /// Another module; the caller's first handle takes it over.
  static McHandable* createInstance();
  const McTypeInfo& getTypeId() const override { return getClassTypeId(); }
  void update() override;
  void compute() override;
  /// The commands of AlignCommands.h before those of every module.
  int parse(Tcl_Interp* interp, int argc, char** argv) override;
  std::vector<ZxCommandHelp> commands() const override;

  ZxConnection portMask;
  ZxConnection portLabelField;
  ZxConnection portReference;
  ZxPortFloatTextN portLinearRange;     ///< grey-value window that maps slices to 8 bits
  ZxPortMultiMenu portDisplayMode;      ///< plain slice or maximum-intensity projection
  ZxPortFloatTextN portMaxIntNumSlices; ///< projected slices: reference, editable
  ZxPortMultiMenu portResampleMethod;   ///< 0 nearest neighbour, 1 linear
  ZxPortButtonList portAction;          ///< edit, resample, resample into the existing result

  /// Opens the editor window, which with activate is shown, or closes it; an editor that refuses to close is
  /// activated again. A call that comes while the window is being opened or closed does nothing.
  void doIt(int activate);
  /// True from opening to closing, whether the window is the one that is seen or not.
  bool isEditorOpen() const noexcept { return m_editorOpen; }
  /// The editor window has been closed, by whatever way.
  void editorClosed();
  /// The editor window is being deleted by someone else than the module.
  void forgetEditor(const ZxAlignEditor* editor);

  // The pair and its images.
  /// Slices are counted from 0; the side is +1 or -1, see above.
  int getEditableSlice() const noexcept { return m_editableSlice; }
  int getReferenceSlice() const noexcept { return m_referenceSlice; }
  int getEditableSide() const noexcept { return m_editableSide; }
  void setEditableSide(int side) noexcept { m_editableSide = side; }
  /// Choose a slice; it is mapped to 8 bits when it is another one than before.
  void setSlice(int slice);
  void setReferenceSlice(int slice);
  /// Maps both slices to 8 bits anew.
  void mapSlices();
  /// Has the editor, if there is one, redraw.
  void updateViews();
  /// Writes the data window, maps both slices and redraws.
  void setRangeCurrent(float min, float max);
  /// Whether slices are shown as maximum-intensity projections of several.
  void setUseMaxIntProjection(bool on);
  /// Numbers of slices that are projected, at least 1 each.
  void setProjectionThickness(int reference, int editable);
  bool usesMaxIntProjection() const noexcept { return m_useMaxIntProjection; }
  int getReferenceProjectionThickness() const noexcept { return m_referenceThickness; }
  int getEditableProjectionThickness() const noexcept { return m_editableThickness; }
  /// The input lattice, or null.
  ZxLattice* getDataLattice() const noexcept;
  /// Access to the input's slices.
  ZxAlignData& sliceData() noexcept { return *m_data; }
  /// The data whose labels are the mask that is in use, or null.
  const McHandle<ZxData>& maskSource() const noexcept { return m_maskSource; }
  /// The 8-bit images of the pair, borrowed: valid until slices are mapped or the input changes.
  unsigned char* getComputedEditableSlicePtr();
  unsigned char* getComputedReferenceSlicePtr();
  /// The mutex that guards the input lattice and the images; not recursive.
  void lockDataMutex();
  void unlockDataMutex();

  /// Runs the automatic method of an align mode on the current pair; 1 when there is such a method, else 0. A
  /// method that fails leaves a message and the transforms as they were, and counts as none. Without an input
  /// nothing is done.
  int doLayout(int mode);
  /// True while an automatic method runs. It may let the program handle events; whatever these ask of the
  /// module's slices is to be refused.
  bool isMethodRunning() const noexcept { return m_methodRuns; }
  /// The same, or a run over the stack is between two of its pairs.
  bool isRunning() const noexcept { return m_methodRuns || m_stackRuns; }
  /// The editor window, or null. A module takes it over once, before it is opened for the first time.
  ZxAlignEditor* editor() const noexcept { return m_editor.get(); }
  void setEditor(std::unique_ptr<ZxAlignEditor> editor);

  // History. A snapshot holds all slice records and the pair that is being edited.
  ZxAlignUndoRedo& undoRedo() noexcept { return m_undoRedo; }
  /// The snapshots themselves, one history for the module's and the editor's undo and redo. Forgotten when
  /// the input changes.
  AlignHistory& history() noexcept { return m_history; }
  /// A snapshot of now.
  AlignState currentState() const { return {m_slices, m_editableSlice, m_editableSide}; }
  /// Gives back slices, editable side, editable slice and the reference slice beside it. References into the
  /// slices become invalid.
  void restoreState(const AlignState& state);

  /// What keeps unsaved edits for the case of a crash.
  AlignRecovery& recovery() noexcept { return *m_recovery; }

  /// Frames per second of ten repaints of the slice view; 0 while the editor is not open.
  float performanceTest();

  // Settings and state.
  /// Settings of methods and output.
  ZxAlignSettings& alignSettings() noexcept { return m_settings; }
  const ZxAlignSettings& alignSettings() const noexcept { return m_settings; }
  /// The record of a slice of the stack.
  const SliceInfo& getSlice(int slice) const noexcept { return m_slices[static_cast<std::size_t>(slice)]; }
  SliceInfo& getSlice(int slice) noexcept { return m_slices[static_cast<std::size_t>(slice)]; }
  /// All records, one per slice.
  const McDArray<SliceInfo>& getSlices() const noexcept { return m_slices; }
  McDArray<SliceInfo>& slices() noexcept { return m_slices; }
  /// The transforms with which the label field was last realigned.
  const McDArray<SliceInfo>& getAppliedLabelSlices() const noexcept { return m_appliedLabelSlices; }
  /// With a fixed reference, changes are of the editable slice only.
  bool isReferenceFixed() const noexcept { return m_fixReference; }
  void setReferenceFixed(bool fixed) noexcept { m_fixReference = fixed; }
  /// The transform-all flag, see above.
  bool transformsAll() const noexcept { return m_transformAll; }
  void setTransformAll(bool all) noexcept { m_transformAll = all; }
  /// Whether there are changes that are not stored.
  bool isModified() const noexcept { return m_modified; }
  void setModified(bool modified) noexcept { m_modified = modified; }

  // Whole-stack operations. Angles in degrees, distances in pixels, y downwards.

  /// Moves the editable slice and, with the transform-all flag, those beyond it.
  void translateAll(float dx, float dy);
  /// Turns the same slices about the editable slice's displayed centre.
  void rotateAll(float angle);
  /// Turns them about a pivot given relative to the slice centre.
  void rotateAll(float angle, float pivotX, float pivotY);
  /// Gives the editable slice this translation; all moves the whole stack with it.
  void translate(float x, float y, bool all);
  /// Gives the editable slice this rotation; all turns the whole stack with it.
  void rotate(float angle, bool all);
  /// Changes that can be taken back; only while the editor is open.
  void translateRelative(float dx, float dy);
  void rotateRelative(float angle);
  /// The smallest output size in pixels that holds every transformed slice.
  void calcMinBox(int* width, int* height) const;
  /// Borders (first, last) in x and y that place the slices' common box in the output; width and height of
  /// the input are used where one of them is 0.
  void calculateOrigin(int* xBorders, int* yBorders, int width, int height) const;

  /// Gives one slice a transform and shows it.
  void setTransform(int slice, const SliceXForm& xform);
  /// Takes away the transforms of the slices first to last, as a change that can be taken back.
  void resetTransforms(int first, int last);
  /// Reads what is stored with the input and shows it, as a change that can be taken back.
  void readTransformAgain();

  // Landmarks: every slice has the same number, each operation changes all slices. A file may have given some
  // slices fewer: those without a landmark of that index are left alone.
  /// Adds one at a pixel.
  void addPoint(QPoint p);
  /// Removes one by its number.
  void removePoint(int index);
  /// Moves one by an offset in pixels.
  void movePoints(QPoint offset, int index);
  /// Adds two, at a quarter and three quarters of width and height.
  void createDefaultPoints();
  /// The rigid motion from the points a to the points b, as displayed.
  QTransform getTransform(const McDArray<QPoint>& a, const McDArray<QPoint>& b) const;

  // Storage in the parameters of data.
  /// Writes transforms and landmarks, and the output size to the input. False without an input, or after a
  /// message.
  bool saveTransform(ZxParamBundle& target, McDArray<SliceInfo>& slices);
  /// Writes landmarks.
  bool savePoints(ZxParamBundle& target, McDArray<SliceInfo>& slices);
  /// Reads transforms and landmarks from the input's parameters; what is missing stays as it is.
  void readTransform();
  /// Reads landmarks; where there are fewer than two, adds the default ones.
  void readPoints();
  /// Reads both from other data of the input's size.
  void readReference(ZxField3* reference);

  /// Resamples the input and a connected label field with the current transforms. reuse writes into the
  /// existing results where their size fits.
  void apply(bool reuse);
  /// The value that most pixels of an image have, one number per channel.
  void computeMostFrequentColor(const unsigned char* data, int width, int height, int channels,
                                McPrimType type, McDArray<float>& color) const;

  /// Quality (0 to 1) of two images of one size under two transforms; channels 1 or 4.
  float computeQuality(const unsigned char* image0, const unsigned char* image1, int width, int height,
                       int channels, const SliceXForm& xform0, const SliceXForm& xform1) const;
  /// Quality of the current pair, or what it would be with another transform of the editable slice.
  float computeQuality();
  float computeQuality(const SliceXForm& editable);
  /// Shows the quality of the current pair in the status line, unless the work area is busy.
  void updateQuality();

  // ZxAlignControl
  std::span<const ZxAlignSetting> settings() const override;
  std::string setSetting(const std::string& name, const std::string& value) override;
  std::string getSetting(const std::string& name) const override;
  std::vector<Method> methods() const override;
  std::vector<ZxAlignPlugIn> plugIns() const override;
  int numSlices() const override;
  int referenceSlice() const override { return m_referenceSlice; }
  std::vector<ZxAlignTransform> transforms() const override;
  bool setTransforms(std::span<const ZxAlignTransform> transforms) override;
  bool setLandmarks(std::span<const std::vector<ZxAlignPoint>> landmarks) override;
  std::vector<std::vector<ZxAlignPoint>> landmarks() const override;
  std::string setLandmarksFrom(const std::string& fileName) override;
  int alignAll(int method, int reference, const std::function<void(const ZxAlignPairResult&)>& done) override;
  int alignRest(int firstPair, int method, int reference,
                const std::function<void(const ZxAlignPairResult&)>& done) override;
  /// A run over the whole stack, pair by pair in the order of alignAll(), as the editor makes it: select
  /// makes a pair the current one, and the flags stay as they are. With a fixed reference every slice is
  /// aligned to that. The first pairs of the order may be left out. Returns how many pairs were aligned
  /// before the end, a failure, or the user's wish to stop.
  using SelectPair = std::function<void(const ZxAlignPair&)>;
  using PairDone = std::function<void(const ZxAlignPairResult&)>;
  int runOverStack(int method, int reference, const SelectPair& select, const PairDone& done = {},
                   int firstPair = 0);
  double pairQuality(int lower) override;
  double maskedPairQuality(int lower) override;
  bool liesAsMatched(int slice) override;
  void minimalSize(int& width, int& height) const override { calcMinBox(&width, &height); }
  McHandle<ZxSpatialData> alignedVolume() override;
  McHandle<ZxSpatialData> alignedLabels() override;
  McHandle<ZxSpatialData> reduced(const McHandle<ZxSpatialData>& data, int factor) const override;
  bool saveAlignment() override;

private:
  friend class ZxAlignResampler;

  void describePorts();

  // Steps of compute(), one per port.
  /// False when the pass ends here.
  bool computeData();
  bool acceptInput(ZxSpatialData* data, ZxLattice* lattice);
  void rejectInput();
  void leaveInput();
  void checkAuxiliaryInputs(const ZxLattice& lattice);
  void initDataWindow(ZxLattice& lattice);
  void initTransforms();
  void initPair();
  void computeMask();
  void useMask(ZxLabelLattice* mask);
  void computeReference();
  void computeAction();
  void computeMaxIntNumSlices();
  /// False when nothing changes by it.
  bool useThickness(int reference, int editable);

  /// The slices that a change of the editable one affects: calls change for each, the editable one first.
  template <class Change>
  void forAffectedSlices(Change change);
  bool isInStack(int slice) const;
  bool hasEditableSlice() const noexcept;
  void restorePair(int editable, int side);
  void showEditableSlice();
  /// Shows transforms that were set from outside.
  void transformsChanged();
  void selectPair(const ZxAlignPair& pair);
  /// False when the method failed.
  bool alignPair(const ZxAlignPair& pair, int method, ZxAlignPairResult& result);
  int alignPairs(const std::vector<ZxAlignPair>& pairs, int firstPair, int method, const SelectPair& select,
                 const PairDone& done);
  int runMethod(ZxAutoAlignMethod& method, int mode);
  bool makeEditor();
  void openEditor(int activate);

  std::unique_ptr<ZxAlignData> m_data;
  McHandle<ZxData> m_maskSource;        // keeps the mask that is in use alive
  ZxAutoAlignMethodFabrique* m_methods; // the process's registry
  std::unique_ptr<ZxAlignEditor> m_editor;
  bool m_fixReference = false;
  int m_editableSide = 1;
  int m_editableSlice = 0;
  int m_referenceSlice = 0;
  McDArray<SliceInfo> m_slices;
  McDArray<SliceInfo> m_appliedLabelSlices;
  bool m_transformAll = true;
  bool m_modified = false;
  bool m_useMaxIntProjection = false;
  int m_referenceThickness = 10;
  int m_editableThickness = 10;
  bool m_editorOpen = false;
  bool m_switchingEditor = false;
  bool m_viewerWasShown = false; // the main viewer, when the editor was opened
  bool m_methodRuns = false;
  bool m_stackRuns = false;
  ZxAlignSettings m_settings;
  AlignHistory m_history;
  ZxAlignUndoRedo m_undoRedo{this};
  std::unique_ptr<AlignRecovery> m_recovery;
};
