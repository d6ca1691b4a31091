#include "Desktop.h"
#include "zx/ZxWorkArea.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

namespace {

struct KeysThatCome : QObject {
  bool eventFilter(QObject*, QEvent* event) override
  {
    if (event->type() == QEvent::KeyPress) pressed << static_cast<QKeyEvent*>(event)->key();
    return false;
  }
  QList<int> pressed;
};

class QxWorkAreaTest : public Desktop {
protected:
  ZxWorkArea& area = *ZxWorkArea::getTheWorkArea();
};

} // namespace

TEST_F(QxWorkAreaTest, ShowsWorkAndStopsItByItsButtonOrEscape)
{
  auto* stop = find<QPushButton>("stopButton");
  EXPECT_FALSE(stop->isVisible());
  for (const bool byKey : {false, true}) {
    area.startWorking("Aligning");
    area.setProgressFraction(0.25F);
    EXPECT_TRUE(stop->isVisible());
    EXPECT_EQ(find<QProgressBar>("progressBar")->value(), 250);
    EXPECT_EQ(find<QLabel>("progressText")->text(), "Aligning");
    EXPECT_NE(QApplication::overrideCursor(), nullptr);
    EXPECT_FALSE(area.wasInterrupted(1));
    if (byKey)
      QTest::keyClick(window.get(), Qt::Key_Escape);
    else
      QTest::mouseClick(stop, Qt::LeftButton);
    EXPECT_TRUE(area.wasInterrupted(1));
    area.stopWorking();
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    EXPECT_FALSE(area.wasInterrupted());
  }
}

TEST_F(QxWorkAreaTest, BringsBackWhatWasSaidBeforeTheWork)
{
  const auto* text = find<QLabel>("progressText");
  area.setProgressText("quality = %d", 7);
  area.startWorking("Updating");
  EXPECT_EQ(text->text(), "Updating");
  area.stopWorking();
  EXPECT_EQ(text->text(), "quality = 7");
}

TEST_F(QxWorkAreaTest, LetsNoOtherInputThroughWhileItIsBusy)
{
  const auto probe = showProbe();
  auto* button = find<QPushButton>("buttons.0");
  area.setBusy(true);
  area.setBusy(true);
  area.setBusy(false);
  QTest::mouseClick(button, Qt::LeftButton);
  KeysThatCome keys;
  button->installEventFilter(&keys);
  for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Control, Qt::Key_A, Qt::Key_Shift})
    QTest::keyClick(button, key);
  EXPECT_EQ(keys.pressed, (QList<int>{Qt::Key_Control, Qt::Key_Shift})) << "who holds them knows of it";
  EXPECT_TRUE(probe->passes.empty());
  area.setBusy(false);
  QTest::mouseClick(button, Qt::LeftButton);
  EXPECT_EQ(probe->passes.size(), 1U);
}
