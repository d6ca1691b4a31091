// The manual names every control of the editor.
#include "AlignCommands.h"
#include "EditorTest.h"
#include "qx/ZxHTML.h"
#include "zx/ZxSkin.h"
#include "zxalign/QxAlignSlicesOptionsDialog.h"

#include <QAbstractButton>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QRegularExpression>
#include <QTextBrowser>
#include <QTextDocument>

namespace {

class HelpPageTest : public EditorTest {
protected:
  static QString read(const char* file)
  {
    QFile page(QString(ZX_SOURCE_DIR) + file);
    EXPECT_TRUE(page.open(QIODevice::ReadOnly)) << file;
    return QString::fromUtf8(page.readAll());
  }
  static QStringList matches(const QString& text, const char* pattern)
  {
    QStringList found;
    for (const QRegularExpressionMatch& m : QRegularExpression(pattern).globalMatch(text))
      found << m.captured(1);
    return found;
  }
  void expectNamed(const QString& label)
  {
    QString name = label;
    name.remove('&').remove(QRegularExpression(":$"));
    EXPECT_TRUE(text.contains(name, Qt::CaseInsensitive)) << name.toStdString(); // so does an empty one
  }
  const QString html = read("/zxalign/help/ZxAlignSlices.html");
  const QString text = [this] {
    QTextDocument document;
    document.setHtml(html);
    return document.toPlainText().simplified();
  }();
};

TEST_F(HelpPageTest, NamesEveryItemButtonAndControl)
{
  for (const char* name : {"viewMenu", "optionsMenu", "alignMenu", "landmarksMenu"})
    for (const QAction* item : host->findChild<QMenu*>(name)->actions()) expectNamed(item->text());
  for (const auto* button : editor->findChildren<QToolButton*>())
    if (button->objectName() != "qt_toolbar_ext_button") expectNamed(button->toolTip());
  const QxAlignSlicesOptionsDialog dialog;
  for (const auto* button : dialog.findChildren<QAbstractButton*>()) expectNamed(button->text());
  for (const auto* label : dialog.findChildren<QLabel*>())
    if (label->buddy()) expectNamed(label->text());
  for (const ZxAlignSetting& setting : module->settings()) expectNamed(setting.name);
  for (const AlignCommand& command : alignCommands())
    expectNamed(QString::fromStdString(std::string(command.name)));
}

TEST_F(HelpPageTest, LinksLeadSomewhereAndPicturesAreShipped)
{
  const QStringList anchors = matches(html, "id=\"([^\"]+)\"");
  for (const QString& link : matches(html, "href=\"#([^\"]+)\""))
    EXPECT_TRUE(anchors.contains(link)) << link.toStdString();
  const QString shipped = read("/zxalign/help/CMakeLists.txt");
  for (const QString& picture : matches(html, "src=\"pictures/([^\"]+)\""))
    EXPECT_TRUE(shipped.contains(picture)) << picture.toStdString();
}

TEST_F(HelpPageTest, OpensInTheHelpBrowser)
{
  const auto* browser = ZxHTML::getTheBrowser();
  for (const bool isThere : {true, false}) { // Without the manual the browser shows its first page.
    const std::string folder = std::string(ZX_SOURCE_DIR) + "/zxalign/" + (isThere ? "help" : "src");
    ZxSkin::getGlobalInstance()->setHelpFolder(folder);
    editor->menuSet()->menuUsersguide();
    EXPECT_TRUE(browser->isVisible());
    const auto* page = browser->findChild<QTextBrowser*>("browser");
    EXPECT_EQ(page->source().fileName() == "ZxAlignSlices.html", isThere)
        << page->source().toString().toStdString();
  }
  ZxSkin::getGlobalInstance()->setHelpFolder({});
}

} // namespace
