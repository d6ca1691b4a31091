#include "zxalign/QxViewAlignSlicesOrthogonalCommonToolBar.h"

#include "mc/McRound.h"
#include "qx/QxFullSlider.h"
#include "qx/ZxResource.h"
#include "zx/ZxSettingsMgr.h"
#include "zxalign/QxOrthoViewManager.h"

#include <QAction>
#include <QCheckBox>
#include <QFontMetrics>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QSignalBlocker>
#include <QToolButton>

#include <algorithm>

using ToolBar = QxViewAlignSlicesOrthogonalCommonToolBar;

namespace {

constexpr int kSliderWidth = 175;
constexpr int kZRangeDigits = 3;
constexpr int kLabelSpace = 4; // on both sides of a label

QToolButton* makeButton(QToolBar& bar, const char* name, const char* icon, const char* tip)
{
  auto* const button = new QToolButton(&bar);
  button->setObjectName(name);
  button->setIcon(ZxResource::readIcon(icon));
  button->setToolTip(tip);
  button->setAccessibleName(tip);
  bar.addWidget(button);
  return button;
}

QLabel* makeLabel(QToolBar& bar, const QString& name, const char* text)
{
  auto* const label = new QLabel(text, &bar);
  label->setObjectName(name);
  label->setContentsMargins(kLabelSpace, 0, kLabelSpace, 0);
  bar.addWidget(label);
  return label;
}

QCheckBox* makeCheckBox(QToolBar& bar, const char* name, const char* text, bool checked)
{
  auto* const box = new QCheckBox(text, &bar);
  box->setObjectName(name);
  box->setChecked(checked);
  bar.addWidget(box);
  return box;
}

void setSliderValue(QxFullSlider& slider, int value)
{
  const QSignalBlocker blocker(slider);
  slider.setValue(static_cast<float>(value));
}

void setSliderRange(QxFullSlider& slider, int min, int max)
{
  const QSignalBlocker blocker(slider);
  slider.setMinMax(static_cast<float>(min), static_cast<float>(std::max(min, max)));
}

} // namespace

ToolBar::QxViewAlignSlicesOrthogonalCommonToolBar(QxOrthoViewManager* manager, QxAlignSlices* editor,
                                                  int dimX, int dimY)
  : m_manager(manager), m_editor(editor), m_zRange(manager->getZRange()),
    m_sagittal(addCut("sagittal", dimX - 1, manager->getSliceNumberSagittal())),
    m_coronal(addCut("coronal", dimY - 1, manager->getSliceNumberCoronal())),
    m_settingsListener(ZxSettingsMgr::getInstance()->addListener([this] { showNames(); }))
{
  setObjectName("orthoViewSettings");
  setWindowTitle("Ortho View Settings");
  connect(m_sagittal.slider, &QxFullSlider::valueChanged, this, &ToolBar::sagittalSliceNumberChange);
  connect(m_coronal.slider, &QxFullSlider::valueChanged, this, &ToolBar::coronalSliceNumberChange);
  addZWindow();
  addUpdateControls();
  addZoomControls();
  showNames();
}

ToolBar::~QxViewAlignSlicesOrthogonalCommonToolBar()
{
  ZxSettingsMgr::getInstance()->removeListener(m_settingsListener);
}

ToolBar::Cut ToolBar::addCut(const char* name, int max, int value)
{
  Cut cut;
  cut.label = makeLabel(*this, QString("%1Label").arg(name), "");
  cut.slider = new QxFullSlider(this, "Slice");
  cut.slider->setFixedWidth(kSliderWidth);
  cut.slider->setIncrement(1.0f);
  cut.slider->setFormat("%.0f");
  setSliderRange(*cut.slider, 0, max);
  setSliderValue(*cut.slider, value);
  cut.labelAction = actions().last();
  cut.sliderAction = addWidget(cut.slider);
  cut.labelAction->setVisible(false);
  cut.sliderAction->setVisible(false);
  return cut;
}

void ToolBar::addZWindow()
{
  m_showZRangeBox = makeCheckBox(*this, "showZWindow", "Show Z window", m_showZRange);
  m_zRangeLabel = makeLabel(*this, "zWindowLabel", "Width:");
  m_zRangeField = new QLineEdit(QString::number(m_zRange), this);
  m_zRangeField->setObjectName("zWindowWidth");
  m_zRangeField->setMaxLength(kZRangeDigits);
  // A line edit wants to be 17 characters wide; what it wants beyond them is its frame.
  const int frame = m_zRangeField->sizeHint().width() -
                    m_zRangeField->fontMetrics().horizontalAdvance(QLatin1Char('x')) * 17;
  m_zRangeField->setFixedWidth(m_zRangeField->fontMetrics().horizontalAdvance("WWW") + std::max(0, frame));
  addWidget(m_zRangeField);
  enableZRange(m_showZRange);
  connect(m_showZRangeBox, &QCheckBox::toggled, this, &ToolBar::showZRangeCheckBoxChange);
  connect(m_zRangeField, &QLineEdit::editingFinished, this, &ToolBar::zRangeChange);
}

void ToolBar::addUpdateControls()
{
  auto* const update = makeButton(*this, "updateViews", "AlignUpdateView163.png", "Update orthogonal views");
  m_autoUpdateBox = makeCheckBox(*this, "autoUpdate", "Auto update", m_autoUpdate);
  connect(update, &QToolButton::clicked, this, &ToolBar::updateView);
  connect(m_autoUpdateBox, &QCheckBox::toggled, this, &ToolBar::autoCheckBoxChange);
}

void ToolBar::addZoomControls()
{
  auto* const in = makeButton(*this, "zoomIn", "AlignZoomIn162.png", "Zoom in");
  auto* const out = makeButton(*this, "zoomOut", "AlignZoomOut162.png", "Zoom out");
  m_zoomLabel = makeLabel(*this, "zoomLabel", "1:1");
  m_zoomLabel->setMinimumWidth(m_zoomLabel->fontMetrics().horizontalAdvance("14:1 "));
  connect(in, &QToolButton::clicked, this, &ToolBar::zoomIn);
  connect(out, &QToolButton::clicked, this, &ToolBar::zoomOut);
}

void ToolBar::showNames()
{
  const bool anatomical = ZxSettingsMgr::getInstance()->usesAnatomicalNames();
  m_sagittal.label->setText(anatomical ? "Sagittal:" : "YZ:");
  m_coronal.label->setText(anatomical ? "Coronal:" : "XZ:");
}

void ToolBar::enableZRange(bool on)
{
  m_zRangeLabel->setEnabled(on);
  m_zRangeField->setEnabled(on);
}

void ToolBar::setAutoUpdate(bool on)
{
  m_autoUpdate = on;
  {
    const QSignalBlocker blocker(m_autoUpdateBox);
    m_autoUpdateBox->setChecked(on);
  }
  if (on) updateView();
}

void ToolBar::setShowZRange(bool show)
{
  m_showZRange = show;
  const QSignalBlocker blocker(m_showZRangeBox);
  m_showZRangeBox->setChecked(show);
  enableZRange(show);
}

void ToolBar::setZRange(int halfWidth)
{
  m_zRange = halfWidth;
  m_zRangeField->setText(QString::number(halfWidth));
}

void ToolBar::setZoomLabel(const char* text) { m_zoomLabel->setText(text); }

void ToolBar::showSagittal(bool show)
{
  m_sagittal.labelAction->setVisible(show);
  m_sagittal.sliderAction->setVisible(show);
}

void ToolBar::showCoronal(bool show)
{
  m_coronal.labelAction->setVisible(show);
  m_coronal.sliderAction->setVisible(show);
}

void ToolBar::setSagittalSliderRange(int min, int max) { setSliderRange(*m_sagittal.slider, min, max); }

void ToolBar::setCoronalSliderRange(int min, int max) { setSliderRange(*m_coronal.slider, min, max); }

void ToolBar::setSagittalSlice(int x) { setSliderValue(*m_sagittal.slider, x); }

void ToolBar::setCoronalSlice(int y) { setSliderValue(*m_coronal.slider, y); }

void ToolBar::sagittalSliceNumberChange(float value)
{
  if (m_manager) m_manager->setSliceNumberSagittal(mc::addHalfAndTrunc(value));
}

void ToolBar::coronalSliceNumberChange(float value)
{
  if (m_manager) m_manager->setSliceNumberCoronal(mc::addHalfAndTrunc(value));
}

void ToolBar::showZRangeCheckBoxChange(bool show)
{
  m_showZRange = show;
  enableZRange(show);
  if (m_manager) m_manager->setShowZRange(show);
}

void ToolBar::zRangeChange()
{
  bool isNumber = false;
  const int halfWidth = m_zRangeField->text().toInt(&isNumber);
  if (!isNumber || halfWidth < 0) return setZRange(m_zRange);
  m_zRange = halfWidth;
  if (m_manager) m_manager->setZRange(halfWidth);
}

void ToolBar::updateView()
{
  const QPointer<ToolBar> self = this; // an update lets the user do other things
  if (m_manager) m_manager->updateView();
  if (self && m_manager && !m_autoUpdate) m_manager->updateLines();
}

void ToolBar::autoCheckBoxChange(bool on) { m_autoUpdate = on; }

void ToolBar::zoomIn()
{
  if (m_manager) m_manager->zoomIn();
}

void ToolBar::zoomOut()
{
  if (m_manager) m_manager->zoomOut();
}
