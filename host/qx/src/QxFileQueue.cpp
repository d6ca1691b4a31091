#include "QxFileQueue.h"

#include "mc/McRound.h"
#include "zx/ZxObjectPool.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

#include <algorithm>

namespace {

constexpr int barSteps = 1000;
constexpr int showEveryMilliseconds = 60;

} // namespace

QxFileQueue::QxFileQueue(QWidget* parent)
  : QWidget(parent), m_text(new QLabel(this)), m_bar(new QProgressBar(this)),
    m_stop(new QPushButton(tr("Stop"), this))
{
  setObjectName("fileQueue");
  m_text->setObjectName("fileText");
  m_text->setTextFormat(Qt::PlainText);
  m_bar->setObjectName("fileBar");
  m_bar->setRange(0, barSteps);
  m_bar->setFixedWidth(fontMetrics().averageCharWidth() * 24);
  m_stop->setObjectName("fileStop");
  m_stop->setToolTip(tr("Stop reading or writing this file"));
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(m_text);
  layout->addWidget(m_bar);
  layout->addWidget(m_stop);
  hide();
  m_timer.setInterval(showEveryMilliseconds);
  connect(&m_timer, &QTimer::timeout, this, &QxFileQueue::showProgress);
  connect(m_stop, &QPushButton::clicked, this, [this] {
    if (m_job) m_job->stop();
  });
}

QxFileQueue::~QxFileQueue() = default;

void QxFileQueue::read(ZxReadRequest request)
{
  m_waiting.push_back({std::move(request), {}, {}});
  start();
}

void QxFileQueue::write(McHandle<ZxSpatialData> source, std::string path)
{
  m_waiting.push_back({{}, std::move(source), std::move(path)});
  start();
}

bool QxFileQueue::isWriting() const noexcept
{
  return (m_job && m_order.data) ||
         std::any_of(m_waiting.begin(), m_waiting.end(), [](const Order& o) { return bool(o.data); });
}

void QxFileQueue::stopAll()
{
  m_waiting.clear();
  if (m_job) m_job->stop();
}

void QxFileQueue::start()
{
  if (m_job) {
    showProgress();
    return;
  }
  if (m_waiting.empty()) {
    m_timer.stop();
    hide();
    Q_EMIT becameIdle();
    return;
  }
  m_order = std::move(m_waiting.front());
  m_waiting.pop_front();
  m_job = m_order.data ? ZxFileJob::write(m_order.data, m_order.path) : ZxFileJob::read(m_order.request);
  m_job->whenEnded([this] { jobEnded(); });
  m_timer.start();
  showProgress();
  show();
}

void QxFileQueue::jobEnded()
{
  const std::unique_ptr<ZxFileJob> job = std::move(m_job);
  const Order order = std::move(m_order);
  m_order = {};
  const McHandle<ZxSpatialData> done = job->finish();
  if (!done && job->state() == ZxFileJob::State::Failed)
    Q_EMIT failed(QString::fromStdString(job->problem()));
  else if (done && order.data)
    Q_EMIT saved(done.get(), QString::fromStdString(order.path));
  else if (done) {
    QStringList inputs;
    for (const std::string& input : order.request.inputs) inputs << QString::fromStdString(input);
    ZxObjectPool::getThePool().add(done.get());
    Q_EMIT opened(done.get(), inputs);
  }
  start();
}

void QxFileQueue::showProgress()
{
  if (!m_job) return;
  const ZxFileJob::Progress progress = m_job->progress();
  QString text = QString::fromStdString(m_job->title());
  if (!m_waiting.empty()) text += tr(" (%n more)", nullptr, static_cast<int>(m_waiting.size()));
  m_text->setText(m_text->fontMetrics().elidedText(text, Qt::ElideMiddle, m_bar->width() * 2));
  m_bar->setValue(mc::roundHalfUp(static_cast<double>(progress.fraction) * barSteps));
}
