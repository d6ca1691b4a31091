#include "Desktop.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {

class QxPortPanelTest : public Desktop {
protected:
  QStringList entriesOf(const char* combo) const
  {
    QStringList entries;
    for (int i = 0; i < find<QComboBox>(combo)->count(); ++i) entries << find<QComboBox>(combo)->itemText(i);
    return entries;
  }
  /// Chooses an entry by keys.
  void choose(const char* combo, int index) const
  {
    auto* box = find<QComboBox>(combo);
    box->setFocus();
    QTest::keyClick(box, Qt::Key_Home);
    for (int i = 0; i < index; ++i) QTest::keyClick(box, Qt::Key_Down);
  }
  static void type(QLineEdit* field, const char* text)
  {
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, text);
  }
};

using Passes = std::vector<std::string>;

} // namespace

TEST_F(QxPortPanelTest, RunsOnePassForAnEditedNumberAndNoneForNonsense)
{
  const auto probe = showProbe();
  auto* field = find<QLineEdit>("numbers.1");
  type(field, "-2.5");
  EXPECT_EQ(probe->passes, Passes());
  QTest::keyClick(field, Qt::Key_Return);
  find<QLineEdit>("numbers.0")->setFocus(); // ends the edit once more
  EXPECT_EQ(probe->passes, Passes{"numbers "});
  EXPECT_EQ(probe->numbers.getValue(1), -2.5F);
  for (const char* text : {"1e99", "2,5", "nan", "", "-2.50"}) {
    type(field, text);
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(field->text(), "-2.5") << text;
  }
  EXPECT_EQ(probe->passes.size(), 1U);
}

TEST_F(QxPortPanelTest, OffersOnlyWhatAConnectionAccepts)
{
  const auto stack = addVolume("stack");
  const auto labels = makeLabels<std::uint8_t>({7, 5, 3}, [](auto...) { return 1; });
  labels->setLabel("cells");
  pool.add(labels.get());
  const auto probe = showProbe();
  EXPECT_EQ(entriesOf("data.0"), (QStringList{"none", "stack", "cells"}));
  EXPECT_EQ(entriesOf("LabelField.0"), (QStringList{"none", "cells"}));
  choose("data.0", 1);
  EXPECT_EQ(probe->portData.getSource(), stack.get());
  EXPECT_EQ(probe->passes, Passes{"data "});
  stack->setLabel("volume");
  pool.remove(labels.get());
  settle();
  EXPECT_EQ(entriesOf("data.0"), (QStringList{"none", "volume"}));
  EXPECT_EQ(find<QComboBox>("data.0")->currentText(), "volume");
  EXPECT_EQ(entriesOf("LabelField.0"), QStringList{"none"});
}

TEST_F(QxPortPanelTest, FollowsWhatTheModuleDoesToItsPorts)
{
  const auto stack = addVolume("stack");
  const auto probe = showProbe();
  probe->work = [&] {
    probe->portData.disconnect();
    probe->numbers.setVisible(false);
    probe->menu.setSensitive(false);
    probe->buttons.setButtonLabel(0, "Close");
    probe->buttons.setButtonSensitive(1, false);
    settle(); // seen while the pass still runs
    EXPECT_EQ(find<QComboBox>("data.0")->currentText(), "none");
  };
  choose("data.0", 1);
  settle();
  EXPECT_FALSE(find("numbers")->isVisible());
  EXPECT_FALSE(find("menu.0")->isEnabled());
  EXPECT_EQ(find<QPushButton>("buttons.0")->text(), "Close");
  EXPECT_FALSE(find("buttons.1")->isEnabled());
}

// A pass that handles events lets the user type and press; each change gets a pass of its own afterwards.
TEST_F(QxPortPanelTest, LosesNoChangeThatTheUserMakesDuringAPass)
{
  const auto probe = showProbe();
  auto* field = find<QLineEdit>("numbers.0");
  auto* button = find<QPushButton>("buttons.1");
  std::vector<int> hits;
  probe->work = [&] {
    hits.push_back(probe->buttons.getHit());
    if (probe->passes.size() > 1) return;
    type(field, "9");
    QTest::keyClick(field, Qt::Key_Return);
    QTest::mouseClick(button, Qt::LeftButton);
    settle();
    EXPECT_EQ(probe->numbers.getValue(0), 1.0F);
  };
  QTest::mouseClick(find<QPushButton>("buttons.0"), Qt::LeftButton);
  settle();
  EXPECT_EQ(probe->passes, (Passes{"buttons ", "numbers ", "buttons "}));
  EXPECT_EQ(hits, (std::vector<int>{0, -1, 1}));
  EXPECT_EQ(field->text(), "9");
}

TEST_F(QxPortPanelTest, LetsGoOfAModuleThatLeavesThePool)
{
  auto probe = showProbe();
  pool.remove(probe.get());
  probe = {};
  EXPECT_EQ(find<QLabel>("objectTitle")->text(), "Nothing is selected.");
}
