#include "Desktop.h"
#include "qx/QxCentralPage.h"
#include "support/TestFolders.h"
#include "zx/ZxWorkArea.h"

#include <QMessageBox>
#include <QPushButton>
#include <QStackedLayout>
#include <QTimer>

namespace {

class QxCloseGuardTest : public Desktop {
protected:
  /// Closes the window and answers what is asked by the button of that text. Returns the questions.
  QStringList closeAnswering(const QString& button)
  {
    QStringList asked;
    QTimer answers;
    QObject::connect(&answers, &QTimer::timeout, [&] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      if (!box) return;
      asked << box->objectName() + ": " + box->informativeText();
      for (QAbstractButton* b : box->buttons())
        if (b->text().remove('&') == button) return QTest::mouseClick(b, Qt::LeftButton);
      ADD_FAILURE() << "no button " << button.toStdString();
      box->reject();
    });
    answers.start(5);
    window->close();
    return asked;
  }
  bool isClosed() const { return !window->isVisible(); }
  McHandle<ZxField3> addUnsaved(const char* label, const char* file)
  {
    auto field = addVolume(label);
    field->setFileName(file);
    field->touch();
    return field;
  }
};

class Page : public QWidget, public QxCentralPage {
public:
  bool canClose() override
  {
    ++asked;
    return answer;
  }
  void closePage() override { ++closed; }
  const ZxObject* editedObject() const override { return edited; }
  bool answer = false;
  int asked = 0;
  int closed = 0;
  const ZxObject* edited = nullptr;
};

} // namespace

TEST_F(QxCloseGuardTest, AsksAboutUnsavedData)
{
  addVolume("unchanged")->setSaved();
  addUnsaved("changed", "/x/changed.vol");
  EXPECT_EQ(closeAnswering("Cancel"), QStringList{"unsavedPrompt: changed"});
  EXPECT_FALSE(isClosed());
  EXPECT_EQ(closeAnswering("Don't Save").size(), 1);
  EXPECT_TRUE(isClosed());
  EXPECT_EQ(FakeFiles::writes, 0);
}

TEST_F(QxCloseGuardTest, ClosesWhenSavedAndStaysOpenWhenThatFails)
{
  const QString file = QString::fromStdString(fileInTestHome("kept.vol"));
  QFile(file).open(QIODevice::WriteOnly);
  const auto field = addUnsaved("kept", file.toUtf8().constData());
  FakeFiles::isDiskFull = true;
  closeAnswering("Save");
  ASSERT_TRUE(waitFor([&] { return find("messageBar")->isVisible(); }));
  QTest::qWait(200); // Longer than it would take to close.
  EXPECT_FALSE(isClosed());
  EXPECT_TRUE(field->isUnsaved());
  FakeFiles::isDiskFull = false;
  closeAnswering("Save");
  EXPECT_TRUE(waitFor([&] { return isClosed(); }));
  EXPECT_FALSE(field->isUnsaved());
  EXPECT_EQ(FakeFiles::writes, 2);
}

TEST_F(QxCloseGuardTest, WaitsForWorkThatItStops)
{
  const auto probe = addProbe();
  probe->work = [&] {
    const ZxWorkingPhase phase("Working");
    EXPECT_EQ(closeAnswering("Cancel"), QStringList{"workPrompt: "});
    EXPECT_FALSE(ZxWorkArea::getTheWorkArea()->wasInterrupted(1));
    closeAnswering("Stop and Close");
    EXPECT_TRUE(ZxWorkArea::getTheWorkArea()->wasInterrupted(1));
    EXPECT_FALSE(isClosed());
  };
  probe->fire();
  EXPECT_TRUE(waitFor([&] { return isClosed(); }));
}

TEST_F(QxCloseGuardTest, AsksEditorsAlsoBeforeTheirObjectsGo)
{
  auto* page = new Page;
  window->getCentralLayout()->addWidget(page);
  const auto stack = addVolume("stack"), other = addVolume("other");
  const auto probe = addProbe();
  probe->portData.connect(stack.get());
  page->edited = probe.get();
  for (ZxObject* object : {static_cast<ZxObject*>(stack.get()), static_cast<ZxObject*>(other.get())}) {
    window->select(object);
    find<QAction>("removeObject")->trigger();
  }
  EXPECT_TRUE(pool.contains(stack.get()));
  EXPECT_FALSE(pool.contains(other.get()));
  page->answer = true;
  find<QTreeWidget>("poolList")->selectAll(); // the stack and the module
  page->asked = 0;
  find<QAction>("removeObject")->trigger();
  EXPECT_FALSE(pool.contains(stack.get()));
  EXPECT_EQ(page->asked, 1);
  EXPECT_EQ(page->closed, 1);
}

// Who cancels the last question finds everything as it was before the first.
TEST_F(QxCloseGuardTest, ClosesEditorsWhenEverythingIsAnswered)
{
  Page* pages[] = {new Page, new Page};
  for (Page* page : pages) window->getCentralLayout()->addWidget(page);
  const auto closed = [&] { return std::pair(pages[0]->closed, pages[1]->closed); };
  const auto stack = addUnsaved("stack", "/x/stack.vol");
  pages[0]->answer = pages[1]->answer = true;
  pages[0]->edited = stack.get();
  EXPECT_EQ(closeAnswering("Cancel"), QStringList{"unsavedPrompt: stack"});
  EXPECT_EQ(closed(), std::pair(0, 0));
  pages[0]->answer = false; // the one that is asked last
  EXPECT_TRUE(closeAnswering("Cancel").isEmpty());
  EXPECT_EQ(closed(), std::pair(0, 0));
  EXPECT_EQ(pages[1]->asked, 2);
  pages[0]->answer = true;
  closeAnswering("Don't Save");
  EXPECT_TRUE(isClosed());
  EXPECT_EQ(closed(), std::pair(1, 1));
}
