#include "QxPreferencesDialog.h"

#include "QxSettings.h"
#include "zx/ZxSettingsMgr.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

namespace {

constexpr const char* openGLKey = "viewer/openGL";

} // namespace

QxPreferencesDialog::QxPreferencesDialog(QWidget* parent) : QDialog(parent)
{
  setObjectName("preferences");
  setWindowTitle(tr("Preferences"));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(makeNames());
  layout->addWidget(makeDrawing());
  layout->addStretch();
  layout->addWidget(buttons);
}

QWidget* QxPreferencesDialog::makeNames()
{
  auto* group = new QGroupBox(tr("Names of cross-sections"), this);
  m_anatomical = new QRadioButton(tr("&Anatomical: coronal, sagittal"), group);
  m_anatomical->setObjectName("anatomicalNames");
  auto* axes = new QRadioButton(tr("A&xes: XZ, YZ"), group);
  axes->setObjectName("axisNames");
  (ZxSettingsMgr::getInstance()->usesAnatomicalNames() ? m_anatomical : axes)->setChecked(true);
  auto* layout = new QVBoxLayout(group);
  layout->addWidget(m_anatomical);
  layout->addWidget(axes);
  return group;
}

QWidget* QxPreferencesDialog::makeDrawing()
{
  auto* group = new QGroupBox(tr("Viewers"), this);
  m_drawing = new QComboBox(group);
  m_drawing->setObjectName("viewerDrawing");
  m_drawing->addItem(tr("OpenGL where the hardware draws it"), QVariant());
  m_drawing->addItem(tr("Always OpenGL"), true);
  m_drawing->addItem(tr("Never OpenGL"), false);
  const QVariant stored = QxSettings().value(openGLKey);
  m_drawing->setCurrentIndex(!stored.isValid() ? 0 : stored.toBool() ? 1 : 2);
  auto* label = new QLabel(tr("&Draw images with:"), group);
  label->setBuddy(m_drawing);
  auto* note = new QLabel(tr("Taken up by viewers that are opened from now on."), group);
  note->setForegroundRole(QPalette::PlaceholderText);
  auto* layout = new QVBoxLayout(group);
  for (QWidget* widget : std::initializer_list<QWidget*>{label, m_drawing, note}) layout->addWidget(widget);
  return group;
}

void QxPreferencesDialog::accept()
{
  ZxSettingsMgr::getInstance()->setUsesAnatomicalNames(m_anatomical->isChecked());
  QxSettings settings;
  if (m_drawing->currentData().isValid())
    settings.setValue(openGLKey, m_drawing->currentData());
  else
    settings.remove(openGLKey);
  QDialog::accept();
}
