#include "QxFileCommands.h"

#include "QxFileQueue.h"
#include "QxObjectText.h"
#include "QxRecentFiles.h"
#include "QxSettings.h"
#include "zx/ZxMessage.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>

#include <algorithm>
#include <optional>

namespace {

constexpr const char* folderKey = "lastFolder";

QString lastFolder() { return QxSettings().value(folderKey, QDir::homePath()).toString(); }

void rememberFolder(const QString& file) { QxSettings().setValue(folderKey, QFileInfo(file).absolutePath()); }

QString patterns(const ZxFileFormat& format)
{
  QStringList list;
  for (const std::string& ending : format.endings) list << '*' + QString::fromStdString(ending);
  return list.join(' ');
}

/// "All volumes (...)", one entry a format, and all files.
QStringList readFilters()
{
  QStringList all, filters;
  for (const ZxFileFormat& format : ZxFileAccess::getTheFileAccess()->readableFormats()) {
    all << patterns(format);
    filters << QStringLiteral("%1 (%2)").arg(QString::fromStdString(format.name), patterns(format));
  }
  if (!all.isEmpty()) filters.prepend(QxFileCommands::tr("Volumes and pictures (%1)").arg(all.join(' ')));
  return filters << QxFileCommands::tr("All files (*)");
}

QString endingOf(const QString& file) { return QFileInfo(file).suffix().toLower(); }

bool haveEndings(const QStringList& files, const QStringList& endings)
{
  return std::all_of(files.begin(), files.end(), [&](const QString& file) {
    return QFileInfo(file).isFile() && endings.contains(endingOf(file));
  });
}

std::optional<bool> askWhetherOneStack(QWidget* window, const QStringList& files)
{
  QMessageBox box(QMessageBox::Question, QxFileCommands::tr("Open"),
                  QxFileCommands::tr("Are these %n TIFF files the slices of one stack?", nullptr,
                                     static_cast<int>(files.size())),
                  QMessageBox::Cancel, window);
  box.setObjectName("stackQuestion");
  box.setInformativeText(QxFileCommands::tr("As one stack they are ordered by the numbers in their names."));
  QPushButton* one = box.addButton(QxFileCommands::tr("&One Stack"), QMessageBox::YesRole);
  QPushButton* each = box.addButton(QxFileCommands::tr("&Separate Volumes"), QMessageBox::NoRole);
  box.setDefaultButton(one);
  box.exec();
  if (box.clickedButton() == one) return true;
  if (box.clickedButton() == each) return false;
  return std::nullopt;
}

/// A label as the beginning of a file name: without the ending of the file that it came from.
QString withoutEnding(const QString& label)
{
  for (const ZxFileFormat& format : ZxFileAccess::getTheFileAccess()->readableFormats())
    for (const std::string& ending : format.endings)
      if (label.endsWith(QString::fromStdString(ending), Qt::CaseInsensitive))
        return label.chopped(static_cast<qsizetype>(ending.size()));
  return label;
}

/// Asks about a file that the dialog did not know of, because the ending was added after it.
bool mayReplace(QWidget* window, const QString& path)
{
  if (!QFileInfo::exists(path)) return true;
  const QString question = QxFileCommands::tr("%1 already exists. Do you want to replace it?");
  return QMessageBox::question(window, QxFileCommands::tr("Save"),
                               question.arg(QFileInfo(path).fileName())) == QMessageBox::Yes;
}

/// The name of a file to write. An ending that was typed counts for more than the chosen entry of the dialog.
QString pathToWrite(const QString& chosen, const std::string& format)
{
  for (const ZxFileFormat& known : ZxFileAccess::getTheFileAccess()->writableFormats())
    for (const std::string& ending : known.endings)
      if (chosen.endsWith(QString::fromStdString(ending), Qt::CaseInsensitive)) return chosen;
  return QString::fromStdString(ZxFileAccess::getTheFileAccess()->pathFor(chosen.toStdString(), format));
}

/// The format whose entry of a dialog was chosen.
std::string formatOf(const QString& filter) { return filter.section(" (", 0, 0).toStdString(); }

} // namespace

QxFileCommands::QxFileCommands(QxFileQueue* queue, QWidget* window)
  : QObject(window), m_queue(queue), m_window(window), m_recent(new QxRecentFiles(this))
{
  connect(m_recent, &QxRecentFiles::chosen, this,
          [this](const QStringList& inputs) { openInputs(inputs, ZxReadAs::Automatic); });
  connect(m_queue, &QxFileQueue::opened, m_recent,
          [this](ZxSpatialData*, const QStringList& inputs) { m_recent->add(inputs); });
  connect(m_queue, &QxFileQueue::saved, m_recent,
          [this](ZxSpatialData*, const QString& path) { m_recent->add({path}); });
  connect(m_queue, &QxFileQueue::failed, this, &QxFileCommands::failed);
}

void QxFileCommands::openInputs(const QStringList& inputs, ZxReadAs as)
{
  ZxReadRequest request;
  request.as = as;
  for (const QString& input : inputs) request.inputs.push_back(input.toStdString());
  m_queue->read(std::move(request));
}

void QxFileCommands::open(const QStringList& files, ZxReadAs as)
{
  bool isOneStack = files.size() > 1 && haveEndings(files, {"png", "jpg", "jpeg", "bmp"});
  if (files.size() > 1 && haveEndings(files, {"tif", "tiff"})) {
    const std::optional<bool> answer = askWhetherOneStack(m_window, files);
    if (!answer) return;
    isOneStack = *answer;
  }
  if (isOneStack) {
    QStringList sorted = files;
    sorted.sort(); // In the order of bytes: what the reader takes for a set, to be put into natural order.
    openInputs(sorted, as);
    return;
  }
  for (const QString& file : files) openInputs({file}, as);
}

void QxFileCommands::drop(const QList<QUrl>& urls)
{
  QStringList files;
  for (const QUrl& url : urls) {
    if (url.isLocalFile())
      files << url.toLocalFile();
    else
      refuse(tr("Cannot open \"%1\": it is no file of this computer.").arg(url.toDisplayString()));
  }
  open(files);
}

void QxFileCommands::askForFiles() { askForFiles(tr("Open Volumes"), ZxReadAs::Automatic); }

void QxFileCommands::askForLabels() { askForFiles(tr("Open Label Fields"), ZxReadAs::Labels); }

void QxFileCommands::askForFiles(const QString& title, ZxReadAs as)
{
  QFileDialog dialog(m_window, title, lastFolder());
  dialog.setObjectName("openDialog");
  dialog.setFileMode(QFileDialog::ExistingFiles);
  dialog.setNameFilters(readFilters());
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return;
  rememberFolder(dialog.selectedFiles().first());
  open(dialog.selectedFiles(), as);
}

void QxFileCommands::askForFolder()
{
  const QString folder =
      QFileDialog::getExistingDirectory(m_window, tr("Open Folder of Slices"), lastFolder());
  if (folder.isEmpty()) return;
  rememberFolder(folder);
  openInputs({folder}, ZxReadAs::Automatic);
}

bool QxFileCommands::save(ZxSpatialData& data)
{
  const std::string& file = data.getFileName();
  const bool isKnown = !file.empty() && QFileInfo(QString::fromStdString(file)).isFile() &&
                       ZxFileAccess::getTheFileAccess()->checkWritable(data, file).empty();
  return isKnown ? startWriting(data, QString::fromStdString(file)) : saveAs(data);
}

bool QxFileCommands::saveAs(ZxSpatialData& data)
{
  QStringList filters;
  for (const ZxFileFormat& format : ZxFileAccess::getTheFileAccess()->writableFormats())
    filters << QStringLiteral("%1 (%2)").arg(QString::fromStdString(format.name), patterns(format));
  if (filters.isEmpty()) {
    refuse(tr("This program writes no files."));
    return false;
  }
  QFileDialog dialog(m_window, tr("Save %1").arg(QxObjectText::label(data)), lastFolder());
  dialog.setObjectName("saveDialog");
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setNameFilters(filters);
  // The dialog adds the ending itself, so that it asks before it writes over the right file.
  const auto useEnding = [&](const QString& filter) {
    dialog.setDefaultSuffix(filter.section("*.", 1, 1).section(' ', 0, 0).remove(')'));
  };
  connect(&dialog, &QFileDialog::filterSelected, &dialog, useEnding);
  useEnding(filters.first());
  dialog.selectFile(withoutEnding(QxObjectText::label(data)));
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return false;
  const QString chosen = dialog.selectedFiles().first();
  const QString path = pathToWrite(chosen, formatOf(dialog.selectedNameFilter()));
  rememberFolder(path);
  return (path == chosen || mayReplace(m_window, path)) && startWriting(data, path);
}

void QxFileCommands::refuse(const QString& sentence)
{
  ZxMessage::getTheMsg()->printf("%s", sentence.toUtf8().constData());
  Q_EMIT failed(sentence);
}

bool QxFileCommands::startWriting(ZxSpatialData& data, const QString& path)
{
  const std::string problem = ZxFileAccess::getTheFileAccess()->checkWritable(data, path.toStdString());
  if (!problem.empty()) {
    refuse(QString::fromStdString(problem));
    return false;
  }
  m_queue->write(McHandle<ZxSpatialData>(&data), path.toStdString());
  return true;
}
