#include "QxRecentFiles.h"

#include "QxSettings.h"

#include <QDir>
#include <QFileInfo>
#include <QMenu>

namespace {

constexpr int mostInputs = 10;
constexpr const char* key = "recentFiles";

QString describe(const QStringList& inputs)
{
  const QFileInfo first(inputs.first());
  QString name = first.fileName();
  if (inputs.size() > 1)
    name += QxRecentFiles::tr(" and %n more", nullptr, static_cast<int>(inputs.size()) - 1);
  QString folder = QDir::toNativeSeparators(first.absolutePath());
  const QString home = QDir::homePath();
  if (folder == home || folder.startsWith(home + '/')) folder.replace(0, home.size(), "~");
  return QStringLiteral("%1  (%2)").arg(name, folder).replace('&', "&&");
}

} // namespace

QxRecentFiles::QxRecentFiles(QObject* parent) : QObject(parent)
{
  for (const QVariant& inputs : QxSettings().value(key).toList())
    if (!inputs.toStringList().isEmpty()) m_inputs << inputs.toStringList();
}

void QxRecentFiles::add(const QStringList& inputs)
{
  QStringList absolute;
  for (const QString& input : inputs) absolute << QFileInfo(input).absoluteFilePath();
  if (absolute.isEmpty()) return;
  m_inputs.removeAll(absolute);
  m_inputs.prepend(absolute);
  while (m_inputs.size() > mostInputs) m_inputs.removeLast();
  store();
}

void QxRecentFiles::store() const
{
  QVariantList list;
  for (const QStringList& inputs : m_inputs) list << inputs;
  QxSettings().setValue(key, list);
}

void QxRecentFiles::fill(QMenu* menu)
{
  menu->clear();
  int number = 1;
  for (const QStringList& inputs : m_inputs) {
    QAction* action = menu->addAction(QStringLiteral("&%1 %2").arg(number % 10).arg(describe(inputs)));
    action->setToolTip(inputs.join('\n'));
    connect(action, &QAction::triggered, this, [this, inputs] { Q_EMIT chosen(inputs); });
    ++number;
  }
  if (m_inputs.isEmpty()) {
    menu->addAction(tr("None"))->setEnabled(false);
    return;
  }
  menu->addSeparator();
  connect(menu->addAction(tr("Clear List")), &QAction::triggered, this, [this] {
    m_inputs.clear();
    store();
  });
}
