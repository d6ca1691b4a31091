#include "qx/ZxHTML.h"

#include "QxFindBar.h"
#include "QxHelpSearch.h"
#include "qx/ZxResource.h"
#include "zx/ZxMessage.h"
#include "zx/ZxSkin.h"

#include <QAction>
#include <QDesktopServices>
#include <QDockWidget>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QTextBrowser>
#include <QToolBar>
#include <QVBoxLayout>

#include <dlfcn.h>

namespace {

/// The help folder beside the library that this code is in.
QString ownHelpFolder()
{
  Dl_info library{};
  if (dladdr(reinterpret_cast<const void*>(&ownHelpFolder), &library) == 0) return {};
  return QFileInfo(QString::fromLocal8Bit(library.dli_fname)).absolutePath() + "/help";
}

QString homePage()
{
  const std::string known = ZxSkin::getGlobalInstance()->getPathToHelpFile("zxalign", "index.html");
  const QFileInfo page(QString::fromStdString(known));
  return page.isAbsolute() && page.exists() ? page.filePath() : ownHelpFolder() + "/index.html";
}

/// The usual blue of links cannot be read on a dark page, and not every theme brings another one.
QString linkStyle(const QPalette& palette)
{
  constexpr int darkest = 128;
  const bool isDark = qGray(palette.color(QPalette::Base).rgb()) < darkest;
  return isDark && qGray(palette.color(QPalette::Link).rgb()) < darkest ? "a { color: #7ab4ff }" : "";
}

} // namespace

ZxHTML* ZxHTML::getTheBrowser()
{
  static QPointer<ZxHTML> browser;
  if (!browser) browser = new ZxHTML;
  return browser;
}

ZxHTML::ZxHTML() : m_browser(new QTextBrowser(this))
{
  setObjectName("help");
  setAttribute(Qt::WA_QuitOnClose, false);
  m_browser->setObjectName("browser");
  m_browser->setOpenLinks(false);
  m_browser->document()->setDocumentMargin(16);
  m_browser->document()->setDefaultStyleSheet(linkStyle(m_browser->palette()));
  auto* centre = new QWidget(this);
  m_findBar = new QxFindBar(m_browser, centre);
  auto* column = new QVBoxLayout(centre);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(m_browser, 1);
  column->addWidget(m_findBar);
  setCentralWidget(centre);

  auto* dock = new QDockWidget(tr("Search"), this);
  dock->setObjectName("searchDock");
  m_search = new QxHelpSearch(dock);
  dock->setWidget(m_search);
  addDockWidget(Qt::LeftDockWidgetArea, dock);
  makeToolBar();
  resize(980, 720);
  showTitle();

  connect(m_browser, &QTextBrowser::anchorClicked, this, &ZxHTML::follow);
  connect(m_browser, &QTextBrowser::sourceChanged, this, &ZxHTML::showTitle);
  connect(m_search, &QxHelpSearch::chosen, this,
          [this](const QString& path, const QString& text, int number) {
            if (load(path)) m_findBar->search(text, number);
          });
}

void ZxHTML::makeToolBar()
{
  QToolBar* bar = addToolBar(tr("Help"));
  bar->setObjectName("helpBar");
  bar->setMovable(false);
  const auto add = [&](const char* name, const char* icon, const QString& text, const QKeySequence& keys,
                       auto slot) {
    QAction* action = bar->addAction(ZxResource::readIcon(icon), text, this, slot);
    action->setObjectName(name);
    action->setShortcut(keys);
    action->setToolTip(text + " (" + keys.toString(QKeySequence::NativeText) + ")");
    return action;
  };
  QAction* back = add("back", "Back.png", tr("Back"), QKeySequence::Back, [this] { m_browser->backward(); });
  QAction* forward =
      add("forward", "Forward.png", tr("Forward"), QKeySequence::Forward, [this] { m_browser->forward(); });
  add("home", "Home.png", tr("Home"), Qt::ALT | Qt::Key_Home, [this] { home(); });
  bar->addSeparator();
  add("zoomIn", "ZoomIn.png", tr("Larger text"), QKeySequence::ZoomIn, [this] { m_browser->zoomIn(); });
  add("zoomOut", "ZoomOut.png", tr("Smaller text"), QKeySequence::ZoomOut, [this] { m_browser->zoomOut(); });
  bar->addSeparator();
  add("findInPage", "Find.png", tr("Find in this page"), QKeySequence::Find, [this] { m_findBar->open(); });

  const auto addKey = [this](const QKeySequence& keys, auto slot) {
    auto* action = new QAction(this);
    action->setShortcut(keys);
    connect(action, &QAction::triggered, m_findBar, slot);
    addAction(action);
  };
  addKey(QKeySequence::FindNext, &QxFindBar::next);
  addKey(QKeySequence::FindPrevious, &QxFindBar::previous);
  back->setEnabled(false);
  forward->setEnabled(false);
  connect(m_browser, &QTextBrowser::backwardAvailable, back, &QAction::setEnabled);
  connect(m_browser, &QTextBrowser::forwardAvailable, forward, &QAction::setEnabled);
}

bool ZxHTML::load(const QString& path)
{
  const qsizetype hash = path.lastIndexOf('#');
  const QFileInfo info(hash < 0 ? path : path.left(hash));
  QFile file(info.absoluteFilePath());
  if (info.isDir() || !file.open(QIODevice::ReadOnly)) {
    const QString reason = info.isDir() ? tr("it is a folder") : file.errorString();
    ZxMessage::getTheMsg()->printf("The help page \"%s\" cannot be read: %s.",
                                   qUtf8Printable(info.filePath()), qUtf8Printable(reason));
    return false;
  }
  QUrl url = QUrl::fromLocalFile(info.absoluteFilePath());
  if (hash >= 0) url.setFragment(path.mid(hash + 1));
  m_search->setFolder(info.absolutePath());
  m_browser->setSource(url);
  return true;
}

void ZxHTML::home() { load(homePage()); }

QString ZxHTML::page() const { return m_browser->source().toLocalFile(); }

void ZxHTML::follow(const QUrl& link)
{
  const QUrl url = m_browser->source().resolved(link);
  if (!url.isLocalFile()) {
    QDesktopServices::openUrl(url);
    return;
  }
  load(url.hasFragment() ? url.toLocalFile() + "#" + url.fragment() : url.toLocalFile());
}

void ZxHTML::showTitle()
{
  const QString title = m_browser->documentTitle();
  const QString program = QString::fromStdString(ZxSkin::getGlobalInstance()->getCaption("Main"));
  setWindowTitle(title.isEmpty() ? program + " Help" : title + " – " + program + " Help");
}
