#include "zxalign/QxPairQualityDock.h"

#include "zxalign/PairQualityModel.h"
#include "zxalign/QxAlignSlices.h"
#include "zxalign/QxPairQualityCurve.h"
#include "zxalign/ZxAlignSlices.h"

#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QSortFilterProxyModel>
#include <QStyle>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>

QxPairQualityDock::QxPairQualityDock(QxAlignSlices& editor)
  : QDockWidget(tr("Pair quality"), &editor), m_editor(editor), m_qualities(editor.module()),
    m_model(new PairQualityModel(m_qualities, this)), m_sorted(new QSortFilterProxyModel(this))
{
  setObjectName("pairQualityDock");
  m_sorted->setSourceModel(m_model);
  m_sorted->setSortRole(PairQualityModel::sortRole);
  setWidget(makeContents());
  toggleViewAction()->setToolTip(tr("Pair quality: all pairs of slices, the worst one marked"));
  connect(this, &QDockWidget::visibilityChanged, &m_qualities, &PairQualities::setActive);
  connect(&m_qualities, &PairQualities::reset, this, &QxPairQualityDock::showState);
  connect(&m_qualities, &PairQualities::changed, this, &QxPairQualityDock::showState);
  connect(&m_qualities, &PairQualities::currentChanged, this, &QxPairQualityDock::showCurrent);
  connect(m_worst, &QPushButton::clicked, this, [this] { goTo(m_qualities.worst()); });
  showState();
}

QxPairQualityDock::~QxPairQualityDock() { m_qualities.disconnect(); }

QWidget* QxPairQualityDock::makeContents()
{
  auto* contents = new QWidget(this);
  auto* curve = new QxPairQualityCurve(m_qualities, contents);
  curve->setObjectName("pairQualityCurve");
  m_state = new QLabel(contents);
  m_state->setObjectName("pairQualityState");
  m_state->setWordWrap(true);
  m_worst = new QPushButton(tr("Go to the worst"), contents);
  m_worst->setObjectName("goToWorstButton");
  m_worst->setFocusPolicy(Qt::TabFocus); // A click leaves the keys with the slice view.
  m_table = makeTable(contents);
  auto* overview = new QVBoxLayout;
  overview->addWidget(curve, 1);
  overview->addWidget(m_state);
  overview->addWidget(m_worst);
  auto* layout = new QBoxLayout(QBoxLayout::TopToBottom, contents);
  layout->addLayout(overview, 2);
  layout->addWidget(m_table, 1);
  // Above or below the slices there is width to spare, but no height.
  connect(this, &QDockWidget::dockLocationChanged, layout, [layout](Qt::DockWidgetArea area) {
    const bool isWide = area == Qt::BottomDockWidgetArea || area == Qt::TopDockWidgetArea;
    layout->setDirection(isWide ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
  });
  connect(curve, &QxPairQualityCurve::pairChosen, this, &QxPairQualityDock::goTo);
  return contents;
}

QTableView* QxPairQualityDock::makeTable(QWidget* parent)
{
  auto* table = new QTableView(parent);
  table->setObjectName("pairQualityTable");
  table->setModel(m_sorted);
  table->setSortingEnabled(true);
  table->sortByColumn(PairQualityModel::SlicesColumn, Qt::AscendingOrder);
  table->setSelectionBehavior(QAbstractItemView::SelectRows);
  table->setSelectionMode(QAbstractItemView::SingleSelection);
  table->setFocusPolicy(Qt::TabFocus);
  table->verticalHeader()->hide();
  table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  table->verticalHeader()->setDefaultSectionSize(table->fontMetrics().height() + 6);
  table->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  connect(table, &QTableView::clicked, this, &QxPairQualityDock::goToRow);
  connect(table, &QTableView::activated, this, &QxPairQualityDock::goToRow);
  return table;
}

void QxPairQualityDock::goToRow(const QModelIndex& index) { goTo(m_sorted->mapToSource(index).row()); }

void QxPairQualityDock::goTo(int lower)
{
  if (lower < 0 || lower >= m_qualities.count()) return;
  const bool upperIsEdited = m_editor.module().getEditableSide() == 1;
  m_editor.sliceChange(static_cast<float>(upperIsEdited ? lower + 1 : lower));
}

void QxPairQualityDock::showState()
{
  const int worst = m_qualities.worst();
  const int count = m_qualities.count();
  const int known = m_qualities.upToDate();
  QString text = worst < 0 ? tr("No pair is computed yet.")
                           : tr("Worst: slices %1, %2.")
                                 .arg(PairQualityModel::slicesText(worst),
                                      PairQualityModel::qualityText(m_qualities.quality(worst)));
  if (known < count) text += tr(" %1 of %2 pairs are up to date.").arg(known).arg(count);
  m_state->setText(text);
  m_worst->setEnabled(worst >= 0);
  m_table->setColumnHidden(PairQualityModel::ConfidenceColumn, !m_qualities.hasConfidences());
  keepFiguresWhole();
}

void QxPairQualityDock::keepFiguresWhole()
{
  QFont bold = m_table->font(); // as the worst pair has it, and a mark before its quality
  bold.setBold(true);
  const QFontMetrics metrics(bold);
  const int mark = style()->pixelMetric(QStyle::PM_SmallIconSize);
  const int margins = 4 * (style()->pixelMetric(QStyle::PM_FocusFrameHMargin) + 1);
  int widest = std::max(metrics.horizontalAdvance(PairQualityModel::qualityText(1.0f)) + mark,
                        metrics.horizontalAdvance(PairQualityModel::slicesText(m_qualities.count())));
  widest += margins;
  QHeaderView& header = *m_table->horizontalHeader();
  for (int column = 0; column < header.count(); ++column)
    widest = std::max(widest, header.sectionSizeHint(column));
  const int shown = header.count() - header.hiddenSectionCount();
  header.setMinimumSectionSize(widest);
  m_table->setMinimumWidth(shown * widest + m_table->verticalScrollBar()->sizeHint().width() +
                           2 * m_table->frameWidth());
}

void QxPairQualityDock::showCurrent(int lower)
{
  if (lower < 0) return m_table->clearSelection();
  const QModelIndex index = m_sorted->mapFromSource(m_model->index(lower, 0));
  m_table->setCurrentIndex(index);
  m_table->scrollTo(index);
}
