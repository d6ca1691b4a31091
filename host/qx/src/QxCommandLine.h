#pragma once

#include <QLineEdit>
#include <QStringList>

#include <functional>

/// The input line of the console. Up and Down walk through the commands entered before, Tab completes the
/// word before the cursor; in an empty line Tab goes to the next widget, as everywhere.
class QxCommandLine : public QLineEdit {
  Q_OBJECT
public:
  /// What the last word of a text can be completed to.
  using Completions = std::function<QStringList(const QString& text)>;

  explicit QxCommandLine(QWidget* parent);
  void setCompletions(Completions completions) { m_completions = std::move(completions); }

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

  Completions m_completions;
  QStringList m_history;
  int m_position = 0; // in the history; its size: the line that is being written
  QString m_draft;
};
