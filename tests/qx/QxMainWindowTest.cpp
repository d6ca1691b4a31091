#include "Desktop.h"
#include "qx/QxCentralPage.h"
#include "zx/ZxController.h"

#include <QDockWidget>
#include <QDropEvent>
#include <QLabel>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStackedLayout>

namespace {

class QxMainWindowTest : public Desktop {
protected:
  void drop(const QStringList& urls)
  {
    QMimeData data;
    QList<QUrl> list;
    for (const QString& url : urls) list << QUrl(url);
    data.setUrls(list);
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window.get(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent event(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window.get(), &event);
  }
};

/// A page that edits a module.
class Page : public QWidget, public QxCentralPage {
public:
  explicit Page(ZxModule* module) : m_module(module) {}
  bool canClose() override { return true; }
  const ZxObject* editedObject() const override { return m_module; }

private:
  ZxModule* m_module;
};

/// A page whose help is shown by an object below it.
class Helper : public QObject {
  Q_OBJECT
public:
  using QObject::QObject;
  int shown = 0;
public Q_SLOTS:
  void menuUsersguide() { ++shown; }
};

} // namespace

TEST_F(QxMainWindowTest, OpensWhatIsDroppedAndTellsWhatCannotBeOpened)
{
  drop({"file:///x/one.vol", "file:///x/damaged.vol", "http://x/two.vol", "file:///x/three.vol"});
  ASSERT_TRUE(waitFor([&] { return pool.find("three.vol") != nullptr; }));
  settle();
  EXPECT_EQ(listed(), (QStringList{"one.vol", "three.vol"}));
  EXPECT_EQ(find<QLabel>("objectTitle")->text(), "three.vol");
  const QString told = "Cannot open \"http://x/two.vol\": it is no file of this computer.\n"
                       "Cannot read \"/x/damaged.vol\": it is damaged.";
  EXPECT_EQ(find<QLabel>("messageBarText")->text(), told);
  EXPECT_EQ(find<QPlainTextEdit>("messages")->toPlainText(), told);
  QMenu* recent = find<QMenu>("recentMenu");
  Q_EMIT recent->aboutToShow();
  EXPECT_EQ(recent->actions().first()->text(), "&1 three.vol  (/x)");
}

TEST_F(QxMainWindowTest, StopsReadingHalfWay)
{
  FakeFiles::isHeld = true;
  window->open({"/x/slow.vol", "/x/next.vol"});
  auto* stop = find<QPushButton>("fileStop");
  ASSERT_TRUE(waitFor([&] { return stop->isVisible(); }));
  EXPECT_EQ(find<QLabel>("fileText")->text(), "Reading slow.vol (1 more)");
  QTest::mouseClick(stop, Qt::LeftButton);
  ASSERT_TRUE(waitFor([&] { return pool.find("next.vol") != nullptr; }));
  FakeFiles::isHeld = false;
  settle();
  EXPECT_EQ(pool.find("slow.vol"), nullptr);
  EXPECT_TRUE(waitFor([&] { return !stop->isVisible(); }));
}

TEST_F(QxMainWindowTest, RemembersWhichDocksAreClosedAndBringsThemBack)
{
  auto* console = find<QDockWidget>("consoleDock");
  EXPECT_TRUE(console->isVisible());
  console->close();
  EXPECT_TRUE(window->close());
  reopen();
  console = find<QDockWidget>("consoleDock");
  EXPECT_FALSE(console->isVisible());
  EXPECT_TRUE(find("poolDock")->isVisible());
  QMenu* explorer = window->menuBar()->actions()[3]->menu();
  explorer->actions()[2]->trigger();
  EXPECT_TRUE(console->isVisible());
  find<QDockWidget>("portsDock")->setFloating(true);
  find<QAction>("resetLayout")->trigger();
  EXPECT_FALSE(find<QDockWidget>("portsDock")->isFloating());
}

TEST_F(QxMainWindowTest, LeavesKeysAndHelpToTheCurrentPage)
{
  QStringList titles;
  for (const QAction* menu : window->menuBar()->actions()) titles << menu->text();
  EXPECT_EQ(titles, (QStringList{"&File", "&Edit", "&Pool", "Ex&plorer", "&Create", "&Window", "&Help"}));
  const auto* save = find<QAction>("save");
  EXPECT_EQ(save->shortcut(), QKeySequence("Ctrl+S"));
  auto* page = new QWidget;
  auto* helper = new Helper(page);
  window->getCentralLayout()->addWidget(page);
  window->getCentralLayout()->setCurrentWidget(page);
  EXPECT_TRUE(save->shortcut().isEmpty());
  find<QAction>("helpContents")->trigger();
  EXPECT_EQ(helper->shown, 1);
  delete page;
  EXPECT_EQ(save->shortcut(), QKeySequence("Ctrl+S"));
}

TEST_F(QxMainWindowTest, KeepsPlaceholdersReadableInDarkThemes)
{
  const QPalette theme = QApplication::palette();
  QPalette dark;
  dark.setColor(QPalette::Base, QColor(35, 38, 41));
  dark.setColor(QPalette::Text, QColor(239, 240, 241));
  for (const QColor& given : {QColor(0, 0, 0, 128), QColor(150, 160, 170)}) {
    dark.setColor(QPalette::PlaceholderText, given);
    QApplication::setPalette(dark);
    reopen();
    const QColor shown = window->palette().color(QPalette::PlaceholderText);
    EXPECT_EQ(shown, given.red() > 0 ? given : QColor(239, 240, 241, 128)) << "a theme's own choice stays";
  }
  QApplication::setPalette(theme);
}

TEST_F(QxMainWindowTest, SaysInItsTitleWhatIsEdited)
{
  const QString alone = window->windowTitle();
  const auto probe = showProbe();
  probe->setLabel("Probe 2");
  auto* page = new Page(probe.get());
  window->getCentralLayout()->addWidget(page);
  window->getCentralLayout()->setCurrentWidget(page);
  EXPECT_EQ(window->windowTitle(), "Probe 2 – " + alone);
  const auto stack = addVolume("stack");
  probe->change([&] { probe->portData.connect(stack.get()); });
  settle();
  EXPECT_EQ(window->windowTitle(), "Probe 2: stack – " + alone);
  delete page;
  EXPECT_EQ(window->windowTitle(), alone);
}

TEST_F(QxMainWindowTest, ReachesEveryPaneByKey)
{
  const auto stack = addVolume("stack");
  const auto probe = showProbe();
  probe->change([&] { probe->portData.connect(stack.get()); });
  window->select(probe.get());
  settle();
  find("commandLine")->setFocus();
  for (const char* pane : {"poolDock", "portsDock", "volumePage", "consoleDock"}) {
    QTest::keyClick(window.get(), Qt::Key_F6);
    EXPECT_TRUE(find(pane)->isAncestorOf(QApplication::focusWidget())) << pane;
  }
}

TEST_F(QxMainWindowTest, ShowsAndHidesItsViewers)
{
  ZxController* controller = ZxController::getTheController();
  addVolume("stack");
  window->select(pool.find("stack"));
  ZxViewer* main = controller->viewer(0);
  ASSERT_NE(main, nullptr);
  EXPECT_TRUE(main->isShown());
  main->hide();
  EXPECT_FALSE(find("viewer")->isVisible());
  main->show(1);
  EXPECT_TRUE(find("viewer")->isVisible());
  EXPECT_EQ(controller->viewer(4), nullptr);
  find<QAction>("extraViewerAction")->trigger();
  ASSERT_NE(controller->viewer(4), nullptr);
  EXPECT_TRUE(controller->viewer(4)->isShown());
  controller->viewer(4)->hide();
  EXPECT_FALSE(find<QAction>("extraViewerAction")->isChecked());
}

#include "QxMainWindowTest.moc"
