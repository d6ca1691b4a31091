#include "zxalign/AlignRecovery.h"

#include "RecoveryContent.h"
#include "zx/ZxMessage.h"
#include "zx/ZxRecoveryFile.h"
#include "zx/ZxWorkArea.h"
#include "zxalign/ZxAlignData.h"
#include "zxalign/ZxAlignSlices.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QLocale>

#include <algorithm>
#include <filesystem>

namespace {

AlignRecovery::Question& theQuestion()
{
  static AlignRecovery::Question question;
  return question;
}

bool (*isWanted)() = nullptr;

std::string absolutePath(const std::string& name)
{
  if (name.empty()) return {};
  std::error_code error;
  const std::filesystem::path path =
      std::filesystem::weakly_canonical(std::filesystem::absolute(name, error), error);
  return error ? std::string() : path.string();
}

QString now()
{
  const QDateTime time = QDateTime::currentDateTime();
  return time.toOffsetFromUtc(time.offsetFromUtc()).toString(Qt::ISODate);
}

} // namespace

void AlignRecovery::setQuestion(Question question) { theQuestion() = std::move(question); }

void AlignRecovery::setWanted(bool (*wanted)()) noexcept { isWanted = wanted; }

AlignRecovery::AlignRecovery(ZxAlignSlices& module) : m_module(module)
{
  m_timer.setSingleShot(true);
  connect(&m_timer, &QTimer::timeout, this, &AlignRecovery::takeTurn);
  m_pool.setMaxThreadCount(1);
}

AlignRecovery::~AlignRecovery() { detach(); }

RecoveryKey AlignRecovery::currentKey() const
{
  const ZxSpatialData* data = m_module.sliceData().getSpatialData();
  if (!data) return {};
  return {absolutePath(data->getFileName()), m_module.sliceData().getDims()};
}

void AlignRecovery::attach()
{
  detach();
  m_saved = m_module.getSlices();
  m_stored.clear();
  m_hasFailed = false;
  const RecoveryKey key = currentKey();
  if (key.path.empty()) return;
  m_key = std::make_unique<RecoveryKey>(key);
  offer();
}

void AlignRecovery::detach()
{
  if (m_timer.isActive()) {
    m_timer.stop();
    writeIfChanged();
  }
  m_pool.waitForDone();
  m_written.reset();
  m_key.reset();
  m_file.reset();
  m_offered.reset();
  m_offer.reset();
}

void AlignRecovery::queue()
{
  if (!m_key || m_timer.isActive() || !QCoreApplication::instance() || (isWanted && !isWanted())) return;
  const qint64 waited = m_sinceWrite.isValid() ? m_sinceWrite.elapsed() : m_interval.count();
  m_timer.start(static_cast<int>(std::max<qint64>(m_interval.count() - waited, 0)));
}

void AlignRecovery::takeTurn()
{
  // A method may have laid the slices elsewhere for its time.
  if (m_module.isMethodRunning()) return m_timer.start(m_interval);
  writeIfChanged();
  // Work that lets events in goes on: what it does after this has to be written as well.
  if (ZxWorkArea::getTheWorkArea()->isBusy()) m_timer.start(m_interval);
}

void AlignRecovery::writeIfChanged()
{
  const AlignState state = m_module.currentState();
  if (state.slices == m_saved)
    forget();
  else if (!m_written || !(*m_written == state))
    write(state, nullptr);
}

void AlignRecovery::write(const AlignState& state, std::shared_ptr<ZxRecoveryFile> replaced)
{
  if (!m_file) m_file = ZxRecoveryFile::create(m_key->text());
  m_written = std::make_unique<AlignState>(state);
  m_sinceWrite.start();
  m_pool.start(
      [this, file = m_file, replaced = std::move(replaced), content = RecoveryContent{*m_key, now(), state}] {
        const std::string problem = file->write(encodeRecovery(content));
        if (problem.empty() && replaced) replaced->remove();
        if (!problem.empty()) QMetaObject::invokeMethod(this, [this, problem] { tellFailure(problem); });
      });
}

void AlignRecovery::tellFailure(const std::string& problem)
{
  if (!m_hasFailed)
    ZxMessage::getTheMsg()->printf("The unsaved alignment of %s cannot be kept for the case of a crash: %s.",
                                   m_module.sliceData().getInputDataName().getString(), problem.c_str());
  m_hasFailed = true;
}

void AlignRecovery::stored()
{
  m_stored = m_module.getSlices();
  queue();
}

void AlignRecovery::objectChanged(ZxObject* object)
{
  const ZxSpatialData* data = m_module.sliceData().getSpatialData();
  if (object != data || data->isUnsaved() || m_stored.isEmpty()) return;
  if (m_stored == m_module.getSlices()) forget();
}

void AlignRecovery::forget()
{
  m_saved = m_module.getSlices();
  m_timer.stop();
  m_written.reset();
  if (m_file) m_pool.start([file = m_file] { file->remove(); });
}

void AlignRecovery::offer()
{
  using Verdict = ZxRecoveryFile::Verdict;
  std::optional<RecoveryContent> content;
  m_offered = ZxRecoveryFile::findOrphan(m_key->text(), [&](const std::string& bytes) {
    content = decodeRecovery(bytes);
    if (!content) return Verdict::Damaged;
    return content->key == *m_key ? Verdict::Wanted : Verdict::Other;
  });
  if (!m_offered) return;
  m_offer = std::make_unique<RecoveryContent>(*content);
  const QDateTime time = QDateTime::fromString(m_offer->time, Qt::ISODate).toLocalTime();
  const QString text = tr("An alignment of %1 was not saved when the program ended. It is from %2.")
                           .arg(QString::fromUtf8(m_module.sliceData().getInputDataName().getString()),
                                QLocale().toString(time, QLocale::ShortFormat));
  if (theQuestion() && theQuestion()(*this, text)) return;
  ZxMessage::getTheMsg()->printf("%s It can be restored where the data are opened in a window.",
                                 qPrintable(text));
}

void AlignRecovery::restore()
{
  if (!m_offered) return;
  const std::shared_ptr<ZxRecoveryFile> offered = std::move(m_offered);
  const AlignState state = std::move(m_offer->state);
  m_offer.reset();
  m_module.undoRedo().saveState();
  m_module.undoRedo().restoreState(state);
  m_timer.stop();
  write(m_module.currentState(), offered);
}

void AlignRecovery::discardOffer()
{
  if (!m_offered) return;
  m_offered->remove();
  offer();
}
