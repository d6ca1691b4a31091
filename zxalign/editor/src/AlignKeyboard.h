#pragma once

#include <QObject>
#include <QPointer>

class QKeyEvent;
class QWidget;
class QxAlignSlices;

/// The keys of the editor window.
///
/// What Ctrl and Shift mean is known from their own press and release events. A release that goes elsewhere,
/// to a dialog, a menu, another window, is made up for: when the focus leaves the editor nothing is held any
/// more, and when it comes back the keyboard itself is asked.
///
/// The keys work wherever the focus is in the editor: its other widgets do not see them. Exceptions: a field
/// for text that a person went to, and a slider or a list that a person went to with the keyboard.
class AlignKeyboard : public QObject {
public:
  /// The window outlives this object.
  explicit AlignKeyboard(QxAlignSlices& window);
  ~AlignKeyboard() override;

  /// While active, it looks at the keys of the whole program for those that go to the editor.
  void setActive(bool active);
  /// A key that has come to the window.
  void press(QKeyEvent* event);
  void release(QKeyEvent* event);

protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  enum class Went { Otherwise, ByMouse, ByKeyboard };

  bool isInEditor(const QObject* object) const;
  bool takeFromChild(QWidget& child, QKeyEvent* event);
  void noteFocus(QWidget* widget, Qt::FocusReason reason);
  void focusMoved(QWidget* now);
  /// A widget with the focus that has its keys for itself.
  bool childHasKeys() const;
  void releaseAll();
  void releaseCtrl();
  void releaseSingleSlice();

  bool pressPlain(const QKeyEvent& event);
  bool pressWithShift(int key);
  void pressWithCtrl(int key);
  void turn(int key, float degrees);
  bool move(int key, int pixels);
  bool goTo(int key);
  void showOne(int side, bool isRepeated);
  void escape();

  QxAlignSlices& m_window;
  QPointer<QWidget> m_focus; // the editor's widget that had the focus last
  Went m_went = Went::Otherwise;
  bool m_active = false;
  bool m_focusInside = false;
  bool m_ctrl = false;
  bool m_shift = false;
  bool m_singleSlice = false; // "1" or "2" is held
};
