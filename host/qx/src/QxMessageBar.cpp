#include "QxMessageBar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QStyle>
#include <QToolButton>

namespace {
constexpr int mostLines = 4;
}

QxMessageBar::QxMessageBar(QWidget* parent) : QFrame(parent), m_text(new QLabel(this))
{
  setObjectName("messageBar");
  setFrameShape(StyledPanel);
  setAutoFillBackground(true);
  setBackgroundRole(QPalette::ToolTipBase);
  m_text->setObjectName("messageBarText");
  m_text->setTextFormat(Qt::PlainText);
  m_text->setWordWrap(true);
  m_text->setForegroundRole(QPalette::ToolTipText);
  m_text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  auto* icon = new QLabel(this);
  const int size = fontMetrics().height();
  icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(size, size));
  auto* close = new QToolButton(this);
  close->setObjectName("messageBarClose");
  close->setAutoRaise(true);
  close->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
  close->setToolTip(tr("Close the message"));
  connect(close, &QToolButton::clicked, this, [this] {
    m_text->clear();
    hide();
  });
  auto* layout = new QHBoxLayout(this);
  layout->addWidget(icon, 0, Qt::AlignTop);
  layout->addWidget(m_text, 1);
  layout->addWidget(close, 0, Qt::AlignTop);
  hide();
}

void QxMessageBar::tell(const QString& sentence)
{
  QStringList lines = m_text->text().split('\n', Qt::SkipEmptyParts) << sentence;
  while (lines.size() > mostLines) lines.removeFirst(); // The console has all of them.
  m_text->setText(lines.join('\n'));
  show();
}
