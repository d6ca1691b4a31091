#include "Desktop.h"

#include <QLineEdit>
#include <QPlainTextEdit>

namespace {

class QxConsoleTest : public Desktop {
protected:
  void enter(const QString& line) const
  {
    QTest::keyClicks(find("commandLine"), line);
    QTest::keyClick(find("commandLine"), Qt::Key_Return);
  }
  QString press(Qt::Key key) const
  {
    QTest::keyClick(find("commandLine"), key);
    return find<QLineEdit>("commandLine")->text();
  }
};

} // namespace

TEST_F(QxConsoleTest, EvaluatesLinesAndKeepsThemForLater)
{
  enter("set a [expr {6 * 7}]");
  enter("if {$a} {");
  enter("puts yes}");
  enter("nothing here");
  EXPECT_EQ(find<QPlainTextEdit>("messages")->toPlainText(),
            "% set a [expr {6 * 7}]\n42\n% if {$a} {\n> puts yes}\nyes\n% nothing here\n"
            "invalid command name \"nothing\"");
  QTest::keyClicks(find("commandLine"), "dra");
  EXPECT_EQ(press(Qt::Key_Up), "nothing here");
  EXPECT_EQ(press(Qt::Key_Up), "puts yes}");
  EXPECT_EQ(press(Qt::Key_Down), "nothing here");
  EXPECT_EQ(press(Qt::Key_Down), "dra");
}

TEST_F(QxConsoleTest, CompletesNamesAtTheCursor)
{
  addVolume("medulla");
  QTest::keyClicks(find("commandLine"), "puts [medu");
  EXPECT_EQ(press(Qt::Key_Tab), "puts [medulla ");
  QTest::keyClicks(find("commandLine"), "getT");
  EXPECT_EQ(press(Qt::Key_Tab), "puts [medulla getTypeId ");
  find<QLineEdit>("commandLine")->clear();
  find("commandLine")->setFocus();
  press(Qt::Key_Tab); // nothing to complete: on to the next widget
  EXPECT_FALSE(find("commandLine")->hasFocus());
}
