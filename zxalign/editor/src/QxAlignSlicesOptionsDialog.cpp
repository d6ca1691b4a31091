#include "zxalign/QxAlignSlicesOptionsDialog.h"

#include "mc/McRound.h"
#include "ui_QxAlignSlicesOptionsDialogBase.h"
#include "zxalign/ZxAlignSettings.h"

#include <QIntValidator>
#include <QSignalBlocker>

#include <limits>

namespace {

constexpr int stepPositions = 1000;

void paint(QWidget* swatch, const QColor& colour)
{
  QPalette palette = swatch->palette();
  palette.setColor(QPalette::Window, colour);
  swatch->setPalette(palette);
}

QString twoDecimals(double value) { return QString::number(value, 'f', 2); }

float valueAt(const QxAlignSlicesOptionsDialog::Step& step, int position)
{
  return step.minimum +
         static_cast<float>(position) * (step.maximum - step.minimum) / static_cast<float>(stepPositions);
}

} // namespace

QxAlignSlicesOptionsDialog::QxAlignSlicesOptionsDialog(QWidget* parent, const char* name, bool modal)
  : QDialog(parent), m_form(std::make_unique<Ui::QxAlignSlicesOptionsDialogBase>())
{
  m_form->setupUi(this);
  if (name) setObjectName(name);
  setModal(modal);
  for (QLineEdit* edit : {m_form->ImageWidthLineEdit, m_form->ImageHeightLineEdit})
    edit->setValidator(new QIntValidator(0, ZxAlignSettings::maxOutputSize, this));
  m_form->numIterField->setValidator(new QIntValidator(0, std::numeric_limits<int>::max(), this));
  connectControls();
  updateGray(m_form->GraySlider->value());
  updateRGB();
}

QxAlignSlicesOptionsDialog::~QxAlignSlicesOptionsDialog() = default;

void QxAlignSlicesOptionsDialog::connectControls()
{
  using Dialog = QxAlignSlicesOptionsDialog;
  const Ui::QxAlignSlicesOptionsDialogBase& f = *m_form;
  connect(f.AutomaticSizeCheckBox, &QAbstractButton::clicked, this, &Dialog::calcNewSize);
  connect(f.ShowBorderCheckBox, &QAbstractButton::clicked, this, &Dialog::showBorder);
  for (QLineEdit* edit : {f.ImageWidthLineEdit, f.ImageHeightLineEdit})
    connect(edit, &QLineEdit::textChanged, this, &Dialog::changeBorderSize);
  connect(f.GraySlider, &QSlider::valueChanged, this, &Dialog::updateGray);
  for (QSlider* slider : {f.RSlider, f.GSlider, f.BSlider})
    connect(slider, &QSlider::valueChanged, this, &Dialog::updateRGB);
  connect(f.chessFieldSizeSlider, &QSlider::valueChanged, this, &Dialog::updateChessFieldSizeLabel);
  const std::initializer_list<std::pair<QSlider*, QLabel*>> plain{{f.GraySlider, f.GrayValueLabel},
                                                                  {f.RSlider, f.RValueLabel},
                                                                  {f.GSlider, f.GValueLabel},
                                                                  {f.BSlider, f.BValueLabel},
                                                                  {f.matDimSlider, f.matDimValueLabel},
                                                                  {f.matPercSlider, f.matPercValueLabel},
                                                                  {f.matRastSlider, f.matRastValueLabel},
                                                                  {f.imRastSlider, f.imRastValueLabel},
                                                                  {f.setThresSlider, f.setThresValueLabel}};
  for (const auto& [slider, label] : plain)
    connect(slider, &QSlider::valueChanged, label, qOverload<int>(&QLabel::setNum));
  connect(f.angleStepSlider, &QSlider::valueChanged, this, &Dialog::updateAngleLabel);
  connect(f.rotSlider, &QSlider::valueChanged, this, &Dialog::updateRotValue);
  connect(f.transSlider, &QSlider::valueChanged, this, &Dialog::updateTransValue);
  connect(f.scaleFactorSlider, &QSlider::valueChanged, this, &Dialog::updateResampleSizeLabel);
}

int QxAlignSlicesOptionsDialog::imageWidth() const { return m_form->ImageWidthLineEdit->text().toInt(); }

int QxAlignSlicesOptionsDialog::imageHeight() const { return m_form->ImageHeightLineEdit->text().toInt(); }

void QxAlignSlicesOptionsDialog::setImageSize(int width, int height)
{
  const QSignalBlocker blockWidth(m_form->ImageWidthLineEdit), blockHeight(m_form->ImageHeightLineEdit);
  m_form->ImageWidthLineEdit->setText(QString::number(width));
  m_form->ImageHeightLineEdit->setText(QString::number(height));
}

bool QxAlignSlicesOptionsDialog::showsBorders() const { return m_form->ShowBorderCheckBox->isChecked(); }

void QxAlignSlicesOptionsDialog::updateGray(int value)
{
  paint(m_form->GrayFrame, QColor(value, value, value));
}

void QxAlignSlicesOptionsDialog::updateRGB()
{
  paint(m_form->RGBAFrame,
        QColor(m_form->RSlider->value(), m_form->GSlider->value(), m_form->BSlider->value()));
}

void QxAlignSlicesOptionsDialog::updateChessFieldSizeLabel(int value)
{
  m_form->chessFieldSizeValueLabel->setText(QString::number(value));
}

void QxAlignSlicesOptionsDialog::updateAngleLabel(int value)
{
  m_form->angleStepValueLabel->setText(twoDecimals(value * 0.5));
}

void QxAlignSlicesOptionsDialog::updateResampleSizeLabel(int value)
{
  m_form->scaleFactorValueLabel->setText(QString::number(1 << value));
}

void QxAlignSlicesOptionsDialog::initSliders()
{
  place(m_form->transSlider, m_form->transLabel, m_translation);
  place(m_form->rotSlider, m_form->rotLabel, m_rotation);
}

void QxAlignSlicesOptionsDialog::place(QSlider* slider, QLabel* label, const Step& step)
{
  // The value lies between two positions more often than on one: what the slider would tell is not the value.
  const QSignalBlocker block(slider);
  slider->setRange(0, stepPositions);
  slider->setPageStep(stepPositions / 10);
  slider->setValue(mc::roundHalfUp((static_cast<double>(step.value) - step.minimum) * stepPositions /
                                   (static_cast<double>(step.maximum) - step.minimum)));
  label->setText(twoDecimals(step.value));
}

void QxAlignSlicesOptionsDialog::updateTransValue(int position)
{
  m_translation.value = valueAt(m_translation, position);
  m_form->transLabel->setText(twoDecimals(m_translation.value));
}

void QxAlignSlicesOptionsDialog::updateRotValue(int position)
{
  m_rotation.value = valueAt(m_rotation, position);
  m_form->rotLabel->setText(twoDecimals(m_rotation.value));
}

void QxAlignSlicesOptionsDialog::calcNewSize()
{
  if (m_form->AutomaticSizeCheckBox->isChecked()) Q_EMIT calcNewSizeSignal(true, showsBorders());
}

void QxAlignSlicesOptionsDialog::showBorder()
{
  Q_EMIT showBorderSignal(m_form->AutomaticSizeCheckBox->isChecked(), showsBorders(), imageWidth(),
                          imageHeight());
}

void QxAlignSlicesOptionsDialog::changeBorderSize()
{
  if (showsBorders()) Q_EMIT changeBorderSizeSignal(imageWidth(), imageHeight());
}
