#include "zxalign/QxPairQualityDock.h"

#include "EditorTest.h"
#include "zx/ZxParamBundle.h"
#include "zxalign/PairQualityModel.h"
#include "zxalign/QxAlignUndoRedo.h"
#include "zxalign/QxPairQualityCurve.h"
#include "zxalign/ZxAutoAlignMethod.h"
#include "zxalign/ZxAutoAlignMethodFabrique.h"

#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>
#include <QToolBar>

#include <set>

namespace {

/// Qualities of a module without a window.
class PairQualitiesTest : public ModuleTest {
protected:
  void open(const McHandle<ZxField3>& stack) { connect(module->portData, stack); }
  bool isComplete()
  {
    return waitFor([this] { return qualities->count() > 0 && qualities->upToDate() == qualities->count(); });
  }
  /// What the module itself says of each pair, by making it the current one.
  void expectAsTheModule()
  {
    qualities->setActive(false);
    qualities->setActive(true); // looks now
    ASSERT_TRUE(isComplete());
    const AlignState before = module->currentState();
    for (int i = 0; i < qualities->count(); ++i)
      EXPECT_EQ(static_cast<double>(*qualities->quality(i)), module->pairQuality(i)) << i;
    module->restoreState(before);
  }

  std::unique_ptr<PairQualities> qualities = std::make_unique<PairQualities>(*module);
};

TEST_F(PairQualitiesTest, AreThoseOfTheModuleAndLeaveItsPairAlone)
{
  open(makeField<std::uint16_t>({33, 21, 7}, 1,
                                [](int x, int y, int k, int) { return 40 * greyAt(x, y, k); }));
  for (int k = 0; k < 7; ++k)
    setTransform(k, SliceXForm(static_cast<float>(k * k), 1.5f, 7.0f * static_cast<float>(k), k == 3));
  module->setRangeCurrent(100, 7000);
  module->setSlice(5);
  module->setReferenceSlice(4);
  qualities->setActive(true);
  expectAsTheModule();
  EXPECT_EQ(module->getEditableSlice(), 5);
  module->setRangeCurrent(0, 5000);
  expectAsTheModule();
  connect(module->portMask, makeLabels<std::uint8_t>({33, 21, 7}, [](int x, int y, int k, int) {
            return x > 5 && y < 15 + k ? 3 : 0;
          }));
  expectAsTheModule();
}

TEST_F(PairQualitiesTest, OfColoursCompareColours)
{
  open(makeField<std::uint8_t>({18, 13, 4}, 4, greyAt));
  setTransform(2, SliceXForm(3, -1, 30, true));
  qualities->setActive(true);
  expectAsTheModule();
}

TEST_F(PairQualitiesTest, OnlyPairsThatChangedAreComputedAnew)
{
  open(greyStack({33, 21, 9}));
  QSignalSpy changed(qualities.get(), &PairQualities::changed);
  QSignalSpy current(qualities.get(), &PairQualities::currentChanged);
  QTest::qWait(0);
  EXPECT_EQ(qualities->count(), 0) << "nothing is done before anyone looks";
  module->setSlice(6);
  module->setReferenceSlice(5);
  qualities->setActive(true);
  ASSERT_TRUE(isComplete());
  ASSERT_EQ(changed.size(), 8);
  EXPECT_EQ(changed[0][0].toInt(), 5) << "the pair that is being edited comes first";
  EXPECT_EQ(current.takeLast()[0].toInt(), 5);
  changed.clear();
  module->getSlice(3).translationY = 4;
  ASSERT_TRUE(waitFor([&] { return changed.size() == 2; }));
  EXPECT_EQ(changed[0][0].toInt() + changed[1][0].toInt(), 2 + 3);
  EXPECT_EQ(std::set<int>({changed[0][0].toInt(), changed[1][0].toInt()}), std::set<int>({2, 3}));
  expectAsTheModule();
  // The worst is the first of the lowest.
  int worst = 0;
  for (int i = 1; i < qualities->count(); ++i)
    if (*qualities->quality(i) < *qualities->quality(worst)) worst = i;
  EXPECT_EQ(qualities->worst(), worst);
}

TEST_F(PairQualitiesTest, GiveWayToOtherWorkAndFollowTheInput)
{
  open(greyStack({33, 21, 4}));
  {
    const ZxWorkingPhase phase("aligning");
    qualities->setActive(true);
    EXPECT_EQ(qualities->count(), 3);
    QTest::qWait(0);
    EXPECT_EQ(qualities->upToDate(), 0);
  }
  EXPECT_TRUE(isComplete());
  QSignalSpy reset(qualities.get(), &PairQualities::reset);
  open(greyStack({12, 10, 4})); // as many slices, other ones
  ASSERT_TRUE(waitFor([&] { return !reset.isEmpty(); }));
  expectAsTheModule();
  module->portData.disconnect();
  module->fire();
  ASSERT_TRUE(waitFor([&] { return qualities->count() == 0; }));
  EXPECT_EQ(qualities->worst(), -1);
  open(greyStack({400, 300, 30}));
  ASSERT_TRUE(waitFor([&] { return qualities->count() == 29; }));
  qualities.reset(); // while it computes
}

class QxPairQualityDockTest : public EditorTest {
protected:
  void open()
  {
    dock = child<QxPairQualityDock>("pairQualityDock");
    EXPECT_FALSE(dock->isVisible());
    child<QToolBar>("panelToolBar")->actions().first()->trigger();
    ASSERT_TRUE(dock->isVisible());
    ASSERT_TRUE(waitFor([this] { return dock->qualities().upToDate() == 6; }));
  }
  QAbstractItemModel* rows() { return child<QTableView>("pairQualityTable")->model(); }
  QString cell(int row, int column) { return rows()->index(row, column).data().toString(); }
  void clickRow(int row)
  {
    auto* table = child<QTableView>("pairQualityTable");
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                      table->visualRect(table->model()->index(row, 0)).center());
  }
  QxPairQualityDock* dock = nullptr;
};

TEST_F(QxPairQualityDockTest, AClickGoesToThePair)
{
  open();
  clickRow(4);
  EXPECT_EQ(current(), 5);
  EXPECT_EQ(reference(), 4);
  editor->setEditableSlice(-1);
  clickRow(1);
  EXPECT_EQ(current(), 1);
  EXPECT_EQ(reference(), 2);
  auto* curve = child<QxPairQualityCurve>("pairQualityCurve");
  for (int lower = 0; lower < 6; ++lower) {
    QTest::mouseClick(curve, Qt::LeftButton, {}, curve->pointOf(lower).toPoint());
    EXPECT_EQ(current(), lower) << "by the curve";
  }
  child<QPushButton>("goToWorstButton")->click();
  EXPECT_EQ(std::min(current(), reference()), dock->qualities().worst());
}

TEST_F(QxPairQualityDockTest, TheTableSortsByQualityAndMarksTheWorst)
{
  setTransform(3, SliceXForm(22, 0, 0, false)); // hardly any overlap with its neighbours
  open();
  EXPECT_EQ(cell(2, 0), "2 - 3");
  auto* table = child<QTableView>("pairQualityTable");
  table->sortByColumn(PairQualityModel::QualityColumn, Qt::AscendingOrder);
  const int worst = dock->qualities().worst();
  EXPECT_TRUE(worst == 2 || worst == 3) << worst;
  EXPECT_EQ(cell(0, 0), PairQualityModel::slicesText(worst));
  EXPECT_TRUE(rows()->index(0, 0).data(Qt::FontRole).value<QFont>().bold());
  EXPECT_FALSE(rows()->index(1, 0).data(Qt::FontRole).value<QFont>().bold());
  clickRow(0);
  EXPECT_EQ(std::min(current(), reference()), worst);
  EXPECT_TRUE(child<QLabel>("pairQualityState")->text().contains(PairQualityModel::slicesText(worst)));
  editor->resetAll();
  EXPECT_TRUE(waitFor([&] { return dock->qualities().worst() != worst; })) << "the table follows an edit";
}

// A method leaves its outcome with the slice that it matched, with the lower or the upper one of the pair.
TEST_F(QxPairQualityDockTest, ShowsTheConfidenceOfTheMethodThatMatchedAPair)
{
  open();
  auto* table = child<QTableView>("pairQualityTable");
  EXPECT_TRUE(table->isColumnHidden(PairQualityModel::ConfidenceColumn)) << "nothing to show";
  const auto store = [this](const char* slice, int reference, double confidence, const char* reason) {
    ZxParamBundle& own = *module->sliceData().getParameters()->getBundle("AlignConfidence")->getBundle(slice);
    own.setNum("reference", reference);
    own.setReals("confidence", {confidence});
    own.setString("reason", reason);
  };
  store("slice0003", 2, 0.974, "");
  store("slice0004", 5, 0.124, "hardly anything overlaps");
  store("slice0001", 3, 0.5, ""); // no neighbours: shown nowhere
  ASSERT_TRUE(waitFor([&] { return !cell(4, PairQualityModel::ConfidenceColumn).isEmpty(); }));
  EXPECT_FALSE(table->isColumnHidden(PairQualityModel::ConfidenceColumn));
  QStringList shown;
  for (int row = 0; row < 6; ++row) shown << cell(row, PairQualityModel::ConfidenceColumn);
  EXPECT_EQ(shown, (QStringList{"", "", "0.97", "", "0.12, left", ""}));
  EXPECT_TRUE(rows()->index(4, 0).data(Qt::ToolTipRole).toString().contains("hardly anything overlaps"));
  host->resize(host->minimumSizeHint()); // however narrow the dock
  editor->showCoronalView(true);
  QCoreApplication::processEvents();
  for (int column = 0; column < PairQualityModel::ColumnCount; ++column)
    EXPECT_GE(table->columnWidth(column), static_cast<QAbstractItemView*>(table)->sizeHintForColumn(column))
        << column;
}

/// Says the same of every pair that it matches, and moves its slice.
class SureMethod : public ZxAutoAlignMethod {
public:
  using ZxAutoAlignMethod::ZxAutoAlignMethod;
  int doLayout() override
  {
    ZxParamBundle& all = *m_module->sliceData().getParameters()->getBundle("AlignConfidence");
    ZxParamBundle& own = *all.getBundle("slice000" + std::to_string(m_module->getEditableSlice()));
    own.setNum("reference", m_module->getReferenceSlice());
    own.setReals("confidence", {confidence});
    m_module->rotateAll(7);
    m_module->translateAll(3, -1.5f);
    return 1;
  }
  static ZxAutoAlignMethod* create(ZxAlignSlices* module) { return new SureMethod(module); }
  static inline double confidence = 0.5;
};

// It is that of the pair as the method has left it: not once it is moved, and again when that is taken back.
TEST_F(QxPairQualityDockTest, AConfidenceEndsWithAMoveOfThePair)
{
  ZxAutoAlignMethodFabrique::getInstance()->registerAutoAlignMethodPlugIn("Sure", &SureMethod::create);
  open();
  const auto shown = [this] {
    std::string all;
    for (int row = 0; row < 6; ++row)
      all += cell(row, PairQualityModel::ConfidenceColumn).toStdString() + ";";
    return all;
  };
  const auto shows = [&](const std::string& expected) {
    const bool isSo = QTest::qWaitFor([&] { return shown() == expected; });
    EXPECT_EQ(shown(), expected);
    return isSo;
  };
  editor->changeAlignMode(module->methods().back().id);
  goTo(3, 1);
  editor->doAutoAlign();
  SureMethod::confidence = 0.75;
  goTo(2, -1);
  editor->doAutoAlign(); // the same pair, as it lies from the other side
  goTo(4, 1);
  editor->doAutoAlign();
  EXPECT_TRUE(shows(";;0.75;0.75;;;"));
  goTo(3, 1);
  key(Qt::Key_Right); // and all above with it: the next pair stays as it is
  EXPECT_TRUE(shows(";;;0.75;;;"));
  EXPECT_FALSE(module->liesAsMatched(2));
  EXPECT_TRUE(module->liesAsMatched(4));
  EXPECT_TRUE(module->liesAsMatched(6)) << "nothing is said of it";
  editor->undoRedo()->undo();
  EXPECT_TRUE(shows(";;0.75;0.75;;;"));
  editor->transformAll();
  for (int i = 0; i < 7; ++i) key(Qt::Key_Up, Qt::ControlModifier);
  EXPECT_TRUE(shows(";;;;;;"));
  for (int i = 0; i < 7; ++i) editor->undoRedo()->undo();
  editor->save();
  connect(module->portData, greyStack({12, 10, 7}));
  connect(module->portData, stack); // as it is read from a file
  EXPECT_TRUE(shows(";;0.75;0.75;;;"));
  goTo(4, 1);
  editor->mirror(); // both pairs of it
  EXPECT_TRUE(shows(";;0.75;;;;"));
}

} // namespace
