#include "QxCloseGuard.h"

#include "QxFileCommands.h"
#include "QxFileQueue.h"
#include "QxObjectText.h"
#include "QxPoolActions.h"
#include "QxWorkArea.h"
#include "qx/QxCentralPage.h"
#include "zx/ZxObjectPool.h"

#include <QMainWindow>
#include <QMessageBox>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QStackedLayout>

namespace {

constexpr int lookAgainMilliseconds = 50;
constexpr std::size_t mostNames = 10;

std::vector<McHandle<ZxSpatialData>> unsavedData()
{
  std::vector<McHandle<ZxSpatialData>> unsaved;
  for (const McHandle<ZxObject>& o : ZxObjectPool::getThePool().objects())
    if (auto* data = dynamic_cast<ZxSpatialData*>(o.get()); data && data->isUnsaved())
      unsaved.emplace_back(data);
  return unsaved;
}

QString namesOf(const std::vector<McHandle<ZxSpatialData>>& objects)
{
  QStringList names;
  for (const auto& data : objects)
    if (names.size() < static_cast<int>(mostNames)) names << QxObjectText::label(*data);
  if (objects.size() > mostNames)
    names << QxCloseGuard::tr("and %n more", nullptr, static_cast<int>(objects.size() - mostNames));
  return names.join('\n');
}

} // namespace

QxCloseGuard::QxCloseGuard(QStackedLayout* pages, QxFileCommands* files, QxWorkArea* workArea,
                           QMainWindow* window)
  : QObject(window), m_pages(pages), m_files(files), m_workArea(workArea), m_window(window)
{
  m_later.setInterval(lookAgainMilliseconds);
  connect(&m_later, &QTimer::timeout, this, &QxCloseGuard::tryAgain);
  connect(files, &QxFileCommands::failed, &m_later, &QTimer::stop); // What failed is not lost by closing.
}

bool QxCloseGuard::mayClose()
{
  if (m_isAsking) return false;
  const QScopedValueRollback asking(m_isAsking, true);
  // What is saved in an editor makes data unsaved: these come last.
  for (const auto ask : {&QxCloseGuard::askAboutWork, &QxCloseGuard::askAboutWriting, &QxCloseGuard::askPages,
                         &QxCloseGuard::askAboutUnsaved}) {
    const Answer answer = (this->*ask)();
    if (answer == Answer::Later) closeLater();
    if (answer != Answer::Close) return false;
  }
  closePages();
  m_files->queue()->stopAll();
  return true;
}

QxCloseGuard::Answer QxCloseGuard::askAboutWork()
{
  if (!QxPoolActions::isWorkGoingOn()) return Answer::Close;
  QMessageBox box(QMessageBox::Question, m_window->windowTitle(), tr("Work is still going on."),
                  QMessageBox::Cancel, m_window);
  box.setObjectName("workPrompt");
  QPushButton* stop = box.addButton(tr("&Stop and Close"), QMessageBox::AcceptRole);
  box.setDefaultButton(QMessageBox::Cancel);
  box.exec();
  if (box.clickedButton() != stop) return Answer::Stay;
  m_workArea->stop();
  return Answer::Later; // Only when the work has come back can what it uses be taken away.
}

QxCloseGuard::Answer QxCloseGuard::askPages()
{
  for (int i = m_pages->count() - 1; i >= 0; --i)
    if (auto* page = dynamic_cast<QxCentralPage*>(m_pages->widget(i)); page && !page->canClose())
      return Answer::Stay;
  return Answer::Close;
}

QxCloseGuard::Answer QxCloseGuard::askAboutWriting()
{
  if (!m_files->queue()->isWriting()) return Answer::Close;
  QMessageBox box(QMessageBox::Question, m_window->windowTitle(), tr("Data are still being written."),
                  QMessageBox::Cancel, m_window);
  box.setObjectName("writingPrompt");
  QPushButton* wait = box.addButton(tr("&Close When Written"), QMessageBox::AcceptRole);
  QPushButton* stop = box.addButton(tr("&Stop Writing"), QMessageBox::DestructiveRole);
  box.setDefaultButton(wait);
  box.exec();
  if (box.clickedButton() == wait) return Answer::Later;
  return box.clickedButton() == stop ? Answer::Close : Answer::Stay; // It is stopped when all is answered.
}

QxCloseGuard::Answer QxCloseGuard::askAboutUnsaved()
{
  const auto unsaved = unsavedData();
  if (unsaved.empty()) return Answer::Close;
  QMessageBox box(QMessageBox::Warning, m_window->windowTitle(),
                  tr("These data have changes that are not saved:"),
                  QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, m_window);
  box.setObjectName("unsavedPrompt");
  box.setInformativeText(namesOf(unsaved));
  box.button(QMessageBox::Save)->setText(tr("&Save"));
  box.button(QMessageBox::Discard)->setText(tr("&Don't Save"));
  box.setDefaultButton(QMessageBox::Save);
  const int answer = box.exec();
  if (answer == QMessageBox::Discard) return Answer::Close;
  if (answer != QMessageBox::Save) return Answer::Stay;
  for (const auto& data : unsaved)
    if (!m_files->save(*data)) return Answer::Stay;
  closePages(); // Everything has been asked; when the data are written it is not asked again.
  return Answer::Later;
}

void QxCloseGuard::closePages()
{
  for (int i = m_pages->count() - 1; i >= 0; --i)
    if (auto* page = dynamic_cast<QxCentralPage*>(m_pages->widget(i))) page->closePage();
}

void QxCloseGuard::closeLater() { m_later.start(); }

void QxCloseGuard::tryAgain()
{
  if (m_isAsking || QxPoolActions::isWorkGoingOn() || m_files->queue()->isWriting()) return;
  m_later.stop();
  m_window->close();
}
