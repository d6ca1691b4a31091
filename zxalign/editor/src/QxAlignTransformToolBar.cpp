#include "zxalign/QxAlignTransformToolBar.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QMainWindow>
#include <QSignalBlocker>
#include <QSpinBox>

namespace {

template <class Widget, class Value>
void showValue(Widget* widget, Value value)
{
  const QSignalBlocker blocker(widget);
  widget->setValue(value);
}

} // namespace

QxAlignTransformToolBar::QxAlignTransformToolBar(QMainWindow* parent, const char* name)
  : QToolBar(QString::fromLatin1(name), parent), m_x(addPixels("Tx:", "translationX")),
    m_y(addPixels("Ty:", "translationY")), m_rot(new QDoubleSpinBox(this)), m_flip(new QCheckBox(this))
{
  setObjectName(QStringLiteral("transformToolBar"));
  setWindowTitle(QStringLiteral("Transform parameters"));
  addLabel("R:");
  m_rot->setObjectName(QStringLiteral("rotation"));
  m_rot->setRange(-360.0, 360.0);
  m_rot->setToolTip(QStringLiteral("Rotation in degrees"));
  m_rot->setSingleStep(0.1);
  m_rot->setDecimals(2);
  m_rot->setKeyboardTracking(false);
  addWidget(m_rot);
  addLabel("Flip:");
  m_flip->setObjectName(QStringLiteral("flip"));
  m_flip->setToolTip(QStringLiteral("Mirrored in x"));
  addWidget(m_flip);
  connect(m_x, &QSpinBox::valueChanged, this, &QxAlignTransformToolBar::transXChange);
  connect(m_y, &QSpinBox::valueChanged, this, &QxAlignTransformToolBar::transYChange);
  connect(m_rot, &QDoubleSpinBox::valueChanged, this, &QxAlignTransformToolBar::rotChange);
  connect(m_flip, &QCheckBox::toggled, this, &QxAlignTransformToolBar::flipChange);
}

void QxAlignTransformToolBar::addLabel(const char* text)
{
  auto* label = new QLabel(QString::fromLatin1(text), this);
  label->setContentsMargins(8, 0, 4, 0);
  addWidget(label);
}

QSpinBox* QxAlignTransformToolBar::addPixels(const char* label, const char* name)
{
  addLabel(label);
  auto* box = new QSpinBox(this);
  box->setObjectName(QString::fromLatin1(name));
  box->setRange(-9999, 9999);
  box->setToolTip(QStringLiteral("Translation in pixels"));
  box->setKeyboardTracking(false); // A typed number is one edit, not one for each digit.
  addWidget(box);
  return box;
}

void QxAlignTransformToolBar::setTransX(int t) { showValue(m_x, t); }

void QxAlignTransformToolBar::setTransY(int t) { showValue(m_y, t); }

void QxAlignTransformToolBar::setRot(float r) { showValue(m_rot, static_cast<double>(r)); }

void QxAlignTransformToolBar::setFlip(bool b)
{
  const QSignalBlocker blocker(m_flip);
  m_flip->setChecked(b);
}

void QxAlignTransformToolBar::transXChange(int t) { Q_EMIT transXChanged(t); }

void QxAlignTransformToolBar::transYChange(int t) { Q_EMIT transYChanged(t); }

void QxAlignTransformToolBar::rotChange(double r) { Q_EMIT rotChanged(static_cast<float>(r)); }

void QxAlignTransformToolBar::flipChange(bool b) { Q_EMIT flipChanged(b); }
