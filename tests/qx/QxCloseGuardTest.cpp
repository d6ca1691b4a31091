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
  bool canClose() override { return answer; }
  const ZxObject* editedObject() const override { return edited; }
  bool answer = false;
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
  window->close();
  EXPECT_FALSE(isClosed());
  page->answer = true;
  window->close();
  EXPECT_TRUE(isClosed());
}
