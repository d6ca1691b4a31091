#include "Stage.h"

#include "zx/ZxInterpreter.h"
#include "zx/ZxObjectPool.h"

#include <QApplication>
#include <QDockWidget>
#include <QElapsedTimer>
#include <QMenu>
#include <QMenuBar>
#include <QTimer>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr QSize pictureSize(1280, 800);
constexpr int patienceMilliseconds = 120000;

} // namespace

Stage::Stage()
{
  for (const std::string& problem : m_session.problems()) fail(QString::fromStdString(problem));
  window().resize(pictureSize);
  window().show();
  window().activateWindow();
  waitFor("the window", [this] { return window().isActiveWindow(); });
  window().resetLayout();
}

void Stage::open(const QString& file)
{
  const std::size_t before = ZxObjectPool::getThePool().objects().size();
  window().open({file});
  waitFor("the stack", [before] { return ZxObjectPool::getThePool().objects().size() > before; });
  settle();
}

QString Stage::script(const QString& text)
{
  const ZxScriptResult result = ZxInterpreter::getTheInterpreter().eval(text.toStdString());
  if (!result.succeeded()) fail(QString::fromStdString(result.text));
  settle();
  return QString::fromStdString(result.text);
}

void Stage::showDock(const char* name, bool shown)
{
  find<QDockWidget>(name).setVisible(shown);
  settle();
}

void Stage::whileMenuIsOpen(const char* name, const std::function<void(QMenu&)>& act)
{
  auto& menu = find<QMenu>(name);
  window().menuBar()->setActiveAction(menu.menuAction());
  waitFor(name, [&menu] { return menu.isVisible(); });
  act(menu);
  menu.close();
  settle();
}

void Stage::whileOpen(const std::function<void()>& open, const std::function<void(QWidget&)>& act)
{
  QTimer poll;
  bool isDone = false;
  QObject::connect(&poll, &QTimer::timeout, [&] {
    QWidget* popup = QApplication::activePopupWidget();
    QWidget* const opened = popup ? popup : QApplication::activeModalWidget();
    if (isDone || !opened || !opened->isVisible()) return;
    isDone = true;
    act(*opened);
    opened->close();
  });
  poll.start(10);
  open();
  waitFor("a dialog", [&isDone] { return isDone; });
  poll.stop();
  settle();
}

void Stage::settle()
{
  // What is laid out anew asks for more of the same; deleteLater() wants a turn of the loop.
  for (int i = 0; i < 5; ++i) {
    QApplication::sendPostedEvents();
    QApplication::processEvents();
  }
}

void Stage::waitFor(const char* what, const std::function<bool()>& condition)
{
  QElapsedTimer clock;
  clock.start();
  while (!condition()) {
    if (clock.elapsed() > patienceMilliseconds) fail(QString("Waited in vain for %1.").arg(what));
    QApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
  }
}

void Stage::fail(const QString& sentence)
{
  std::fprintf(stderr, "%s\n", qPrintable(sentence));
  std::_Exit(EXIT_FAILURE);
}
