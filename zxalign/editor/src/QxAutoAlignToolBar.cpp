#include "zxalign/QxAutoAlignToolBar.h"

#include "qx/ZxResource.h"
#include "zxalign/QxDrawAlignSlices.h"

#include <QMainWindow>
#include <QToolButton>

struct QxAutoAlignToolBar::Button {
  const char* name;
  const char* icon;
  const char* toolTip;
  Slot slot;
  bool checkable;
};

QxAutoAlignToolBar::QxAutoAlignToolBar(QMainWindow* parent, const char* name)
  : QToolBar(QString::fromLatin1(name), parent)
{
  using Bar = QxAutoAlignToolBar;
  setObjectName(QStringLiteral("autoAlignToolBar"));
  setWindowTitle(QStringLiteral("Auto-alignement Settings")); // spelled so, as users know it
  const Button modes[] = {
      {"alignCenters", "AlignGravity16.png", "Center-of-gravity alignment mode", &Bar::alignCenters, true},
      {"alignGray", "AlignStat163.png", "Least-squares alignment mode", &Bar::alignGray, true},
      {"alignLandmarks", "AlignLandmark164.png", "Landmark alignment mode", &Bar::alignLandmarks, true},
      {"alignEdgeDetection", "AlignEdgeDetection.png", "Edge detection alignment mode",
       &Bar::alignEdgeDetection, true}};
  for (std::size_t i = 0; i < m_modes.size(); ++i) m_modes[i] = addButton(modes[i]);
  addSeparator();
  m_landmarks =
      addButton({"editLandmarks", "AlignLandmarkMode.png", "Edit landmarks", &Bar::editLandmarks, true});
  m_transform = addButton({"editTransform", "AlignMode.png", "Manual alignment", &Bar::editTransform, true});
  addSeparator();
  m_lower = addButton({"lower", "AlignMoveLower16.png", "Transform lower slice", &Bar::lower, true});
  m_upper = addButton({"upper", "AlignMoveUpper16.png", "Transform upper slice", &Bar::upper, true});
  addButton({"mirror", "AlignMirror.png", "Mirror editable slice", &Bar::mirror, false});
  addSeparator();
  addButton({"alignOne", "AlignOne163.png", "Align current slice pair", &Bar::doAlign, false});
  addButton({"alignAll", "AlignAll163.png", "Align all slices", &Bar::doAll, false});
  alignGray();
  editTransform();
  upper();
}

QToolButton* QxAutoAlignToolBar::addButton(const Button& button)
{
  auto* widget = new QToolButton(this);
  widget->setObjectName(QString::fromLatin1(button.name));
  widget->setIcon(ZxResource::readIcon(button.icon));
  widget->setToolTip(QString::fromLatin1(button.toolTip));
  widget->setAccessibleName(widget->toolTip());
  widget->setCheckable(button.checkable);
  connect(widget, &QToolButton::clicked, this, button.slot);
  addWidget(widget);
  return widget;
}

void QxAutoAlignToolBar::checkMode(int mode)
{
  for (std::size_t i = 0; i < m_modes.size(); ++i) m_modes[i]->setChecked(static_cast<int>(i) == mode);
}

void QxAutoAlignToolBar::showNoAlignMode() { checkMode(-1); }

void QxAutoAlignToolBar::alignCenters()
{
  checkMode(0);
  {
    const QxDrawAlignSlices::UpdateSuppression suppression(m_drawArea);
    editTransform();
  }
  Q_EMIT alignModeChanged(0);
}

void QxAutoAlignToolBar::alignGray()
{
  checkMode(1);
  {
    const QxDrawAlignSlices::UpdateSuppression suppression(m_drawArea);
    editTransform();
  }
  Q_EMIT alignModeChanged(1);
}

void QxAutoAlignToolBar::alignLandmarks()
{
  checkMode(2);
  Q_EMIT alignModeChanged(2);
}

void QxAutoAlignToolBar::alignEdgeDetection()
{
  checkMode(3);
  Q_EMIT alignModeChanged(3);
}

void QxAutoAlignToolBar::changeAlignMode(int mode)
{
  switch (mode) {
  case 0:
    return alignCenters();
  case 1:
    return alignGray();
  case 2:
    return alignLandmarks();
  case 3:
    return alignEdgeDetection();
  default:
    return;
  }
}

void QxAutoAlignToolBar::editTransform()
{
  m_transform->setChecked(true);
  m_landmarks->setChecked(false);
  Q_EMIT editModeChanged(1);
}

void QxAutoAlignToolBar::editLandmarks()
{
  m_transform->setChecked(false);
  m_landmarks->setChecked(true);
  if (!m_modes[2]->isChecked()) {
    const QxDrawAlignSlices::UpdateSuppression suppression(m_drawArea);
    alignLandmarks();
  }
  Q_EMIT editModeChanged(3);
}

void QxAutoAlignToolBar::changeEditMode(int mode)
{
  if (mode == 1)
    editTransform();
  else
    editLandmarks();
}

void QxAutoAlignToolBar::lower()
{
  m_lower->setChecked(true);
  m_upper->setChecked(false);
  Q_EMIT sliceToDisplayChanged(-1);
}

void QxAutoAlignToolBar::upper()
{
  m_upper->setChecked(true);
  m_lower->setChecked(false);
  Q_EMIT sliceToDisplayChanged(1);
}

void QxAutoAlignToolBar::mirror() { Q_EMIT mirrorSignal(); }

void QxAutoAlignToolBar::doAlign() { Q_EMIT doSignal(); }

void QxAutoAlignToolBar::doAll() { Q_EMIT doAllSignal(); }

void QxAutoAlignToolBar::setDrawArea(QxDrawAlignSlices* dArea) { m_drawArea = dArea; }

void QxAutoAlignToolBar::enableButtons()
{
  m_lower->setEnabled(true);
  m_upper->setEnabled(true);
}

void QxAutoAlignToolBar::disableButtons()
{
  m_lower->setEnabled(false);
  m_upper->setEnabled(false);
}
