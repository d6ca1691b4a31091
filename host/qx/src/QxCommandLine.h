#pragma once

#include <QLineEdit>
#include <QStringList>

#include <functional>

/// The input line of the console. Up and Down walk through the commands entered before, Tab completes the
/// word before the cursor; in an empty line Tab goes to the next widget, as everywhere.
class QxCommandLine : public QLineEdit {
  Q_OBJECT
public:
  /// The words that may stand behind the complete words of a command.
  using Candidates = std::function<QStringList(const QStringList& wordsBefore)>;

  explicit QxCommandLine(QWidget* parent);
  void setCandidates(Candidates candidates) { m_candidates = std::move(candidates); }

Q_SIGNALS:
  void entered(const QString& command);
  /// The word can be completed in several ways.
  void choicesFound(const QStringList& choices);

protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

private:
  void enter();
  void walk(int step);
  void complete();

  Candidates m_candidates;
  QStringList m_history;
  int m_position = 0; // in the history; its size: the line that is being written
  QString m_draft;
};
