#pragma once

#include <QFrame>

class QLabel;

/// A strip above the pages that tells of a failure until it is closed, so that nothing has to be answered and
/// nothing is overlooked. Children: "messageBarText", "messageBarClose".
class QxMessageBar : public QFrame {
  Q_OBJECT
public:
  explicit QxMessageBar(QWidget* parent);
  /// Shows a sentence; behind one that is still shown it is added.
  void tell(const QString& sentence);

private:
  QLabel* m_text; // child
};
