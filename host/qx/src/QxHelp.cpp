#include "QxHelp.h"

#include "qx/ZxHTML.h"
#include "qx/ZxResource.h"
#include "zx/ZxModule.h"
#include "zx/ZxPackage.h"
#include "zx/ZxSkin.h"

#include <QAction>
#include <QApplication>
#include <QFileInfo>
#include <QMainWindow>
#include <QMenu>
#include <QMessageBox>
#include <QMetaMethod>
#include <QStackedLayout>

namespace {

constexpr const char* helpSlot = "menuUsersguide";

bool hasHelp(const QObject* object) { return object->metaObject()->indexOfMethod("menuUsersguide()") >= 0; }

/// The help page of a class among those of the loaded packages; empty when there is none.
QString pageOf(const McTypeInfo& type)
{
  for (const std::string& package : ZxPackage::loaded()) {
    const QString path = QString::fromStdString(
        ZxSkin::getGlobalInstance()->getPathToHelpFile(package, type.name() + ".html"));
    if (QFileInfo(path).isFile()) return path;
  }
  return {};
}

QString programName() { return QString::fromStdString(ZxSkin::getGlobalInstance()->getCaption("Main")); }

} // namespace

QxHelp::QxHelp(QStackedLayout* pages, QMainWindow* window) : QObject(window), m_pages(pages), m_window(window)
{
}

void QxHelp::fill(QMenu* menu)
{
  QAction* contents =
      menu->addAction(ZxResource::readIcon("Help.png"), tr("&Contents"), this, &QxHelp::showContents);
  contents->setObjectName("helpContents");
  contents->setShortcut(QKeySequence::HelpContents);
  menu->addSeparator();
  QAction* about = menu->addAction(tr("&About %1").arg(programName()), this, &QxHelp::showAbout);
  about->setObjectName("about");
  connect(menu, &QMenu::aboutToShow, this, [this, menu] { addModulePages(menu); });
}

void QxHelp::addModulePages(QMenu* menu)
{
  qDeleteAll(std::exchange(m_added, {}));
  QAction* const before = menu->actions().at(1); // the separator below the contents
  for (const McTypeInfo* type : McTypeInfo::all()) {
    const QString page =
        type->canCreate() && type->isDerivedFrom(ZxModule::getClassTypeId()) ? pageOf(*type) : QString();
    if (page.isEmpty()) continue;
    auto* action = new QAction(QString::fromStdString(type->name()), menu);
    connect(action, &QAction::triggered, this, [page] {
      ZxHTML::getTheBrowser()->load(page);
      ZxHTML::getTheBrowser()->show();
    });
    menu->insertAction(before, action);
    m_added << action;
  }
}

QObject* QxHelp::helperOfPage() const
{
  QWidget* page = m_pages->currentWidget();
  if (!page || m_pages->currentIndex() == 0) return nullptr;
  if (hasHelp(page)) return page;
  for (QObject* object : page->findChildren<QObject*>())
    if (hasHelp(object)) return object;
  return nullptr;
}

void QxHelp::showContents()
{
  if (QObject* helper = helperOfPage()) {
    QMetaObject::invokeMethod(helper, helpSlot);
    return;
  }
  ZxHTML::getTheBrowser()->home();
  ZxHTML::getTheBrowser()->show();
}

void QxHelp::showAbout()
{
  const QString name = programName();
  QMessageBox::about(m_window, tr("About %1").arg(name),
                     tr("<h3>%1 %2</h3><p>Shows image stacks and aligns their slices.</p>"
                        "<p>The zxalign authors. Free to use, change and pass on under the BSD 3-clause "
                        "licence.</p>")
                         .arg(name, QApplication::applicationVersion()));
}
