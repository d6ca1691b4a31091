#include "zxalign/PairQualityModel.h"

#include <QColor>
#include <QFont>

PairQualityModel::PairQualityModel(const PairQualities& qualities, QObject* parent)
  : QAbstractTableModel(parent), m_qualities(qualities)
{
  connect(&qualities, &PairQualities::reset, this, [this] {
    beginResetModel();
    endResetModel();
  });
  connect(&qualities, &PairQualities::changed, this, &PairQualityModel::tell);
  connect(&qualities, &PairQualities::worstChanged, this, [this](int before, int now) {
    tell(before);
    tell(now);
  });
}

void PairQualityModel::tell(int row)
{
  if (row >= 0) Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

int PairQualityModel::rowCount(const QModelIndex& parent) const
{
  return parent.isValid() ? 0 : m_qualities.count();
}

int PairQualityModel::columnCount(const QModelIndex& parent) const
{
  return parent.isValid() ? 0 : ColumnCount;
}

QVariant PairQualityModel::data(const QModelIndex& index, int role) const
{
  const int lower = index.row();
  if (!index.isValid() || lower >= m_qualities.count()) return {};
  const bool isWorst = lower == m_qualities.worst();
  const std::optional<float> quality = m_qualities.quality(lower);
  const bool isQuality = index.column() == QualityColumn;
  switch (role) {
  case Qt::DisplayRole:
    return isQuality ? qualityText(quality) : slicesText(lower);
  case sortRole:
    return isQuality ? static_cast<double>(quality.value_or(2.0f)) : lower; // What is not known comes last.
  case Qt::TextAlignmentRole:
    return static_cast<int>(isQuality ? Qt::AlignRight | Qt::AlignVCenter : Qt::AlignCenter);
  case Qt::FontRole: {
    QFont font;
    font.setBold(isWorst);
    return font;
  }
  case Qt::DecorationRole:
    return isWorst && isQuality ? QVariant(QColor(Qt::red)) : QVariant();
  case Qt::ToolTipRole:
    return isWorst ? tr("The worst pair") : QString();
  default:
    return {};
  }
}

QVariant PairQualityModel::headerData(int section, Qt::Orientation orientation, int role) const
{
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  return section == SlicesColumn ? tr("Slices") : tr("Quality");
}

QString PairQualityModel::slicesText(int lower)
{
  return QStringLiteral("%1 - %2").arg(lower).arg(lower + 1);
}

QString PairQualityModel::qualityText(std::optional<float> quality)
{
  if (!quality) return QStringLiteral("...");
  return QString::number(static_cast<double>(*quality) * 100.0, 'f', 2) + QStringLiteral(" %");
}
