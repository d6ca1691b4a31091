#include "QxChoiceBox.h"

#include <QWheelEvent>

QxChoiceBox::QxChoiceBox(QWidget* parent) : QComboBox(parent)
{
  setFocusPolicy(Qt::StrongFocus);
  setSizeAdjustPolicy(AdjustToMinimumContentsLengthWithIcon);
  setMinimumContentsLength(12);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void QxChoiceBox::wheelEvent(QWheelEvent* event)
{
  if (hasFocus())
    QComboBox::wheelEvent(event);
  else
    event->ignore();
}
