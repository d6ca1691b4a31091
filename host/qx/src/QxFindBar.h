#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;
class QTextBrowser;

/// Searches in the page of a browser: all places are marked, one is selected. Upper and lower case are the
/// same. Hidden until open(). Children: "find", "findNext", "findPrevious", "findResult".
class QxFindBar : public QWidget {
  Q_OBJECT
public:
  /// The browser is not owned and outlives the bar.
  QxFindBar(QTextBrowser* browser, QWidget* parent);

  /// Shows the bar, its field focused.
  void open();
  /// Shows the bar and goes to a place of a text in the page, counted from 0.
  void search(const QString& text, int number = 0);

public Q_SLOTS:
  void next() { move(false); }
  void previous() { move(true); }

protected:
  void keyPressEvent(QKeyEvent* event) override;

private:
  void markAll();
  void move(bool backwards);
  void select(int place);
  void showResult();

  QTextBrowser* m_browser;
  QLineEdit* m_text; // children
  QLabel* m_result;
  QList<int> m_places; // where the text begins in the page, ascending
};
