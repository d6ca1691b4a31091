#include "QxConsole.h"

#include "QxCommandLine.h"
#include "QxPoolActions.h"
#include "zx/ZxInterpreter.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPlainTextEdit>
#include <QVBoxLayout>

namespace {

constexpr int longestConsole = 10000; // lines

QStringList completionsOf(const QString& text)
{
  QStringList completions;
  for (const std::string& word : ZxInterpreter::getTheInterpreter().completions(text.toStdString()))
    completions << QString::fromStdString(word);
  return completions;
}

QColor colorOf(QxConsole::Kind kind, const QPalette& palette)
{
  const bool isDark = palette.color(QPalette::Base).lightness() < 128;
  switch (kind) {
  case QxConsole::Kind::Command:
    return palette.color(QPalette::Link);
  case QxConsole::Kind::Failure:
    return isDark ? QColor(255, 140, 130) : QColor(176, 20, 20);
  default:
    return palette.color(QPalette::Text);
  }
}

} // namespace

QxConsole::QxConsole(QWidget* parent)
  : QWidget(parent), m_text(new QPlainTextEdit(this)), m_prompt(new QLabel(QStringLiteral("%"), this)),
    m_line(new QxCommandLine(this))
{
  setObjectName("console");
  m_text->setObjectName("messages");
  m_text->setAccessibleName(tr("Messages"));
  m_text->setReadOnly(true);
  m_text->setUndoRedoEnabled(false);
  m_text->setMaximumBlockCount(longestConsole);
  m_text->setContextMenuPolicy(Qt::CustomContextMenu);
  m_text->setTabChangesFocus(true);
  m_line->setObjectName("commandLine");
  m_line->setPlaceholderText(tr("Tcl command, for example: objects"));
  m_line->setToolTip(tr("Tab completes names, Up and Down bring back commands entered before."));
  m_line->setAccessibleName(tr("Tcl command"));
  m_line->setCompletions(completionsOf);
  for (QWidget* widget : {static_cast<QWidget*>(m_text), static_cast<QWidget*>(m_line)})
    widget->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  m_prompt->setBuddy(m_line);
  auto* row = new QHBoxLayout;
  row->setContentsMargins(6, 0, 0, 0);
  row->addWidget(m_prompt);
  row->addWidget(m_line);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(2);
  layout->addWidget(m_text);
  layout->addLayout(row);
  setFocusProxy(m_line);
  connect(m_line, &QxCommandLine::entered, this, &QxConsole::evaluate);
  connect(m_line, &QxCommandLine::choicesFound, this,
          [this](const QStringList& choices) { print(choices.join("  "), Kind::Result); });
  connect(m_text, &QWidget::customContextMenuRequested, this, &QxConsole::showMenu);
  m_before = ZxMessage::getTheMsg()->setSink([this](const std::string& line) {
    print(QString::fromStdString(line), Kind::Message);
    Q_EMIT told(QString::fromStdString(line));
  });
  ZxInterpreter::getTheInterpreter().setOutput(
      [this](const std::string& line) { print(QString::fromStdString(line), Kind::Result); });
}

QxConsole::~QxConsole()
{
  ZxMessage::getTheMsg()->setSink(std::move(m_before));
  ZxInterpreter::getTheInterpreter().setOutput({});
}

void QxConsole::print(const QString& text, Kind kind)
{
  QTextCharFormat format;
  format.setForeground(colorOf(kind, palette()));
  QTextCursor cursor(m_text->document());
  cursor.movePosition(QTextCursor::End);
  if (!m_text->document()->isEmpty()) cursor.insertBlock();
  cursor.insertText(text, format);
  m_text->moveCursor(QTextCursor::End);
  m_text->ensureCursorVisible();
}

void QxConsole::clear() { m_text->clear(); }

void QxConsole::evaluate(const QString& line)
{
  print((m_begun.isEmpty() ? "% " : "> ") + line, Kind::Command);
  const QString command = m_begun + line;
  const bool isComplete = ZxInterpreter::isComplete(command.toStdString());
  m_begun = isComplete ? QString() : command + '\n';
  m_prompt->setText(isComplete ? "%" : ">");
  if (!isComplete || QxPoolActions::isRefused()) return;
  const ZxScriptResult result = ZxInterpreter::getTheInterpreter().eval(command.toStdString());
  const QString text = QString::fromStdString(result.text);
  if (!text.isEmpty()) print(text, result.succeeded() ? Kind::Result : Kind::Failure);
}

void QxConsole::showMenu(const QPoint& place)
{
  const std::unique_ptr<QMenu> menu(m_text->createStandardContextMenu());
  menu->addSeparator();
  menu->addAction(tr("Clear"), this, &QxConsole::clear);
  menu->exec(m_text->viewport()->mapToGlobal(place));
}
