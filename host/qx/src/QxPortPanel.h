#pragma once

#include <QScrollArea>

#include <vector>

class QGridLayout;
class QLabel;
class QxPoolWatcher;
class QxPortWidget;
class ZxModule;
class ZxObject;

/// What is known of the selected object: the ports of a module, the properties of data.
class QxPortPanel : public QScrollArea {
  Q_OBJECT
public:
  QxPortPanel(QxPoolWatcher* watcher, QWidget* parent);

  /// Shows an object, or a hint when there is none. Not owned: it leaves the panel when it leaves the pool.
  void setObject(ZxObject* object);
  ZxObject* object() const noexcept { return m_object; }

private:
  struct Row {
    QxPortWidget* widget;
    QLabel* label;
  };
  void rebuild();
  void addPorts(ZxModule& module, QWidget* page, QGridLayout* grid);
  void refresh();

  ZxObject* m_object = nullptr;
  QLabel* m_icon = nullptr; // these three: in the page
  QLabel* m_title = nullptr;
  QLabel* m_details = nullptr;
  std::vector<Row> m_rows;
};
