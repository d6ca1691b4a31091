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
  const int lower = index.row(), column = index.column();
  if (!index.isValid() || lower >= m_qualities.count()) return {};
  const bool isWorst = lower == m_qualities.worst();
  switch (role) {
  case Qt::DisplayRole:
    return textOf(lower, column);
  case sortRole:
    return sortValueOf(lower, column);
  case Qt::TextAlignmentRole:
    return static_cast<int>(column == SlicesColumn ? Qt::AlignCenter : Qt::AlignRight | Qt::AlignVCenter);
  case Qt::FontRole: {
    QFont font;
    font.setBold(isWorst);
    return font;
  }
  case Qt::DecorationRole:
    return isWorst && column == QualityColumn ? QVariant(QColor(Qt::red)) : QVariant();
  case Qt::ToolTipRole:
    return toolTipOf(lower);
  default:
    return {};
  }
}

QVariant PairQualityModel::textOf(int lower, int column) const
{
  if (column == SlicesColumn) return slicesText(lower);
  return column == QualityColumn ? qualityText(m_qualities.quality(lower))
                                 : confidenceText(m_qualities.confidence(lower));
}

QVariant PairQualityModel::sortValueOf(int lower, int column) const
{
  if (column == SlicesColumn) return lower;
  constexpr double last = 2.0; // What is not known comes last.
  if (column == QualityColumn) {
    const std::optional<float> quality = m_qualities.quality(lower);
    return quality ? static_cast<double>(*quality) : last;
  }
  const std::optional<PairConfidence>& confidence = m_qualities.confidence(lower);
  return confidence ? confidence->value : last;
}

QString PairQualityModel::toolTipOf(int lower) const
{
  QStringList lines;
  if (lower == m_qualities.worst()) lines << tr("The worst pair");
  const std::optional<PairConfidence>& confidence = m_qualities.confidence(lower);
  if (confidence && !confidence->reason.empty())
    lines << tr("Left as it was: %1").arg(QString::fromStdString(confidence->reason));
  return lines.join(QLatin1Char('\n'));
}

QVariant PairQualityModel::headerData(int section, Qt::Orientation orientation, int role) const
{
  if (orientation != Qt::Horizontal) return {};
  if (role == Qt::ToolTipRole && section == ConfidenceColumn)
    return tr("How sure the method was that matched the pair last");
  if (role != Qt::DisplayRole) return {};
  if (section == SlicesColumn) return tr("Slices");
  return section == QualityColumn ? tr("Quality") : tr("Confidence");
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

QString PairQualityModel::confidenceText(const std::optional<PairConfidence>& confidence)
{
  if (!confidence) return {};
  const QString figure = QString::number(confidence->value, 'f', 2);
  return confidence->reason.empty() ? figure : tr("%1, left").arg(figure);
}
