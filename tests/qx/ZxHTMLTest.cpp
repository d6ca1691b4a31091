#include "qx/ZxHTML.h"

#include "support/Console.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBrowser>

namespace {

class HelpTest : public testing::Test {
protected:
  QString write(const char* name, const QByteArray& body)
  {
    const QString path = folder.filePath(name);
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write("<html><head><title>" + QByteArray(name) + "</title></head><body>" + body + "</body></html>");
    return path;
  }
  template <class T>
  T* child(const char* name)
  {
    return browser->findChild<T*>(name);
  }
  QTemporaryDir folder;
  ZxHTML* browser = ZxHTML::getTheBrowser();
};

} // namespace

TEST_F(HelpTest, TheHomePageIsInTheHelpFolderOfTheInstallation)
{
  browser->home();
  EXPECT_TRUE(browser->page().endsWith("/help/index.html")) << qPrintable(browser->page());
  EXPECT_TRUE(browser->windowTitle().startsWith("Orvel – ")) << qPrintable(browser->windowTitle());
}

TEST_F(HelpTest, LinksAreFollowedAndBackReturns)
{
  const QString first = write("first.html", "<a href='second.html#below'>on</a>");
  const QString second = write("second.html", "text<a name='below'></a>");
  ASSERT_TRUE(browser->load(first));
  Q_EMIT browser->browser()->anchorClicked(QUrl("second.html#below"));
  EXPECT_EQ(browser->page(), second);
  EXPECT_EQ(browser->browser()->source().fragment(), "below");
  child<QAction>("back")->trigger();
  EXPECT_EQ(browser->page(), first);
  child<QAction>("forward")->trigger();
  EXPECT_EQ(browser->page(), second);
}

TEST_F(HelpTest, APageThatCannotBeReadIsSaidAndChangesNothing)
{
  const QString page = write("page.html", "text");
  ASSERT_TRUE(browser->load(page));
  Console console;
  EXPECT_FALSE(browser->load(folder.filePath("missing.html")));
  EXPECT_FALSE(browser->load(folder.path()));
  EXPECT_EQ(browser->page(), page);
  const Lines lines = console.take();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_NE(lines[0].find("missing.html"), std::string::npos);
}

TEST_F(HelpTest, FindGoesRoundThePlacesOfAPage)
{
  ASSERT_TRUE(browser->load(write("page.html", "<p>A slice.</p><p>Two Slices</p><p>unsliced</p>")));
  browser->show();
  child<QAction>("findInPage")->trigger();
  auto* result = child<QLabel>("findResult");
  QTest::keyClicks(child<QLineEdit>("find"), "slice");
  EXPECT_EQ(result->text(), "1 of 3");
  for (const char* expected : {"2 of 3", "3 of 3", "1 of 3"}) {
    QTest::keyClick(child<QLineEdit>("find"), Qt::Key_Return);
    EXPECT_EQ(result->text(), expected);
  }
  QTest::mouseClick(child<QWidget>("findPrevious"), Qt::LeftButton);
  EXPECT_EQ(result->text(), "3 of 3");
  QTest::keyClicks(child<QLineEdit>("find"), "x");
  EXPECT_EQ(result->text(), "Not found");
  browser->hide();
}

TEST_F(HelpTest, AllPagesAreSearchedAndAResultOpensItsPlace)
{
  write("b.html", "<p>nothing</p>");
  const QString wanted = write("c.html", "<p>one landmark</p><p>another Landmark</p>");
  ASSERT_TRUE(browser->load(write("a.html", "<p>start</p>")));
  child<QLineEdit>("searchAll")->setText("landmark");
  auto* results = child<QListWidget>("searchResults");
  ASSERT_EQ(results->count(), 3); // The page's title and two places.
  Q_EMIT results->itemActivated(results->item(2));
  EXPECT_EQ(browser->page(), wanted);
  EXPECT_EQ(browser->browser()->textCursor().selectedText(), "Landmark");
  child<QLineEdit>("searchAll")->setText("nowhere");
  EXPECT_EQ(results->item(0)->text(), "Not found");
}
