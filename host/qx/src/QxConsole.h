#pragma once

#include "zx/ZxMessage.h"

#include <QWidget>

#include <functional>

class QLabel;
class QPlainTextEdit;
class QxCommandLine;

/// The message console: the messages of the program line by line, and a prompt for commands.
///
/// It takes the messages, and what scripts print, for as long as it lives.
class QxConsole : public QWidget {
  Q_OBJECT
public:
  explicit QxConsole(QWidget* parent);
  ~QxConsole() override;

  enum class Kind { Message, Command, Result, Failure };
  void print(const QString& text, Kind kind);

Q_SIGNALS:
  /// A message of the program has come.
  void told(const QString& message);

public Q_SLOTS:
  void clear();

private:
  void evaluate(const QString& line);
  void showMenu(const QPoint& place);

  QPlainTextEdit* m_text; // these three: children
  QLabel* m_prompt;
  QxCommandLine* m_line;
  QString m_begun; // lines of a command that goes on
  ZxMessage::Sink m_before;
};
