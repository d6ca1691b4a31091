#pragma once

#include "zxalign/PairQualities.h"

#include <QAbstractTableModel>

/// The qualities of all pairs as a table: a row for each pair, its two slices and its quality in percent. The
/// worst one is bold and has a mark.
class PairQualityModel : public QAbstractTableModel {
  Q_OBJECT
public:
  enum Column { SlicesColumn, QualityColumn, ColumnCount };
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

private:
  void tell(int row);

  const PairQualities& m_qualities;
};
