#pragma once

#include <QWidget>

class QLineEdit;
class QListWidget;

/// Searches all pages of a help folder and lists where a text stands, with some words around it. Children:
/// "searchAll", "searchResults".
class QxHelpSearch : public QWidget {
  Q_OBJECT
public:
  explicit QxHelpSearch(QWidget* parent);

  /// Searches the *.html files of this folder from now on.
  void setFolder(const QString& folder);

Q_SIGNALS:
  /// A result was chosen: the place of the text in the page, counted from 0.
  void chosen(const QString& path, const QString& text, int number);

private:
  struct Page {
    QString path, title, text;
  };
  void readPages();
  void search(const QString& text);
  void list(const Page& page, const QString& text);

  QString m_folder;
  QList<Page> m_pages; // of the folder, read when they are first searched
  bool m_read = false;
  QLineEdit* m_text; // children
  QListWidget* m_results;
};
