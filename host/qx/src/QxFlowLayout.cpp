#include "QxFlowLayout.h"

#include <algorithm>

QxFlowLayout::~QxFlowLayout() { qDeleteAll(m_items); }

QLayoutItem* QxFlowLayout::takeAt(int index)
{
  return index >= 0 && index < count() ? m_items.takeAt(index) : nullptr;
}

void QxFlowLayout::setGeometry(const QRect& rect)
{
  QLayout::setGeometry(rect);
  arrange(rect, true);
}

QSize QxFlowLayout::sizeHint() const
{
  QSize size;
  for (const QLayoutItem* item : m_items) {
    const QSize hint = item->sizeHint();
    size = {size.width() + (size.isEmpty() ? 0 : spacing()) + hint.width(),
            std::max(size.height(), hint.height())};
  }
  return size;
}

QSize QxFlowLayout::minimumSize() const
{
  QSize size;
  for (const QLayoutItem* item : m_items) size = size.expandedTo(item->sizeHint());
  return size;
}

int QxFlowLayout::arrange(const QRect& rect, bool place) const
{
  int x = rect.x(), y = rect.y(), rowHeight = 0;
  for (QLayoutItem* item : m_items) {
    const QSize size = item->sizeHint();
    if (x > rect.x() && x + size.width() > rect.x() + rect.width()) {
      x = rect.x();
      y += rowHeight + spacing();
      rowHeight = 0;
    }
    if (place) item->setGeometry({QPoint(x, y), size});
    x += size.width() + spacing();
    rowHeight = std::max(rowHeight, size.height());
  }
  return y + rowHeight - rect.y();
}
