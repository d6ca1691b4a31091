#pragma once

#include <QAction>
#include <QKeySequence>
#include <QList>
#include <QMenu>
#include <QMenuBar>
#include <QObject>
#include <QPointer>
#include <QVector>

#include <vector>

class QxAlignSlices;

/// The menus of the editor window: "&View", "O&ptions", "&Align" and "Land&marks".
///
/// The editor has no menu bar of its own: while it is active its menus stand in that of the main window, and
/// those of the main window that are of no use meanwhile are hidden. Every item calls a slot, and the slot
/// emits a signal; the menu set itself knows nothing of alignments. It keeps the check marks of exclusive
/// choices and what is enabled.
///
/// Keys. Each key acts once. While the menus are in the bar the keys are those of their items, and an item of
/// the main window that has the same key gives it away until the menus are out again. While they are out the
/// editor's own actions have the keys, for an editor that is shown without a main window.
///
/// Menus and bar may be deleted before this object, and without a main window there is no bar at all.
class QxAlignMenuBar : public QObject {
  Q_OBJECT
public:
  /// The menu set belongs to the editor, which lives at least as long.
  explicit QxAlignMenuBar(QxAlignSlices* editor, const char* name = nullptr);
  /// Takes the menus out of the bar.
  ~QxAlignMenuBar() override;

  /// Puts the menus into the main window's bar, those of another editor out of it, and hides the menus of the
  /// main window that are of no use in the editor.
  void addMenu();
  /// Takes them out and shows all menus of the main window again. Nothing when they are not in.
  void removeMenu();

  /// Whether "Fix reference" can be chosen.
  void enableFixReference();
  void disableFixReference();
  /// Whether "Transform all" can be chosen.
  void enableTransformAll();
  void disableTransformAll();
  // Check marks of what can be switched from elsewhere, too. They emit nothing.
  /// The slices beyond the editable one move with it.
  void showTransformAll(bool on);
  /// The reference slice stays when another slice is gone to.
  void showFixReference(bool on);
  /// The toolbar with the transform's numbers is there.
  void showTransformParameters(bool on);

Q_SIGNALS:
  // One for each item, emitted when it is chosen; those with a bool carry its check mark.
  void zoomInSignal();
  void zoomOutSignal();
  void cancelSignal();
  void resetAllSignal();
  void resetSignal();
  void redGreenSignal();
  void chessSignal();
  void avgSignal();
  void invertSignal();
  void transformToolBarSignal(bool visible);
  void coronalSignal(bool visible);
  void sagittalSignal(bool visible);
  void transformAllSignal();
  void fixReferenceSignal();
  void readSignal();
  void saveSignal();
  void undoSignal();
  void redoSignal();
  /// An automatic method was chosen: 0 gravity centres, 1 least-squares, 2 landmarks, 3 edge detection,
  /// others as the registry numbers them.
  void alignModeChanged(int mode);
  void showParametersSignal();
  void doItSignal();
  void doAllSignal();
  void addLandmarkSignal();
  void removeLandmarkSignal();
  /// Never emitted.
  void showViews();

public Q_SLOTS:
  // One for each item: shows the choice and emits its signal.
  void zoomIn();
  void zoomOut();
  /// No item calls it.
  void cancel();
  void resetAll();
  void reset();
  void redGreen();
  void chess();
  void avg();
  void invert();
  void transformParametersToolBar();
  void transformAll();
  void fixReference();
  void read();
  void save();
  void undo();
  void redo();
  /// Whether "Undo" and "Redo" can be chosen.
  void undoEmpty();
  void undoNotEmpty();
  void redoEmpty();
  void redoNotEmpty();
  void centers();
  void gray();
  void landmarks();
  void edgeDetection();
  /// Shows which automatic method is chosen and emits nothing. Numbers without an item change nothing.
  void changeMode(int mode);
  void doIt();
  void doAll();
  void addLandmark();
  void removeLandmark();
  void showParameters();
  /// Shows the manual in the help browser, or its first page when the manual is missing.
  void menuUsersguide();
  /// Whether "Add" and "Remove" can be chosen.
  void enableLandmarkAdd(bool on);
  void enableLandmarkRemove(bool on);
  /// Ask for the view, or for its end, as their check marks say.
  void sagittal();
  void coronal();
  /// Brings the check marks of the view menu in line with what is shown.
  void viewMenuConfig();
  /// Hides the extra viewer. The item has no check mark, so that it never shows the viewer: deliberate, the
  /// viewer is opened from the main window.
  void showExtraViewer();

private:
  using Slot = void (QxAlignMenuBar::*)();
  /// The item of an automatic method.
  struct Method {
    int id;
    QPointer<QAction> item;
  };
  /// An item with a key and the editor's action that has the key while the menus are out.
  struct Key {
    QPointer<QAction> item;
    QPointer<QAction> own;
  };
  /// Keys of an action of the main window, until they are given back.
  struct Borrowed {
    QPointer<QAction> action;
    QList<QKeySequence> keys;
  };

  QMenu* makeMenu(const char* title, const char* objectName);
  QAction* addItem(QMenu* menu, const char* text, const char* objectName, Slot slot,
                   const char* key = nullptr);
  void makeOptionsMenu();
  void makeViewMenu();
  void makeAlignMenu();
  void addPlugInMethods();
  void makeLandmarksMenu();
  QAction* makeOwnAction(QAction* item, Slot slot);
  void nameViews();
  void chooseMode(int mode);
  void chooseComposition(const QAction* item);
  bool isIn() const noexcept { return !m_inserted.isEmpty(); }
  void hideOtherMenus() const;
  void borrowKeys();
  void giveKeysBack();
  /// Gives every key to its item or to the editor's action.
  void assignKeys();
  void checkView(QAction* item, bool shown, Slot slot);

  QPointer<QMenuBar> m_bar; // the main window's
  QPointer<QMenu> m_optionsMenu;
  QPointer<QMenu> m_viewMenu;
  QPointer<QMenu> m_alignMenu;
  QPointer<QMenu> m_landmarksMenu;
  QxAlignSlices* m_editor; // borrowed
  QPointer<QAction> m_transformAll;
  QPointer<QAction> m_fixReference;
  QPointer<QAction> m_redGreen;
  QPointer<QAction> m_chess;
  QPointer<QAction> m_avg;
  QPointer<QAction> m_invert;
  QPointer<QAction> m_transformParameters;
  QPointer<QAction> m_methodsEnd; // the separator behind the methods
  QPointer<QAction> m_options;
  QPointer<QAction> m_undo;
  QPointer<QAction> m_redo;
  std::vector<Method> m_methods;
  QPointer<QAction> m_addLandmark;
  QPointer<QAction> m_removeLandmark;
  QPointer<QAction> m_sagittal;
  QPointer<QAction> m_coronal;
  QPointer<QAction> m_extraViewer;
  QVector<QAction*> m_inserted; // the menus' actions in the bar; empty while they are out
  std::vector<Key> m_keys;
  std::vector<Borrowed> m_borrowed;
  int m_listener; // of the preferences
};
