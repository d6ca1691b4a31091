#pragma once

#include "zxalign/PairQualities.h"

#include <QAbstractTableModel>

/// The qualities of all pairs as a table: a row for each pair, its two slices, its quality in percent, and
/// the confidence of the method that matched it, where there is one. The worst one is bold and has a mark; a
/// pair that a method has left says why in its tool tip.
class PairQualityModel : public QAbstractTableModel {
  Q_OBJECT
public:
  enum Column { SlicesColumn, QualityColumn, ConfidenceColumn, ColumnCount };
  /// What rows are sorted by: a number.
  static constexpr int sortRole = Qt::UserRole;

  /// The qualities outlive the model.
  explicit PairQualityModel(const PairQualities& qualities, QObject* parent = nullptr);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  /// "12 - 13", as in the status line.
  static QString slicesText(int lower);
  /// "87.53 %", or dots while it is not known.
  static QString qualityText(std::optional<float> quality);
  /// "0.97", "0.12, left", or nothing.
  static QString confidenceText(const std::optional<PairConfidence>& confidence);

private:
  void tell(int row);
  QVariant textOf(int lower, int column) const;
  QVariant sortValueOf(int lower, int column) const;
  QString toolTipOf(int lower) const;

  const PairQualities& m_qualities;
};
