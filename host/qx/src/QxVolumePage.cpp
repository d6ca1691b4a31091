#include "QxVolumePage.h"

#include "QxPoolWatcher.h"
#include "QxVolumeView.h"
#include "qx/ZxResource.h"
#include "zx/ZxModule.h"

#include <QLabel>
#include <QPushButton>
#include <QStackedLayout>
#include <QVBoxLayout>

namespace {

constexpr int hintIcon = 64;

/// A picture, a sentence and a button in the middle of an empty page.
QWidget* makeHint(QWidget* parent, const char* name, const QString& title, const QString& text,
                  QPushButton* button)
{
  auto* page = new QWidget(parent);
  page->setObjectName(name);
  auto* picture = new QLabel(page);
  picture->setPixmap(ZxResource::readIcon("Volume.png").pixmap(hintIcon, hintIcon));
  auto* headline = new QLabel(title, page);
  QFont font = headline->font();
  font.setPointSizeF(font.pointSizeF() * 1.3);
  headline->setFont(font);
  auto* details = new QLabel(text, page);
  details->setForegroundRole(QPalette::PlaceholderText);
  auto* layout = new QVBoxLayout(page);
  layout->addStretch(2);
  for (QWidget* widget : std::initializer_list<QWidget*>{picture, headline, details, button}) {
    layout->addWidget(widget, 0, Qt::AlignHCenter);
    layout->addSpacing(4);
  }
  layout->addStretch(3);
  return page;
}

} // namespace

QxVolumePage::QxVolumePage(QxPoolWatcher* watcher, QWidget* parent)
  : QWidget(parent), m_pages(new QStackedLayout(this)), m_view(new QxVolumeView(watcher, this)),
    m_openHint(makeOpenHint()), m_hiddenHint(makeHiddenHint())
{
  setObjectName("volumePage");
  m_view->setObjectName("volumeView");
  for (QWidget* page : {static_cast<QWidget*>(m_view), m_openHint, m_hiddenHint}) m_pages->addWidget(page);
  connect(watcher, &QxPoolWatcher::changed, this, &QxVolumePage::choosePage);
  choosePage();
}

QWidget* QxVolumePage::makeOpenHint()
{
  auto* button = new QPushButton(tr("Open..."), this);
  button->setObjectName("openButton");
  connect(button, &QPushButton::clicked, this, &QxVolumePage::openWanted);
  return makeHint(this, "openHint", tr("Open an image stack (Ctrl+O) or drop files here"),
                  tr("Volumes, folders of slices, and pictures that are the slices of a stack"), button);
}

QWidget* QxVolumePage::makeHiddenHint()
{
  auto* button = new QPushButton(tr("Show Viewer"), this);
  button->setObjectName("showButton");
  connect(button, &QPushButton::clicked, this, [this] { setViewerShown(true); });
  return makeHint(this, "hiddenHint", tr("The viewer is hidden"),
                  tr("It comes back from the menu Window, too."), button);
}

ZxSpatialData* QxVolumePage::volumeOf(ZxObject* object)
{
  if (const auto* module = dynamic_cast<ZxModule*>(object)) object = module->portData.getSource();
  auto* data = dynamic_cast<ZxSpatialData*>(object);
  return data && data->getLattice() && data->getLattice()->isValid() ? data : nullptr;
}

void QxVolumePage::setObject(ZxObject* object)
{
  ZxSpatialData* volume = volumeOf(object);
  if (!volume || !volume->isInPool()) return;
  m_view->setData(volume);
  choosePage();
}

void QxVolumePage::clear()
{
  m_view->setData(nullptr);
  choosePage();
}

ZxSpatialData* QxVolumePage::data() const { return m_view->data(); }

void QxVolumePage::setViewerShown(bool shown)
{
  if (shown == m_shown) return;
  m_shown = shown;
  choosePage();
  Q_EMIT viewerShown(shown);
}

void QxVolumePage::choosePage()
{
  QWidget* page = m_view->data() ? static_cast<QWidget*>(m_view) : m_openHint;
  m_pages->setCurrentWidget(m_shown ? page : m_hiddenHint);
  Q_EMIT dataChanged();
}
