#include "qx/QxMainWindow.h"

#include "QxCloseGuard.h"
#include "QxConsole.h"
#include "QxController.h"
#include "QxFileCommands.h"
#include "QxFileQueue.h"
#include "QxHelp.h"
#include "QxMessageBar.h"
#include "QxPoolActions.h"
#include "QxPoolPanel.h"
#include "QxPoolWatcher.h"
#include "QxPortPanel.h"
#include "QxPreferencesDialog.h"
#include "QxRecentFiles.h"
#include "QxSettings.h"
#include "QxVolumePage.h"
#include "QxVolumeView.h"
#include "QxWorkArea.h"
#include "qx/QxCentralPage.h"
#include "qx/ZxResource.h"
#include "zx/ZxModule.h"
#include "zx/ZxSkin.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QPushButton>
#include <QScreen>
#include <QStackedLayout>
#include <QStatusBar>

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace {

QxMainWindow* theMainWindow = nullptr;

constexpr int layoutVersion = 1;
constexpr int messageMilliseconds = 10000;
constexpr const char* geometryKey = "window/geometry";
constexpr const char* stateKey = "window/state";
constexpr QSize usualSize(1280, 800);
constexpr QSize smallestPage(320, 240);

/// The first control of a pane that takes the focus, or null.
QWidget* firstInFocusOrder(QWidget* pane)
{
  for (QWidget* widget : pane->findChildren<QWidget*>())
    if (widget->isVisible() && widget->isEnabled() && (widget->focusPolicy() & Qt::TabFocus)) return widget;
  return nullptr;
}

/// Dark themes that say nothing of placeholders leave them nearly as dark as their ground.
void keepPlaceholdersReadable()
{
  constexpr int leastContrast = 64;
  const QPalette theme = QApplication::palette();
  const int ground = qGray(theme.color(QPalette::Base).rgb());
  if (std::abs(qGray(theme.color(QPalette::PlaceholderText).rgb()) - ground) >= leastContrast) return;
  QColor color = theme.color(QPalette::Text);
  color.setAlpha(128);
  QPalette mended; // Only this role: the rest keeps following the theme.
  mended.setColor(QPalette::PlaceholderText, color);
  QApplication::setPalette(mended);
}

} // namespace

QxMainWindow::QxMainWindow(QWidget* parent)
  : QMainWindow(parent), m_watcher(new QxPoolWatcher(this)), m_workArea(new QxWorkArea(statusBar())),
    m_fileQueue(new QxFileQueue(statusBar())), m_files(new QxFileCommands(m_fileQueue, this))
{
  theMainWindow = this;
  keepPlaceholdersReadable();
  setObjectName("mainWindow");
  setWindowIcon(ZxResource::readIcon("orvel.png"));
  setAcceptDrops(true);
  setDockNestingEnabled(true);
  statusBar()->addPermanentWidget(m_fileQueue);
  m_workArea->keepUsable(m_fileQueue->stopButton());
  makeCentre();
  makeDocks();
  m_controller = new QxController(m_page, m_watcher, this);
  m_actions = new QxPoolActions(m_pool, m_page, m_files, this);
  m_help = new QxHelp(m_centre, this);
  m_closeGuard = new QxCloseGuard(m_centre, m_files, m_workArea, this);
  makeMenus();
  connectParts();
  showTitle();
  restoreLayout();
}

QxMainWindow::~QxMainWindow()
{
  theMainWindow = nullptr;
  // The console and the work area must not be asked while the children go in whatever order.
  delete m_controller;
  delete m_workArea;
}

QxMainWindow* QxMainWindow::getTheMainWindow() noexcept { return theMainWindow; }

void QxMainWindow::makeCentre()
{
  auto* centre = new QWidget(this);
  auto* layout = new QVBoxLayout(centre);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  m_messageBar = new QxMessageBar(centre);
  layout->addWidget(m_messageBar);
  auto* pages = new QWidget(centre);
  // A page that wants more than there is must not push the window beyond the screen.
  pages->setMinimumSize(smallestPage);
  m_centre = new QStackedLayout(pages);
  m_page = new QxVolumePage(m_watcher, pages);
  m_centre->addWidget(m_page);
  layout->addWidget(pages, 1);
  setCentralWidget(centre);
}

QDockWidget* QxMainWindow::makeDock(const char* name, const QString& title, QWidget* content)
{
  auto* dock = new QDockWidget(title, this);
  dock->setObjectName(name);
  dock->setWidget(content);
  return dock;
}

void QxMainWindow::makeDocks()
{
  m_pool = new QxPoolPanel(m_watcher, this);
  m_ports = new QxPortPanel(m_watcher, this);
  m_console = new QxConsole(this);
  m_poolDock = makeDock("poolDock", tr("Pool"), m_pool);
  m_portsDock = makeDock("portsDock", tr("Ports"), m_ports);
  m_consoleDock = makeDock("consoleDock", tr("Console"), m_console);
  setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea);
  placeDocks();
}

void QxMainWindow::placeDocks()
{
  for (QDockWidget* dock : {m_poolDock, m_portsDock, m_consoleDock}) {
    dock->setFloating(false);
    removeDockWidget(dock);
  }
  addDockWidget(Qt::LeftDockWidgetArea, m_poolDock);
  addDockWidget(Qt::LeftDockWidgetArea, m_portsDock);
  addDockWidget(Qt::BottomDockWidgetArea, m_consoleDock);
  for (QDockWidget* dock : {m_poolDock, m_portsDock, m_consoleDock}) dock->show();
  const int line = fontMetrics().height();
  resizeDocks({m_poolDock, m_consoleDock}, {line * 23, line * 50}, Qt::Horizontal);
  resizeDocks({m_poolDock, m_portsDock, m_consoleDock}, {line * 12, line * 22, line * 8}, Qt::Vertical);
}

void QxMainWindow::makeMenus()
{
  fillFileMenu(menuBar()->addMenu("&File"));
  QMenu* edit = menuBar()->addMenu("&Edit");
  QAction* preferences = edit->addAction(ZxResource::readIcon("Preferences.png"), tr("&Preferences..."), this,
                                         &QxMainWindow::showPreferences);
  preferences->setObjectName("preferencesAction");
  preferences->setMenuRole(QAction::PreferencesRole);
  m_actions->fillPoolMenu(menuBar()->addMenu("&Pool"));
  fillExplorerMenu(menuBar()->addMenu("Ex&plorer"));
  QMenu* create = menuBar()->addMenu("&Create");
  create->setObjectName("createMenu");
  connect(create, &QMenu::aboutToShow, this, [this, create] { m_actions->fillCreateMenu(create); });
  m_actions->fillCreateMenu(create);
  fillWindowMenu(menuBar()->addMenu("&Window"));
  m_help->fill(menuBar()->addMenu("&Help"));
}

void QxMainWindow::fillFileMenu(QMenu* menu)
{
  QAction* open = menu->addAction(ZxResource::readIcon("Open.png"), tr("&Open..."), m_files,
                                  qOverload<>(&QxFileCommands::askForFiles));
  open->setObjectName("open");
  open->setShortcut(QKeySequence::Open);
  menu->addAction(tr("Open &Folder of Slices..."), m_files, &QxFileCommands::askForFolder)
      ->setObjectName("openFolder");
  menu->addAction(tr("Open &Label Field..."), m_files, &QxFileCommands::askForLabels)
      ->setObjectName("openLabels");
  QMenu* recent = menu->addMenu(tr("Open &Recent"));
  recent->setObjectName("recentMenu");
  recent->setToolTipsVisible(true);
  connect(recent, &QMenu::aboutToShow, this, [this, recent] { m_files->recentFiles()->fill(recent); });
  menu->addSeparator();
  menu->addAction(m_actions->save());
  menu->addAction(m_actions->saveAs());
  menu->addSeparator();
  QAction* quit = menu->addAction(tr("&Quit"), this, &QWidget::close);
  quit->setObjectName("quit");
  quit->setShortcut(QKeySequence("Ctrl+Q"));
}

void QxMainWindow::fillExplorerMenu(QMenu* menu)
{
  for (QDockWidget* dock : {m_poolDock, m_portsDock, m_consoleDock})
    menu->addAction(dock->toggleViewAction());
  menu->addSeparator();
  menu->addAction(tr("&Reset Layout"), this, &QxMainWindow::resetLayout)->setObjectName("resetLayout");
}

void QxMainWindow::fillWindowMenu(QMenu* menu)
{
  QAction* main = menu->addAction(tr("&Main Viewer"));
  main->setObjectName("mainViewer");
  main->setCheckable(true);
  main->setChecked(true);
  connect(main, &QAction::toggled, m_page, &QxVolumePage::setViewerShown);
  connect(m_page, &QxVolumePage::viewerShown, main, &QAction::setChecked);
  QAction* extra = menu->addAction(tr("E&xtra Viewer"));
  extra->setObjectName("extraViewerAction");
  extra->setCheckable(true);
  connect(extra, &QAction::triggered, this, [this](bool on) {
    if (ZxViewer* viewer = m_controller->viewer(4, on)) on ? viewer->show(1) : viewer->hide();
  });
  connect(m_controller, &QxController::extraViewerShown, extra, &QAction::setChecked);
  menu->addSeparator();
  QAction* next = menu->addAction(tr("&Next Pane"), this, &QxMainWindow::goToNextPane);
  next->setObjectName("nextPane");
  next->setShortcut(QKeySequence("F6"));
}

void QxMainWindow::connectParts()
{
  connect(m_pool, &QxPoolPanel::selectionChanged, this, &QxMainWindow::followSelection);
  connect(m_actions, &QxPoolActions::attached, this, &QxMainWindow::select);
  connect(m_page, &QxVolumePage::openWanted, m_files, qOverload<>(&QxFileCommands::askForFiles));
  connect(m_fileQueue, &QxFileQueue::opened, this, [this](ZxSpatialData* volume) { select(volume); });
  connect(m_files, &QxFileCommands::failed, m_messageBar, &QxMessageBar::tell);
  connect(m_console, &QxConsole::told, this, [this](const QString& message) {
    if (!m_console->isVisible()) statusBar()->showMessage(message, messageMilliseconds);
  });
  connect(m_centre, &QStackedLayout::currentChanged, this, &QxMainWindow::followPage);
  connect(m_watcher, &QxPoolWatcher::changed, this, &QxMainWindow::showTitle);
}

void QxMainWindow::restoreLayout()
{
  const QxSettings settings;
  if (!restoreGeometry(settings.value(geometryKey).toByteArray())) {
    const QSize available = screen() ? screen()->availableSize() : usualSize;
    resize(usualSize.boundedTo(available * 0.95));
  }
  restoreState(settings.value(stateKey).toByteArray(), layoutVersion);
}

void QxMainWindow::resetLayout() { placeDocks(); }

void QxMainWindow::showPreferences() { QxPreferencesDialog(this).exec(); }

void QxMainWindow::open(const QStringList& files) { m_files->open(files); }

bool QxMainWindow::isReadingOrWriting() const { return !m_files->queue()->isIdle(); }

void QxMainWindow::select(const ZxObject* object) { m_pool->select(object); }

void QxMainWindow::followSelection()
{
  ZxObject* object = m_pool->selectedObject();
  m_ports->setObject(object);
  m_page->setObject(object);
  m_controller->setObject(object);
}

void QxMainWindow::followPage(int page)
{
  m_actions->save()->setShortcut(page == 0 ? QKeySequence(QKeySequence::Save) : QKeySequence());
  showTitle();
}

// With several editors open the title says which one is seen.
void QxMainWindow::showTitle()
{
  QString title = QString::fromStdString(ZxSkin::getGlobalInstance()->getCaption("Main"));
  const auto* page = dynamic_cast<const QxCentralPage*>(m_centre->currentWidget());
  if (const auto* module = dynamic_cast<const ZxModule*>(page ? page->editedObject() : nullptr)) {
    const ZxData* input = module->portData.getSource();
    if (input) title.prepend(QString::fromStdString(input->getLabel().str()) + QStringLiteral(" – "));
    title.prepend(QString::fromStdString(module->getLabel().str()) + (input ? ": " : " – "));
  }
  setWindowTitle(title);
}

void QxMainWindow::goToNextPane()
{
  std::vector<QWidget*> panes{m_pool, m_ports, m_centre->currentWidget(), m_console};
  const auto now = std::find_if(panes.begin(), panes.end(), [](QWidget* pane) {
    return pane->isAncestorOf(QApplication::focusWidget());
  });
  if (now != panes.end()) std::rotate(panes.begin(), now + 1, panes.end());
  for (QWidget* pane : panes)
    if (QWidget* first = firstInFocusOrder(pane)) return first->setFocus(Qt::TabFocusReason);
}

void QxMainWindow::closeEvent(QCloseEvent* event)
{
  if (!m_closeGuard->mayClose()) {
    event->ignore();
    return;
  }
  QxSettings settings;
  settings.setValue(geometryKey, saveGeometry());
  settings.setValue(stateKey, saveState(layoutVersion));
  event->accept();
}

void QxMainWindow::dragEnterEvent(QDragEnterEvent* event)
{
  if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void QxMainWindow::dropEvent(QDropEvent* event)
{
  event->acceptProposedAction();
  // The program that the files come from waits for the drop to end.
  QMetaObject::invokeMethod(
      this, [this, urls = event->mimeData()->urls()] { m_files->drop(urls); }, Qt::QueuedConnection);
}
