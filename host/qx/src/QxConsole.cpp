#include "QxConsole.h"

#include "QxCommandLine.h"
#include "QxCommandWords.h"
#include "QxTcl.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPlainTextEdit>
#include <QVBoxLayout>

namespace {

constexpr int longestConsole = 10000; // lines

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
  : QWidget(parent), m_text(new QPlainTextEdit(this)), m_line(new QxCommandLine(this))
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
  m_line->setCandidates(QxCommandWords::candidates);
  for (QWidget* widget : {static_cast<QWidget*>(m_text), static_cast<QWidget*>(m_line)})
    widget->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  auto* prompt = new QLabel(QStringLiteral("%"), this);
  prompt->setBuddy(m_line);
  auto* row = new QHBoxLayout;
  row->setContentsMargins(6, 0, 0, 0);
  row->addWidget(prompt);
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
  m_before = ZxMessage::getTheMsg()->setSink(
      [this](const std::string& line) { print(QString::fromStdString(line), Kind::Message); });
}

QxConsole::~QxConsole() { ZxMessage::getTheMsg()->setSink(std::move(m_before)); }

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

void QxConsole::evaluate(const QString& command)
{
  print("% " + command, Kind::Command);
  const QxTcl::Result result = QxTcl::eval(command.toStdString());
  const QString text = QString::fromStdString(result.text);
  if (!text.isEmpty()) print(text, result.ok ? Kind::Result : Kind::Failure);
}

void QxConsole::showMenu(const QPoint& place)
{
  const std::unique_ptr<QMenu> menu(m_text->createStandardContextMenu());
  menu->addSeparator();
  menu->addAction(tr("Clear"), this, &QxConsole::clear);
  menu->exec(m_text->viewport()->mapToGlobal(place));
}
