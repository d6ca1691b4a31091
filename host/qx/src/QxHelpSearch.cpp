#include "QxHelpSearch.h"

#include <QDir>
#include <QLineEdit>
#include <QListWidget>
#include <QTextDocument>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int kPlacesOfAPage = 5;
constexpr int kWordsAround = 30; // characters on each side of a found text
constexpr int kPathRole = Qt::UserRole;
constexpr int kNumberRole = Qt::UserRole + 1;

QString around(const QString& text, qsizetype place, qsizetype length)
{
  const qsizetype begin = std::max<qsizetype>(0, place - kWordsAround);
  const qsizetype end = std::min(text.size(), place + length + kWordsAround);
  const QString words = text.mid(begin, end - begin).simplified();
  return (begin > 0 ? "…" : "") + words + (end < text.size() ? "…" : "");
}

} // namespace

QxHelpSearch::QxHelpSearch(QWidget* parent)
  : QWidget(parent), m_text(new QLineEdit(this)), m_results(new QListWidget(this))
{
  m_text->setObjectName("searchAll");
  m_text->setPlaceholderText(tr("Search all pages"));
  m_text->setClearButtonEnabled(true);
  m_results->setObjectName("searchResults");
  m_results->setWordWrap(true);
  m_results->setTextElideMode(Qt::ElideNone);
  m_results->setSpacing(2);
  m_results->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  auto* column = new QVBoxLayout(this);
  column->addWidget(m_text);
  column->addWidget(m_results);

  connect(m_text, &QLineEdit::textChanged, this, &QxHelpSearch::search);
  const auto choose = [this](QListWidgetItem* item) {
    const QString path = item->data(kPathRole).toString();
    if (!path.isEmpty()) Q_EMIT chosen(path, m_text->text().trimmed(), item->data(kNumberRole).toInt());
  };
  connect(m_results, &QListWidget::itemClicked, this, choose);
  connect(m_results, &QListWidget::itemActivated, this, choose);
}

void QxHelpSearch::setFolder(const QString& folder)
{
  if (folder == m_folder) return;
  m_folder = folder;
  m_read = false;
  search(m_text->text());
}

void QxHelpSearch::readPages()
{
  if (m_read) return;
  m_read = true;
  m_pages.clear();
  for (const QFileInfo& info : QDir(m_folder).entryInfoList({"*.html"}, QDir::Files, QDir::Name)) {
    QFile file(info.filePath());
    if (!file.open(QIODevice::ReadOnly)) continue;
    QTextDocument document;
    document.setHtml(QString::fromUtf8(file.readAll()));
    const QString title = document.metaInformation(QTextDocument::DocumentTitle);
    m_pages.append(
        {info.filePath(), title.isEmpty() ? info.completeBaseName() : title, document.toPlainText()});
  }
}

void QxHelpSearch::search(const QString& wanted)
{
  m_results->clear();
  const QString text = wanted.trimmed();
  if (text.size() < 2) return;
  readPages();
  for (const Page& page : m_pages) list(page, text);
  if (m_results->count() == 0) m_results->addItem(tr("Not found"));
}

void QxHelpSearch::list(const Page& page, const QString& text)
{
  qsizetype place = page.text.indexOf(text, 0, Qt::CaseInsensitive);
  if (place < 0) return;
  auto* title = new QListWidgetItem(page.title, m_results);
  title->setFlags(Qt::NoItemFlags);
  title->setForeground(palette().text());
  QFont bold = font();
  bold.setBold(true);
  title->setFont(bold);
  for (int n = 0; place >= 0 && n < kPlacesOfAPage; ++n) {
    auto* item = new QListWidgetItem(around(page.text, place, text.size()), m_results);
    item->setData(kPathRole, page.path);
    item->setData(kNumberRole, n);
    place = page.text.indexOf(text, place + text.size(), Qt::CaseInsensitive);
  }
}
