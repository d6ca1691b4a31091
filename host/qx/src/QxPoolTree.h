#pragma once

#include <QTreeWidget>

class ZxObject;

/// The objects of the pool as a list in which modules stand below the data that they are attached to and
/// results below their module, joined by drawn lines.
class QxPoolTree : public QTreeWidget {
  Q_OBJECT
public:
  explicit QxPoolTree(QWidget* parent);

  /// Takes up the present state of the pool; selection and current object stay. While a label is typed this
  /// waits.
  void refresh();
  /// Takes an object out at once.
  void drop(const ZxObject* object);
  std::vector<ZxObject*> selectedObjects() const;
  ZxObject* currentObject() const;
  void select(const ZxObject* object);
  /// Lets the user type another label.
  void rename(const ZxObject* object);

protected:
  void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;
  void drawBranches(QPainter* painter, const QRect& rect, const QModelIndex& index) const override;

private:
  void rebuild();
  QTreeWidgetItem* itemOf(const ZxObject* object) const;

  bool m_refreshIsDue = false;
  std::vector<std::pair<ZxObject*, ZxObject*>> m_shown; // object and the one it stands below
};
