#pragma once

#include <QObject>
#include <QStringList>

class QMenu;

/// The inputs that were opened last, kept in the settings: each is one volume, in one file or several.
class QxRecentFiles : public QObject {
  Q_OBJECT
public:
  explicit QxRecentFiles(QObject* parent);

  /// Puts an input in front.
  void add(const QStringList& inputs);
  /// Fills a menu with them.
  void fill(QMenu* menu);

Q_SIGNALS:
  void chosen(const QStringList& inputs);

private:
  void store() const;

  QList<QStringList> m_inputs; // the last one first
};
