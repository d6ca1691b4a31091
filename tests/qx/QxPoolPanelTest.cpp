#include "Desktop.h"

#include <QLineEdit>

namespace {

class QxPoolPanelTest : public Desktop {};

} // namespace

TEST_F(QxPoolPanelTest, ShowsModulesBelowTheirInputAndResultsBelowTheirModule)
{
  const auto stack = addVolume("stack"), other = addVolume("other");
  window->select(stack.get());
  QAction* attach = menuEntry("&Create", "attach:Probe");
  ASSERT_NE(attach, nullptr);
  attach->trigger();
  auto* probe = dynamic_cast<Probe*>(pool.find("Probe"));
  ASSERT_NE(probe, nullptr);
  EXPECT_EQ(probe->passes, std::vector<std::string>{"data "});
  probe->setResult(0, addVolume("result").get());
  settle();
  EXPECT_EQ(listed(), (QStringList{"stack", "stack/Probe", "Probe/result", "other"}));
  // A module that lets go of its input by itself.
  probe->change([&] { probe->portData.connect(other.get()); });
  settle();
  EXPECT_EQ(listed(), (QStringList{"stack", "other", "other/Probe", "Probe/result"}));
  probe->change([&] { probe->portData.connect(probe->getResult(0)); }); // a ring
  settle();
  EXPECT_EQ(listed(), (QStringList{"stack", "other", "result", "result/Probe"}));
}

TEST_F(QxPoolPanelTest, RenamesAndRemovesByKeys)
{
  const auto first = addVolume("first"), second = addVolume("second");
  window->select(second.get());
  auto* list = find<QTreeWidget>("poolList");
  list->setFocus();
  QTest::keyClick(list, Qt::Key_F2);
  auto* editor = list->findChild<QLineEdit*>();
  ASSERT_NE(editor, nullptr);
  EXPECT_EQ(editor->text(), "second");
  editor->selectAll();
  QTest::keyClicks(editor, "fir");
  first->touch(); // a change meanwhile
  settle();
  QTest::keyClicks(editor, "st");
  QTest::keyClick(editor, Qt::Key_Return);
  settle();
  EXPECT_EQ(second->getLabel(), "first (2)");
  second->touch();
  settle();
  EXPECT_EQ(listed(), (QStringList{"first *", "first (2) *"}));
  second->setSaved();
  QTest::keyClick(list, Qt::Key_Delete);
  settle();
  EXPECT_EQ(listed(), QStringList{"first *"});
}

// What works in the pool is not taken away under its feet.
TEST_F(QxPoolPanelTest, RefusesToRemoveWhileAModuleWorks)
{
  const auto stack = addVolume("stack");
  const auto probe = addProbe();
  window->select(stack.get());
  probe->work = [&] { find<QAction>("removeObject")->trigger(); };
  probe->fire();
  EXPECT_TRUE(pool.contains(stack.get()));
  find<QAction>("removeObject")->trigger();
  EXPECT_FALSE(pool.contains(stack.get()));
}
