// Whole sessions in the real window, as somebody has them who sees it for the first time: everything is done
// with mouse and keys, which go to the window as those of a display do and find the controls at their places.
#include "Session.h"
#include "io/Volume.h"
#include "qx/QxMainWindow.h"
#include "support/Volumes.h"
#include "support/Waiting.h"
#include "zx/ZxInterpreter.h"
#include "zx/ZxObjectPool.h"

#include <gtest/gtest.h>

#include <QAbstractScrollArea>
#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QTreeWidget>
#include <QWindow>

namespace {

class DesktopSessionTest : public testing::Test {
protected:
  void SetUp() override
  {
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QSettings("zxalign", "orvel").clear();
    qputenv("XDG_STATE_HOME", folder.path().toLocal8Bit());
    io::writeVolume(*movedSquares(), file("stack.nrrd").toStdString());
    session = std::make_unique<orvel::Session>();
    ASSERT_TRUE(session->problems().empty()) << session->problems().front();
    window().resize(1280, 720);
    window().show();
    window().activateWindow();
    ASSERT_TRUE(waitForActive(&window()));
  }

  /// A bright square with a dark corner on grey; on slice 3 and beyond it lies 5 to the right and 3 lower.
  static McHandle<ZxField3> movedSquares()
  {
    return makeField<std::uint8_t>({80, 60, 6}, 1, [](int x, int y, int k, int) {
      const int u = x - (k >= 3 ? 5 : 0) - 25, v = y - (k >= 3 ? 3 : 0) - 20;
      if (u < 0 || v < 0 || u >= 24 || v >= 18) return 60 + (7 * u + 3 * v + 500) % 9;
      return u < 8 && v < 6 ? 20 : 200 + (5 * u + 11 * v) % 13;
    });
  }

  QxMainWindow& window() { return session->window(); }
  QString file(const char* name) const { return folder.filePath(name); }
  /// A visible control of the main window.
  template <class T = QWidget>
  T* see(const char* name)
  {
    T* found = window().findChild<T*>(name);
    EXPECT_TRUE(found && found->isVisible()) << name;
    return found;
  }

  // Hands. A place is one of the widget; what lies there on the screen gets the event.

  static QPoint inWindow(const QWidget* widget, const QPoint& place)
  {
    return widget->mapTo(widget->window(), place);
  }
  static void click(QWidget* widget, const QPoint& place, Qt::MouseButton button = Qt::LeftButton)
  {
    QTest::mouseClick(widget->window()->windowHandle(), button, {}, inWindow(widget, place));
  }
  static void click(QWidget* widget) { click(widget, widget->rect().center()); }
  /// Where keys go. Without a window manager nobody else activates the window that is on top.
  static QWindow* keyboardTarget()
  {
    QWidget* dialog = QApplication::activeModalWidget();
    QWidget* target = dialog ? dialog : QxMainWindow::getTheMainWindow();
    QApplication::setActiveWindow(target);
    return target->windowHandle();
  }
  static void type(const QString& text)
  {
    for (const QChar c : text) QTest::keyClick(keyboardTarget(), c.toLatin1());
  }
  static void key(Qt::Key k, Qt::KeyboardModifiers modifiers = {})
  {
    QTest::keyClick(keyboardTarget(), k, modifiers);
  }
  static void drag(QWidget* widget, const QPoint& from, const QPoint& to)
  {
    QWindow* target = widget->window()->windowHandle();
    QTest::mousePress(target, Qt::LeftButton, {}, inWindow(widget, from));
    for (int i = 1; i <= 4; ++i) QTest::mouseMove(target, inWindow(widget, from + (to - from) * i / 4));
    QTest::mouseRelease(target, Qt::LeftButton, {}, inWindow(widget, to));
  }
  /// Clicks an entry of an open menu, found by its text.
  static void choose(QMenu* menu, const QString& text)
  {
    ASSERT_TRUE(menu);
    ASSERT_TRUE(waitFor([menu] { return menu->isVisible(); })) << text.toStdString();
    for (QAction* action : menu->actions())
      if (action->text().remove('&') == text) return click(menu, menu->actionGeometry(action).center());
    ADD_FAILURE() << text.toStdString();
  }
  void chooseFromBar(const QString& menu, const QString& entry)
  {
    for (QAction* top : window().menuBar()->actions()) {
      if (top->text().remove('&') != menu) continue;
      click(window().menuBar(), window().menuBar()->actionGeometry(top).center());
      return choose(top->menu(), entry);
    }
    ADD_FAILURE() << menu.toStdString();
  }
  /// Does something that opens a dialog or menu and returns when it is closed, which `then` sees to.
  template <class T, class Then>
  static void whileOpen(const std::function<void()>& open, const Then& then)
  {
    bool isSeen = false;
    QTimer poll;
    poll.callOnTimeout([&] {
      QWidget* popup = QApplication::activePopupWidget();
      auto* opened = qobject_cast<T*>(popup ? popup : QApplication::activeModalWidget());
      if (isSeen || !opened || !opened->isVisible()) return;
      isSeen = true;
      then(opened);
    });
    poll.start(5);
    open();
    EXPECT_TRUE(waitFor([&] { return isSeen && !QApplication::activeModalWidget(); }));
  }
  /// Types a name into the file dialog that something opens.
  static void giveFileName(const std::function<void()>& open, const QString& name)
  {
    whileOpen<QDialog>(open, [&](QDialog* dialog) {
      auto* field = dialog->findChild<QLineEdit*>("fileNameEdit");
      ASSERT_TRUE(field);
      ASSERT_TRUE(waitForExposed(dialog));
      click(field);
      key(Qt::Key_A, Qt::ControlModifier);
      type(name);
      key(Qt::Key_Return);
    });
  }

  // Steps of a session.

  /// The entry of an object; a star behind its name says that it is not saved.
  QTreeWidgetItem* listed(const QString& name)
  {
    for (QTreeWidgetItemIterator it(see<QTreeWidget>("poolList")); *it; ++it)
      if ((*it)->text(0) == name || (*it)->text(0) == name + " *") return *it;
    return nullptr;
  }
  void clickInPool(const QString& name, Qt::MouseButton button = Qt::LeftButton)
  {
    ASSERT_TRUE(waitFor([&] { return listed(name); })) << name.toStdString();
    auto* pool = see<QTreeWidget>("poolList");
    click(pool->viewport(), pool->visualItemRect(listed(name)).center(), button);
  }
  void open(const char* name)
  {
    giveFileName([&] { chooseFromBar("File", "Open..."); }, file(name));
    ASSERT_TRUE(waitFor([&] { return listed(name); }));
  }
  void attachByContextMenu(const char* name)
  {
    whileOpen<QMenu>([&] { clickInPool(name, Qt::RightButton); },
                     [this](QMenu* menu) {
                       choose(menu, "Attach");
                       choose(menu->findChild<QMenu*>(), "ZxAlignSlices");
                     });
    ASSERT_TRUE(waitFor([&] { return listed("ZxAlignSlices"); }));
  }
  void saveAs(const char* object, const char* name)
  {
    clickInPool(object);
    giveFileName([] { key(Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier); }, file(name));
    ASSERT_TRUE(waitFor([&] { return QFileInfo::exists(file(name)); }))
        << QDir(folder.path()).entryList().join(' ').toStdString();
  }
  std::string ask(const std::string& script)
  {
    const ZxScriptResult result = ZxInterpreter::getTheInterpreter().eval(script);
    EXPECT_TRUE(result.succeeded()) << result.text;
    return result.text;
  }

  /// Translation and rotation of a slice, as the module's command tells them.
  QList<double> transformOf(int slice)
  {
    QList<double> numbers;
    for (const QString& word :
         QString::fromStdString(ask("ZxAlignSlices getTransform " + std::to_string(slice))).split(' '))
      numbers << word.toDouble();
    return numbers;
  }

  QTemporaryDir folder;
  std::unique_ptr<orvel::Session> session;
};

} // namespace

TEST_F(DesktopSessionTest, OpensAttachesResamplesSavesAndFindsTheParameters)
{
  open("stack.nrrd");
  attachByContextMenu("stack.nrrd");
  click(see("linearRange.1"));
  key(Qt::Key_A, Qt::ControlModifier);
  type("180");
  key(Qt::Key_Return);
  EXPECT_EQ(ask("ZxAlignSlices linearRange getValue 1"), "180.0");
  click(see("action.1")); // Resample
  ASSERT_TRUE(waitFor([&] { return listed("stack.align"); }));
  saveAs("stack.align", "aligned.nrrd");
  open("aligned.nrrd");
  EXPECT_EQ(ask("aligned.nrrd parameters get AlignIsApplied"), "1");
  EXPECT_EQ(ask("ZxAlignSlices linearRange getValue 1"), "180.0");
}

TEST_F(DesktopSessionTest, EditsAlignsClosesWithTheQuestionSavesAndFindsTheAlignment)
{
  open("stack.nrrd");
  clickInPool("stack.nrrd");
  chooseFromBar("Create", "ZxAlignSlices");
  ASSERT_TRUE(waitFor([&] { return listed("ZxAlignSlices"); }));
  click(see("action.0")); // Edit
  auto* view = see<QAbstractScrollArea>("drawArea");
  const QPoint middle = view->viewport()->rect().center();
  drag(view->viewport(), middle, middle - QPoint(3, 1));
  EXPECT_EQ(transformOf(3), (QList<double>{-3, -1, 0, 0}));
  click(see("alignOne"));
  const QList<double> found = transformOf(3);
  EXPECT_NEAR(found[0], -5, 0.5);
  EXPECT_NEAR(found[1], -3, 0.5);

  whileOpen<QMessageBox>([&] { click(see("action.0")); }, // Close
                         [](QMessageBox* question) {
                           EXPECT_EQ(question->objectName(), "alignSavePrompt");
                           for (QAbstractButton* button : question->buttons())
                             if (button->text() == "&Save") click(button);
                         });
  EXPECT_EQ(ask("ZxAlignSlices isEditorOpen"), "0");
  saveAs("stack.nrrd", "edited.nrrd");
  ask("remove ZxAlignSlices stack.nrrd");
  open("edited.nrrd");
  attachByContextMenu("edited.nrrd");
  EXPECT_EQ(transformOf(3), found);
}

TEST_F(DesktopSessionTest, AllPanelsOfALargeStackFitIntoASmallWindow)
{
  const auto large =
      makeField<std::uint8_t>({1500, 1100, 40}, 1, [](int x, int y, int, int) { return (x ^ y) & 255; });
  ZxObjectPool::getThePool().add(large.get());
  clickInPool("stack.tif");
  chooseFromBar("Create", "ZxAlignSlices");
  ASSERT_TRUE(waitFor([&] { return listed("ZxAlignSlices"); }));
  click(see("action.0")); // Edit
  chooseFromBar("View", "Coronal view");
  chooseFromBar("View", "Sagittal view");
  ask("ZxAlignSlices showTransformToolBar 1");
  auto* quality = window().findChild<QWidget*>("pairQualityDock");
  ASSERT_TRUE(quality);
  quality->show();
  ASSERT_TRUE(waitFor([&] { return quality->isVisible() && see("sagittalView")->height() > 0; }));
  EXPECT_EQ(window().width(), 1280);
  EXPECT_EQ(window().height(), 720);
  const QRect page = see("QxAlignSlices")->rect();
  for (const char* panel : {"coronalView", "sagittalView", "pairQualityDock", "transformToolBar"})
    EXPECT_TRUE(waitFor([&] { return page.contains(see(panel)->geometry()); })) << panel;
  EXPECT_GE(see("drawArea")->width(), page.width() / 3);
}
