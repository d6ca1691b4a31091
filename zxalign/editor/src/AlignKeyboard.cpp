#include "AlignKeyboard.h"

#include "qx/QxSlider.h"
#include "zxalign/QxAlignSlices.h"
#include "zxalign/QxAutoAlignToolBar.h"
#include "zxalign/QxDrawAlignSlices.h"
#include "zxalign/ZxAlignSlices.h"

#include <QAbstractItemView>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QDockWidget>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>

namespace {

bool isEditorKey(int key)
{
  switch (key) {
  case Qt::Key_Space:
  case Qt::Key_Backspace:
  case Qt::Key_Home:
  case Qt::Key_End:
  case Qt::Key_1:
  case Qt::Key_2:
  case Qt::Key_Escape:
  case Qt::Key_Left:
  case Qt::Key_Right:
  case Qt::Key_Up:
  case Qt::Key_Down:
  case Qt::Key_Shift:
  case Qt::Key_Control:
    return true;
  default:
    return false;
  }
}

bool takesText(const QWidget* widget)
{
  return qobject_cast<const QLineEdit*>(widget) || qobject_cast<const QAbstractSpinBox*>(widget) ||
         qobject_cast<const QComboBox*>(widget) || qobject_cast<const QTextEdit*>(widget) ||
         qobject_cast<const QPlainTextEdit*>(widget);
}

/// Sliders and lists: with the mouse one goes to them for a click only.
bool stepsByKeys(const QWidget* widget)
{
  return qobject_cast<const QxSlider*>(widget) || qobject_cast<const QAbstractSlider*>(widget) ||
         qobject_cast<const QAbstractItemView*>(widget);
}

bool isModifier(int key) { return key == Qt::Key_Shift || key == Qt::Key_Control; }

} // namespace

AlignKeyboard::AlignKeyboard(QxAlignSlices& window) : m_window(window)
{
  connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) { focusMoved(now); });
}

AlignKeyboard::~AlignKeyboard() = default; // An event filter that goes away is removed.

void AlignKeyboard::setActive(bool active)
{
  if (active == m_active) return;
  m_active = active;
  if (active)
    qApp->installEventFilter(this);
  else
    qApp->removeEventFilter(this);
  releaseAll();
}

bool AlignKeyboard::isInEditor(const QObject* object) const
{
  for (; object; object = object->parent()) {
    if (object == &m_window) return true;
    const auto* widget = qobject_cast<const QWidget*>(object);
    // A dialog or menu of the editor is not the editor; a dock is, also when it floats.
    if (widget && widget->isWindow() && !qobject_cast<const QDockWidget*>(widget)) return false;
  }
  return false;
}

bool AlignKeyboard::eventFilter(QObject* watched, QEvent* event)
{
  switch (event->type()) {
  case QEvent::KeyPress:
  case QEvent::KeyRelease:
    if (watched != &m_window && watched->isWidgetType() && isInEditor(watched))
      return takeFromChild(*static_cast<QWidget*>(watched), static_cast<QKeyEvent*>(event));
    break;
  case QEvent::FocusIn:
    if (watched->isWidgetType() && isInEditor(watched))
      noteFocus(static_cast<QWidget*>(watched), static_cast<QFocusEvent*>(event)->reason());
    break;
  case QEvent::FocusOut: // Behind a popup the focus stays where it is, but the keys go there.
    if (static_cast<QFocusEvent*>(event)->reason() == Qt::PopupFocusReason && isInEditor(watched))
      releaseAll();
    break;
  case QEvent::WindowDeactivate:
    if (watched == m_window.window()) releaseAll();
    break;
  default:
    break;
  }
  return false;
}

bool AlignKeyboard::takeFromChild(QWidget& child, QKeyEvent* event)
{
  if (!isEditorKey(event->key()) || (childHasKeys() && !isModifier(event->key()))) return false;
  event->ignore(); // It travels on to the window.
  if (child.window() != m_window.window() && child.isWindow()) {
    QCoreApplication::sendEvent(&m_window, event); // From a floating dock it would not get there.
    event->accept();
  }
  return true;
}

void AlignKeyboard::noteFocus(QWidget* widget, Qt::FocusReason reason)
{
  const bool comesBack = reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason ||
                         reason == Qt::MenuBarFocusReason;
  if (comesBack && widget == m_focus) return;
  m_focus = widget;
  switch (reason) {
  case Qt::MouseFocusReason:
    m_went = Went::ByMouse;
    break;
  case Qt::TabFocusReason:
  case Qt::BacktabFocusReason:
  case Qt::ShortcutFocusReason:
    m_went = Went::ByKeyboard;
    break;
  default:
    m_went = Went::Otherwise;
    break;
  }
}

bool AlignKeyboard::childHasKeys() const
{
  const QWidget* focus = QApplication::focusWidget();
  if (!focus || focus != m_focus || m_went == Went::Otherwise) return false;
  return takesText(focus) || (stepsByKeys(focus) && m_went == Went::ByKeyboard);
}

void AlignKeyboard::focusMoved(QWidget* now)
{
  const bool inside = now && isInEditor(now);
  if (inside == m_focusInside) return;
  m_focusInside = inside;
  if (!inside) return releaseAll();
  if (!m_active) return;
  const Qt::KeyboardModifiers held = QGuiApplication::queryKeyboardModifiers();
  m_ctrl = held.testFlag(Qt::ControlModifier);
  m_shift = held.testFlag(Qt::ShiftModifier);
}

void AlignKeyboard::releaseAll()
{
  m_shift = false;
  releaseCtrl();
  releaseSingleSlice();
}

void AlignKeyboard::releaseCtrl()
{
  if (!std::exchange(m_ctrl, false)) return;
  m_window.m_drawArea->setRotateCursor(false);
}

void AlignKeyboard::releaseSingleSlice()
{
  if (!std::exchange(m_singleSlice, false)) return;
  m_window.m_drawArea->displaySlice(QxDrawAlignSlices::BothSlices);
}

void AlignKeyboard::press(QKeyEvent* event)
{
  const int key = event->key();
  if (childHasKeys() && !isModifier(key)) return event->ignore();
  if (key == Qt::Key_Control) m_window.m_drawArea->setRotateCursor(true);
  bool known = true;
  if (key == Qt::Key_Shift)
    m_shift = true;
  else if (key == Qt::Key_Control)
    m_ctrl = true;
  else if (m_ctrl)
    pressWithCtrl(key);
  else if (m_shift)
    known = pressWithShift(key);
  else
    known = pressPlain(*event);
  if (!known) event->ignore();
}

bool AlignKeyboard::pressPlain(const QKeyEvent& event)
{
  switch (event.key()) {
  case Qt::Key_1:
    showOne(-1, event.isAutoRepeat());
    return true;
  case Qt::Key_2:
    showOne(1, event.isAutoRepeat());
    return true;
  case Qt::Key_Escape:
    escape();
    return true;
  default:
    return goTo(event.key()) || move(event.key(), 1);
  }
}

bool AlignKeyboard::goTo(int key)
{
  const int last = m_window.numSlices() - 1;
  const int current = m_window.m_module->getEditableSlice();
  switch (key) {
  case Qt::Key_Space:
    if (current < last) m_window.sliceChange(static_cast<float>(current + 1));
    return true;
  case Qt::Key_Backspace:
    if (current >= 1) m_window.sliceChange(static_cast<float>(current - 1));
    return true;
  case Qt::Key_Home:
    m_window.sliceChange(0.0f);
    return true;
  case Qt::Key_End:
    m_window.sliceChange(static_cast<float>(last));
    return true;
  default:
    return false;
  }
}

bool AlignKeyboard::move(int key, int pixels)
{
  switch (key) {
  case Qt::Key_Left:
    m_window.moveByKey(-pixels, 0);
    return true;
  case Qt::Key_Right:
    m_window.moveByKey(pixels, 0);
    return true;
  case Qt::Key_Up:
    m_window.moveByKey(0, -pixels);
    return true;
  case Qt::Key_Down:
    m_window.moveByKey(0, pixels);
    return true;
  default:
    return false;
  }
}

void AlignKeyboard::turn(int key, float degrees)
{
  if (key == Qt::Key_Up) m_window.turnByKey(degrees);
  if (key == Qt::Key_Down) m_window.turnByKey(-degrees);
}

void AlignKeyboard::pressWithCtrl(int key) { turn(key, m_shift ? 1.0f : 0.1f); }

bool AlignKeyboard::pressWithShift(int key) { return key == Qt::Key_Escape || move(key, 5); }

void AlignKeyboard::showOne(int side, bool isRepeated)
{
  if (isRepeated) return;
  m_singleSlice = true;
  if (!m_window.m_module->isReferenceFixed()) {
    if (side < 0)
      m_window.m_autoAlignToolBar->lower();
    else
      m_window.m_autoAlignToolBar->upper();
  }
  m_window.m_drawArea->displaySlice(side);
}

void AlignKeyboard::escape()
{
  if (m_window.m_drawArea->clearSelection()) return;
  if (m_window.m_drawArea->getEditMode() == QxDrawAlignSlices::EditTransform)
    m_window.m_autoAlignToolBar->editLandmarks();
  else
    m_window.m_autoAlignToolBar->editTransform();
}

void AlignKeyboard::release(QKeyEvent* event)
{
  switch (event->key()) {
  case Qt::Key_Shift:
    m_shift = false;
    break;
  case Qt::Key_Control:
    m_ctrl = false;
    m_window.m_drawArea->setRotateCursor(false);
    break;
  case Qt::Key_1:
  case Qt::Key_2:
    if (!event->isAutoRepeat()) releaseSingleSlice();
    break;
  default:
    event->ignore();
    break;
  }
}
