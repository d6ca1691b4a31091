#include "QxGreyWindow.h"

#include "QxFloatField.h"
#include "QxRangeSlider.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

#include <algorithm>

QxGreyWindow::QxGreyWindow(QWidget* parent)
  : QWidget(parent), m_black(new QxFloatField(this)), m_white(new QxFloatField(this)),
    m_slider(new QxRangeSlider(this))
{
  auto* automatic = new QToolButton(this);
  automatic->setObjectName("autoGrey");
  automatic->setText(tr("Auto"));
  automatic->setToolTip(tr("Take black and white from the values of this slice"));
  m_black->setObjectName("blackField");
  m_black->setToolTip(tr("Value that is shown black, in the unit of the data"));
  m_black->setAccessibleName(tr("Black"));
  m_white->setObjectName("whiteField");
  m_white->setToolTip(tr("Value that is shown white, in the unit of the data"));
  m_white->setAccessibleName(tr("White"));
  m_slider->setObjectName("greySlider");
  m_slider->setToolTip(
      tr("Drag the ends, or the part between them, to choose the values shown black and white"));
  m_slider->setAccessibleName(tr("Grey window"));
  for (QxFloatField* field : {m_black, m_white}) field->setFixedWidth(field->minimumWidth());
  m_slider->setMinimumWidth(fontMetrics().averageCharWidth() * 16);
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(new QLabel(tr("Grey:"), this));
  layout->addWidget(m_black);
  layout->addWidget(m_slider);
  layout->addWidget(m_white);
  layout->addWidget(automatic);
  connect(m_black, &QxFloatField::valueEntered, this,
          [this](float black) { Q_EMIT entered(black, m_white->value()); });
  connect(m_white, &QxFloatField::valueEntered, this,
          [this](float white) { Q_EMIT entered(m_black->value(), white); });
  connect(m_slider, &QxRangeSlider::rangeEntered, this, [this](double low, double high) {
    Q_EMIT entered(static_cast<float>(low), static_cast<float>(high));
  });
  connect(automatic, &QToolButton::clicked, this, &QxGreyWindow::autoWanted);
}

void QxGreyWindow::set(float black, float white, float minimum, float maximum)
{
  m_black->setValue(black);
  m_white->setValue(white);
  m_slider->setLimits(minimum, maximum);
  m_slider->setRange(std::min(black, white), std::max(black, white));
}
