#pragma once

#include "mc/McDArray.h"
#include "mc/McHandable.h"
#include "qx/QxCentralPage.h"
#include "zxalign/SliceInfo.h"
#include "zxalign/ZxAlignEditor.h"
#include "zxalign/ZxAlignEditorScripting.h"

#include <QList>
#include <QMainWindow>
#include <QPoint>
#include <QPointer>

#include <memory>

class AlignBorderPreviews;
class AlignKeyboard;
class QToolBar;
class QxAlignMenuBar;
class QxAlignSlicesOptionsDialog;
class QxAlignToolBar;
class QxAlignTransformToolBar;
class QxAlignUndoRedo;
class QxAutoAlignToolBar;
class QxDrawAlignSlices;
class QxOrthoViewManager;
class ZxAlignSlices;
struct ZxAlignPair;

/// The editor window of one module, "Slice Aligner": a page of the main window's centre.
///
/// It holds no alignment of its own: its slots are where what a person does becomes a change of the module,
/// and every change is shown by all its parts: slice view, three toolbars, menus, orthogonal views. The
/// module owns the window and outlives it. Distances are pixels of the slices, y downwards; angles degrees;
/// slices are counted from 0. Without an input the window shows nothing and every edit is refused.
class QxAlignSlices : public QMainWindow,
                      public ZxAlignEditor,
                      public ZxAlignEditorScripting,
                      public QxCentralPage {
  Q_OBJECT
public:
  /// How a pair is edited.
  enum EditMode { EditTransform = 1, EditLandmarks = 3 };
  /// The built-in automatic methods; further ones follow.
  enum AlignMode { AlignCenters, AlignGray, AlignLandmarks, AlignEdgeDetection };

  /// Adds the window as a page to the main window, if there is one.
  explicit QxAlignSlices(ZxAlignSlices* module);
  ~QxAlignSlices() override;

  /// The module that the window edits.
  ZxAlignSlices& module() noexcept override { return *m_module; }
  /// The module's slice records, one per slice.
  McDArray<SliceInfo>& getTransform();
  /// The history as the slice view and the menus use it; another one after reInit().
  QxAlignUndoRedo* undoRedo() const noexcept;
  /// The orthogonal views; they live as long as the window.
  QxOrthoViewManager* getOrthoViewManager() const noexcept;
  /// The slice view.
  QxDrawAlignSlices* drawArea() const noexcept { return m_drawArea; }
  /// The menus; they are in the main window's bar while the editor is active.
  QxAlignMenuBar* menuSet() const noexcept;
  /// The options dialog while it is open, else null.
  QxAlignSlicesOptionsDialog* optionsDialog() const noexcept;
  /// Size of the slice view in pixels.
  int getDrawAreaWidth() const;
  int getDrawAreaHeight() const;
  /// Those of the toolbars that are visible: slices and zoom, modes and actions, transform.
  QList<QToolBar*> getVisibleToolbar() const;
  /// The automatic method of "Align current pair": an AlignMode, or the id of a plug-in's method.
  int getAlignMode() const noexcept override { return m_alignMode; }
  /// Edge length of the checkerboard's tiles in screen pixels.
  int getChessFieldSize() const noexcept { return m_chessFieldSize; }
  void setChessFieldSize(int size) override;

  // ZxAlignEditor
  ZxAlignEditorScripting* scripting() noexcept override { return this; }
  /// Redraws the pair and brings toolbars and menus up to date.
  void updateViews() override;
  void setSliceInfo(const SliceInfo& info) override;
  void reinitialise() override { reInit(); }
  void repaintSliceView() override;
  void suspendUpdates() override;
  void resumeUpdates() override;
  void showPair() override;
  void undoEmpty() override;
  void undoNotEmpty() override;
  void redoEmpty() override;
  void redoNotEmpty() override;

  // ZxAlignEditorScripting, as far as there is no slot for it
  void chooseEditMode(int mode) override;
  void chooseViewMode(int mode) override;
  void showEdit() override;
  void inhibitRedraw(int delta) override;
  void setOrthoViewZWindow(int halfWidth) override;
  void setOrthoViewAutoUpdate(bool on) override;
  void updateOrthogonalViews() override;
  std::string snapshot(const std::string& fileName) override;

  // QxCentralPage
  /// Asks as cancel() does, while the editor is open, which it stays.
  bool canClose() override;
  void closePage() override;
  const ZxObject* editedObject() const override;

  /// Shows transform and slice numbers in the toolbars, translations cut off to whole pixels.
  void updateToolbar();
  /// Refreshes the cross-sections of the slices that a change of the editable slice has affected; the whole
  /// stack when asked to. dx and dy tell how far slices were moved when nothing but translated is set.
  void updateOrthoViews(int dx, int dy, bool translated, bool rotated, bool mirrored, bool wholeStack);
  /// Goes to a slice and the reference beside it. At an end of the stack the editable side changes first.
  void updateTransformLowerUpperSliceInfo(int slice);
  /// Takes up another input: range, history, views, menus.
  void reInit();
  /// Composition of the pair: 1 red/green, 2 checkerboard, 3 average, 4 inverted. Others are ignored.
  void changeViewMode(int mode);
  /// 0: manual alignment, others: landmarks.
  void changeEditMode(int mode);
  /// Lower, upper and "Transform all", which a fixed reference makes unavailable.
  void enableButtons();
  void disableButtons();
  /// Schedules a repaint of the slice view.
  void draw() override;

Q_SIGNALS:
  /// The checkerboard was chosen; its tiles have this edge length in screen pixels.
  void chessSignal(int fieldSize);
  /// The alignment is about to change, or has changed; what follows it looks when the event loop is back.
  void edited();

public Q_SLOTS:
  /// Takes away the current slice's transform.
  void reset() override;
  /// Takes away the transforms of all slices.
  void resetAll() override;
  /// Switches whether the slices beyond the editable one move with it. Refused while slices are aligned.
  void transformAll();
  /// Switches whether the reference slice stays when another slice is gone to. Without a fixed reference the
  /// one beside the current slice is taken up again.
  void fixReference();
  /// Reads the stored alignment from the input's parameters.
  void read() override;
  /// Stores the alignment in the input's parameters.
  void save() override;
  /// Resamples into a new result.
  void apply();
  /// Asks what to do with unsaved changes, if there are any, and puts the window away. False when it stays.
  bool cancel() override;
  void changeAlignMode(int mode) override;
  /// The options dialog, modal.
  void showParameters();
  /// Aligns the current pair.
  void doAutoAlign() override;
  /// Aligns the whole stack, outwards from the reference slice. One undo takes it back.
  void doAllAutoAlign() override;
  /// Goes to another slice; slices outside the stack are refused.
  void sliceChange(float slice) override;
  /// Shows the window as the current page, with its menus; or page 0 and the menus of the main window.
  void setActive(bool visible) override;
  // Landmarks of all slices, each change one undo state.
  /// Adds one at a pixel.
  void addPoint(QPoint point);
  /// Removes one by its number.
  void removePoint(int index);
  /// Moves one by an offset in pixels.
  void movePoints(QPoint offset, int index);
  /// -1: the lower slice of the pair is edited, +1: the upper one.
  void setEditableSlice(int side) override;
  /// Takes up an EditMode: what of landmarks the menus offer.
  void setEditMode(int mode);
  /// Flips the current slice.
  void mirror() override;
  /// Chooses the checkerboard.
  void chess();
  /// Puts the toolbar with the transform's numbers below the slices, or takes it away.
  void showTransformToolBar(bool visible) override;
  void showCoronalView(bool visible) override;
  void showSagittalView(bool visible) override;
  void orthoViewZoomIn() override;
  void orthoViewZoomOut() override;
  void viewZoomIn() override;
  void viewZoomOut() override;
  void setSagittalViewSliceNumber(int number) override;
  int getSagittalViewSliceNumber() override;
  void setCoronalViewSliceNumber(int number) override;
  int getCoronalViewSliceNumber() override;
  void setOrthoViewLineWidth(int value) override;
  void setUseMaxIntProjection(bool on) override;
  int getEditMode() override;
  // Edits of the transform toolbar. They leave the orthogonal views as they are, deliberately: whoever types
  // through values waits for none of them.
  /// Give the current slice this translation, rotation or flip.
  void toolBarTranslateX(int t);
  void toolBarTranslateY(int t);
  void toolBarRotate(float r);
  void toolBarFlip(bool b);
  /// The current slice's new translation from the slice view; wholeStack moves all slices with it.
  void translate(float x, float y, bool wholeStack);
  /// The current slice's new rotation from the slice view; wholeStack turns all slices with it.
  void rotate(float angle, bool wholeStack);
  // Previews of the result's size in the slice view; at most one is seen. autoSize places the slices in it
  // as automatic output does, else they are centred.
  /// Computes the smallest size that holds every slice, shows it in the options dialog and, when asked to,
  /// its frame.
  void calcNewImageSize(bool autoSize, bool showBorder);
  /// Shows the frame of a size in pixels or takes it back. Sizes below the input's are ignored.
  void showBorder(bool autoSize, bool showBorder, int newx, int newy);
  /// Shows the frame of another size in pixels, centred; none when it is below the input's.
  void changeBorderSize(int newx, int newy);

protected:
  void keyPressEvent(QKeyEvent* event) override;
  void keyReleaseEvent(QKeyEvent* event) override;

private:
  friend class AlignKeyboard;

  void createToolBars();
  void connectToolBars();
  void connectMenus();
  void connectDrawArea();
  void connectHistory();
  void makeHistory();
  void showHistory();
  void placeInMainWindow();
  void createPanels();
  void leaveMainWindow();

  int numSlices() const;
  SliceInfo& currentSlice();
  /// There is an input, and both slices of the pair lie in it.
  bool hasPair() const;
  /// The same, and no automatic method is at work.
  bool canEdit() const;
  /// As canEdit(); where it is not so, shows what is true instead of what was asked for.
  bool acceptsEdit();
  void showSide();
  void showFlags();
  void showSlicePair();

  void saveState();
  void writeTransform(const SliceXForm& xform);
  void moveByKey(int dx, int dy);
  void turnByKey(float degrees);

  bool isInStack(int slice) const { return slice >= 0 && slice < numSlices(); }
  /// Goes to a slice while the reference stays.
  void passReference(int slice);
  void goTo(int slice);
  void changeSide(int side);
  void selectPair(const ZxAlignPair& pair);
  void keepReferenceInStack();
  enum class CloseAnswer { Close, Stay, Undecided };
  /// Asks what becomes of unsaved changes; saves them if that is the answer.
  CloseAnswer askToClose();
  void leave();
  void previewSize(int width, int height, bool automaticOrigin);

  ZxAlignSlices* m_module; // borrowed
  std::unique_ptr<QxAlignUndoRedo> m_undoRedo;
  QPointer<QxAlignMenuBar> m_menus;                      // child
  QxDrawAlignSlices* m_drawArea = nullptr;               // child
  QxAlignToolBar* m_alignToolBar = nullptr;              // child
  QxAutoAlignToolBar* m_autoAlignToolBar = nullptr;      // child
  QPointer<QxAlignSlicesOptionsDialog> m_options;        // child, while showParameters() runs
  QxAlignTransformToolBar* m_transformToolBar = nullptr; // child
  McHandle<QxOrthoViewManager> m_orthoViews;
  std::unique_ptr<AlignBorderPreviews> m_previews;
  std::unique_ptr<AlignKeyboard> m_keyboard;
  int m_editMode = EditTransform;
  int m_alignMode = AlignGray;
  int m_chessFieldSize = 50;
  bool m_showsFixedReference = false;
  bool m_showsMode = false;   // the toolbar is being told the align mode: its echo is no choice
  bool m_asksToClose = false; // the save prompt is open
  bool m_discards = false;    // its answer was not to save
};
