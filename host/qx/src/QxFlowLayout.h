#pragma once

#include <QLayout>

/// Puts widgets side by side and begins a new row where they do not fit, as words are.
class QxFlowLayout : public QLayout {
public:
  explicit QxFlowLayout(QWidget* parent) : QLayout(parent) {}
  ~QxFlowLayout() override;

  void addItem(QLayoutItem* item) override { m_items << item; }
  int count() const override { return static_cast<int>(m_items.size()); }
  QLayoutItem* itemAt(int index) const override { return m_items.value(index); }
  QLayoutItem* takeAt(int index) override;
  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override { return arrange({0, 0, width, 0}, false); }
  void setGeometry(const QRect& rect) override;
  QSize sizeHint() const override;
  QSize minimumSize() const override;
  Qt::Orientations expandingDirections() const override { return {}; }

private:
  /// Places the widgets if asked to; returns the height that they need.
  int arrange(const QRect& rect, bool place) const;

  QList<QLayoutItem*> m_items; // owned
};
