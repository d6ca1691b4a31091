#pragma once

#include "zxalign/PairQualities.h"

#include <QDockWidget>

class PairQualityModel;
class QLabel;
class QPushButton;
class QSortFilterProxyModel;
class QTableView;
class QxAlignSlices;
class QxPairQualityCurve;

/// "Pair quality": all pairs of the stack with their quality, as a curve and as a table that can be sorted. A
/// click goes to a pair, a button to the worst. Qualities are computed while the dock is visible.
///
/// Hidden at first; its toggle is in the editor's toolbar of panels and in the context menu of its toolbars.
class QxPairQualityDock : public QDockWidget {
  Q_OBJECT
public:
  /// A child of the editor, and not yet in one of its areas.
  explicit QxPairQualityDock(QxAlignSlices& editor);
  ~QxPairQualityDock() override;

  const PairQualities& qualities() const noexcept { return m_qualities; }

public Q_SLOTS:
  /// Makes the pair the editor's, edited on the same side as before.
  void goTo(int lower);

private:
  QWidget* makeContents();
  QTableView* makeTable(QWidget* parent);
  void goToRow(const QModelIndex& index);
  void showState();
  /// The table does not get narrower than what its columns say; the curve does.
  void keepFiguresWhole();
  void showCurrent(int lower);

  QxAlignSlices& m_editor;
  PairQualities m_qualities;
  PairQualityModel* m_model; // child
  QSortFilterProxyModel* m_sorted;
  QTableView* m_table = nullptr;
  QLabel* m_state = nullptr;
  QPushButton* m_worst = nullptr;
};
