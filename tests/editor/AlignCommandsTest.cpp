#include "AlignCommands.h"
#include "editor/EditorTest.h"
#include "support/TestFolders.h"
#include "zx/ZxInterpreter.h"
#include "zxalign/QxViewAlignSlicesCoronal.h"

#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QFile>
#include <QImage>

#include <sys/resource.h>

#include <csignal>
#include <fstream>
#include <optional>
#include <sstream>

namespace {

/// The editor of "aligner" with a stack of seven slices, driven by scripts.
class AlignCommandsTest : public EditorTest {
protected:
  void SetUp() override
  {
    EditorTest::SetUp();
    module->setLabel("aligner");
    lines.emplace(); // The window has taken over the messages.
  }
  void TearDown() override
  {
    lines.reset();
    EditorTest::TearDown();
  }
  static ZxScriptResult run(const std::string& command)
  {
    return ZxInterpreter::getTheInterpreter().eval("aligner " + command);
  }
  /// The result of a command that succeeds.
  static std::string result(const std::string& command)
  {
    const ZxScriptResult ended = run(command);
    EXPECT_TRUE(ended.succeeded()) << command << ": " << ended.text;
    return ended.text;
  }
  static std::string failure(const std::string& command)
  {
    const ZxScriptResult ended = run(command);
    EXPECT_FALSE(ended.succeeded()) << command;
    return ended.text;
  }
  /// The messages that a command leaves.
  std::string messages(const std::string& command)
  {
    lines->take();
    result(command);
    std::string all;
    for (const std::string& line : lines->take()) all += (all.empty() ? "" : "|") + line;
    return all;
  }
  std::optional<Console> lines;
  static std::string file(const std::string& name) { return fileInTestHome(name); }
};

TEST_F(AlignCommandsTest, EveryCommandCountsItsArguments)
{
  for (const AlignCommand& command : alignCommands()) {
    std::vector<std::string> arguments;
    std::istringstream words{std::string(command.arguments)};
    for (std::string word; words >> word;) arguments.push_back("0");
    arguments.push_back("surplus");
    for (int i = 0; i < 2; ++i) { // one too many, then one too few
      std::string call(command.name);
      for (const std::string& argument : arguments) call += " " + argument;
      const std::string usage = "aligner " + std::string(command.name) +
                                (command.arguments.empty() ? "" : " " + std::string(command.arguments));
      EXPECT_EQ(failure(call), command.countError.empty() ? "wrong # args: should be \"" + usage + "\""
                                                          : std::string(command.countError));
      if (arguments.size() < 2) break;
      arguments.resize(arguments.size() - 2);
    }
  }
  EXPECT_NE(failure("noSuchCommand").find("unknown command \"noSuchCommand\""), std::string::npos);
  EXPECT_EQ(result("getTypeId"), "ZxAlignSlices") << "what the class does not know goes to its base";
}

TEST_F(AlignCommandsTest, ChoosePairAndModes)
{
  result("setSliceNumber 4.4");
  EXPECT_EQ(result("getSliceNumber"), "4");
  EXPECT_EQ(result("getReferenceSlice"), "3");
  result("setSliceNumber 70");
  result("setSliceNumber nonsense"); // is 0: at the end of the stack the side changes
  EXPECT_EQ(result("getSliceNumber"), "0");
  EXPECT_EQ(result("getEditableSlice"), "lower");
  result("setEditableSlice upper");
  EXPECT_EQ(side(), 1);
  EXPECT_TRUE(isChecked("upper"));
  EXPECT_EQ(messages("setEditableSlice middle"), "usage: setEditableSlice <lower | upper>");
  result("setReferenceSlice 6");
  result("setReferenceSlice 7");
  result("setReferenceSlice -1");
  EXPECT_EQ(result("getReferenceSlice"), "6");
  result("setFixReferenceSlice 2");
  EXPECT_EQ(result("getFixReferenceSlice"), "1");
  EXPECT_EQ(result("getReferenceSlice"), "6") << "the one that was chosen is fixed";
  EXPECT_TRUE(host->findChild<QAction*>("fixReferenceAction")->isChecked());
  result("setFixReferenceSlice 0");
  EXPECT_EQ(result("getFixReferenceSlice"), "0");
  result("setTransformAll 0");
  EXPECT_EQ(result("getTransformAll"), "0");

  result("setAlignMode 3");
  EXPECT_EQ(result("getAlignMode"), "3");
  EXPECT_EQ(messages("setAlignMode -1") + messages("setAlignMode 4"), "");
  EXPECT_EQ(result("getAlignMode"), "3");
  result("setAlignMode CenterAlignMethod");
  EXPECT_EQ(result("getAlignMode"), "0");
  EXPECT_TRUE(isChecked("alignCenters"));
  EXPECT_NE(failure("setAlignMode Magic").find("there are CenterAlignMethod, OptimizeAlignMethod"),
            std::string::npos);
  result("setEditMode 3");
  EXPECT_EQ(result("getEditMode") + result("getAlignMode"), "32") << "landmarks are edited for their method";
  result("setEditMode 1");
  EXPECT_EQ(result("getEditMode"), "1");
  for (const auto& [mode, shown] : {std::pair("0", 1), {"1", 2}, {"2", 3}, {"3", 4}, {"4", 4}, {"-1", 4}}) {
    EXPECT_EQ(messages(std::string("setViewMode ") + mode), "");
    EXPECT_EQ(editor->drawArea()->viewMode(), shown) << mode;
  }
}

TEST_F(AlignCommandsTest, MoveTurnAndTakeBack)
{
  result("setTransformAll 0");
  const std::string n = result("getSliceNumber");
  result("translate 1.5 -2");
  result("rotate 0x1p-1");
  result("translate 0.5 0trailing");
  EXPECT_EQ(result("getTransform " + n), "2 -2 0.5 0");
  EXPECT_EQ(messages("rotate inf"), "rotate: the number is not finite");
  result("mirror");
  EXPECT_EQ(result("getTransform " + n), "2 -2 0.5 1");
  result("undo");
  result("undo");
  EXPECT_EQ(result("getTransform " + n), "1.5 -2 0.5 0");
  result("redo");
  EXPECT_EQ(result("getTransform " + n), "2 -2 0.5 0");
  result("setTransform 6 1 2 -3.25 1");
  EXPECT_EQ(result("getTransform 6"), "1 2 -3.25 1");
  EXPECT_EQ(failure("setTransform 7 1 2 3 0"), failure("getTransform 7"));
  EXPECT_EQ(failure("setTransform 0 1 2 x 0"), "expected floating-point number but got \"x\"");
  result("save");
  result("reset");
  EXPECT_EQ(result("getTransform " + n) + result("getTransform 6"), "0 0 0 01 2 -3.25 1");
  result("resetAll");
  EXPECT_EQ(result("getTransform 6"), "0 0 0 0");
  result("read");
  EXPECT_EQ(result("getTransform 6"), "1 2 -3.25 1");
  EXPECT_EQ(result("getQuality").substr(0, 2), "0.");
}

TEST_F(AlignCommandsTest, PlaceLandmarks)
{
  EXPECT_EQ(result("getLandmarkCount"), "2");
  result("setLandmark 5 1 -3 17");
  EXPECT_EQ(result("getLandmark 5 1"), "-3 17");
  result("setLandmark 5 2 1 1");
  result("setLandmark 7 0 1 1");
  EXPECT_EQ(messages("getLandmark 7 0"), "Invalid slice number");
  EXPECT_EQ(messages("getLandmark 5 2"), "Invalid landmark number");
  result("addLandmark 4 9");
  EXPECT_EQ(result("getLandmarkCount"), "3");
  result("removeLandmark 0");
  EXPECT_EQ(result("getLandmark 5 0"), "-3 17");
  for (const char* edit : {"addLandmark 4 9", "removeLandmark 2"}) {
    module->setModified(false);
    result(edit);
    EXPECT_TRUE(module->isModified()) << edit;
  }
  EXPECT_EQ(failure("removeLandmark 0"), "a slice keeps at least two landmarks");
  std::ofstream table(file("landmarks.csv"));
  table << "slice,index,x,y\n";
  for (int k = 0; k < 7; ++k)
    for (int i = 0; i < 3; ++i) table << k << ',' << i << ',' << k << ',' << 2 * i << '\n';
  table.close();
  result("setLandmarks " + file("landmarks.csv"));
  EXPECT_EQ(result("getLandmark 6 2"), "6 4");
  EXPECT_NE(failure("setLandmarks /nowhere.csv").find("/nowhere.csv could not be opened"), std::string::npos);
  result("undo");
  EXPECT_EQ(result("getLandmarkCount"), "2");
}

TEST_F(AlignCommandsTest, ShowViewsAndWriteAPicture)
{
  result("viewZoomIn");
  EXPECT_FLOAT_EQ(editor->drawArea()->zoom(), 2.0f);
  result("viewZoomOut");
  EXPECT_FLOAT_EQ(editor->drawArea()->zoom(), 1.0f);
  result("showXZView 1");
  result("showSagittalView 1");
  EXPECT_TRUE(editor->getOrthoViewManager()->getCoronalView());
  result("setYZViewSliceNumber 3");
  result("setCoronalViewSliceNumber 17");
  EXPECT_EQ(messages("setCoronalViewSliceNumber 18"), "Invalid coronal/xz slice number in OrthoViewManager");
  EXPECT_EQ(result("getSagittalViewSliceNumber") + " " + result("getXZViewSliceNumber"), "3 17");
  result("orthoViewZoomIn");
  EXPECT_FLOAT_EQ(editor->getOrthoViewManager()->getZoom(), 2.0f);
  result("orthoViewZoomOut");
  result("setOrthoViewLineWidth 100");
  result("setOrthoViewZWindow 1");
  EXPECT_EQ(editor->getOrthoViewManager()->getVisibleRangeZMax(), current() + 1);
  const McTypedData2D& shown = editor->getOrthoViewManager()->getCoronalView()->image();
  const auto column = [&shown, z = current()] {
    return std::vector<unsigned char>(shown.row(z), shown.row(z) + shown.rowBytes());
  };
  const auto before = column();
  result("translate 5 0");
  EXPECT_NE(column(), before);
  result("rotate 30");
  EXPECT_EQ(child<QDoubleSpinBox>("rotation")->value(), 30.0);
  result("setOrthoViewAutoUpdate 0");
  const auto isBlack = [&shown, z = current()] {
    return std::all_of(shown.row(z), shown.row(z) + shown.rowBytes(), [](int v) { return v == 0; });
  };
  result("setTransform " + std::to_string(current()) + " 1 1 0 0");
  EXPECT_TRUE(isBlack());
  result("updateOrthoViews");
  EXPECT_FALSE(isBlack()) << "also while nothing is updated by itself";
  result("showTransformToolBar 1");
  result("showPairQuality 1");
  EXPECT_TRUE(editor->findChild<QDockWidget*>("pairQualityDock")->isVisible());
  result("showPairQuality 0");
  result("setCheckerboardSize 20");
  EXPECT_EQ(editor->getChessFieldSize(), 20);
  result("redrawInhibit 2");
  result("redrawInhibit -5");
  EXPECT_EQ(editor->getVisibleToolbar().size(), 3);
  result("snapshot " + file("editor.png"));
  const QImage picture(QString::fromStdString(file("editor.png")));
  EXPECT_EQ(picture.size(), editor->size());
  EXPECT_FALSE(picture.hasAlphaChannel());
  EXPECT_EQ(editor->getVisibleToolbar().size(), 3);
  EXPECT_NE(failure("snapshot /nowhere/editor.png").find("/nowhere/editor.png could not be written"),
            std::string::npos);
  std::ofstream(file("notes.unknown")) << "mine";
  failure("snapshot " + file("notes.unknown"));
  std::string notes;
  std::ifstream(file("notes.unknown")) >> notes;
  EXPECT_EQ(notes, "mine");
  EXPECT_EQ(editor->getVisibleToolbar().size(), 3) << "also when it fails";
  result("showYZView 0");
  EXPECT_FALSE(editor->getOrthoViewManager()->getSagittalView());
}

TEST_F(AlignCommandsTest, ASnapshotThatFindsNoRoomLeavesNothing)
{
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit small{1000, before.rlim_max}; // as on a full disk
  auto* const handler = std::signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &small);
  const std::string problem = failure("snapshot " + file("full.png"));
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
  EXPECT_NE(problem.find("full.png could not be written: File too large."), std::string::npos) << problem;
  EXPECT_FALSE(QFile::exists(QString::fromStdString(file("full.png"))));
}

TEST_F(AlignCommandsTest, AlignResampleAndSet)
{
  result("setOption iterations 3");
  EXPECT_EQ(result("getOption iterations"), "3");
  EXPECT_NE(failure("setOption iterations many").find("iterations"), std::string::npos);
  EXPECT_NE(failure("getOption nothing").find("there is no option \"nothing\"; there are"),
            std::string::npos);
  result("setRotationAllowed 0");
  EXPECT_EQ(result("getRotationAllowed"), "0");
  result("align");
  result("alignAll");
  EXPECT_EQ(result("getOutputDims"), "24 18");
  result("setOutputDims 24 20");
  EXPECT_EQ(result("getOutputDims"), "24 20");
  EXPECT_EQ(messages("setOutputDims 23 40"), "usage: setOutputDims <Width> <Heigth>|"
                                             "The new dimensions must be bigger than the old dimensions.");
  EXPECT_EQ(failure("resampleToResult"), "there is no result yet");
  result("resample");
  ASSERT_TRUE(module->getResult());
  result("resampleToResult");
  result("setMaxIntProjectionRefThickness 0");
  result("setMaxIntProjectionSliceThickness 4");
  EXPECT_EQ(result("getMaxIntProjectionRefThickness") + result("getMaxIntProjectionSliceThickness"), "14");
  EXPECT_EQ(module->portMaxIntNumSlices.getValue(1), 4.0f);
  result("setUseMaxIntProjection 1");
  EXPECT_EQ(result("getUseMaxIntProjection"), "1");
  EXPECT_EQ(module->portDisplayMode.getValue(), 1);
}

TEST_F(AlignCommandsTest, WithoutAnEditorNothingThatNeedsOneHappens)
{
  result("close");
  EXPECT_EQ(result("isEditorOpen"), "0");
  const int n = current();
  for (const AlignCommand& command : alignCommands()) {
    if (command.needs != AlignCommand::Needs::Editor) continue;
    std::string call(command.name);
    std::istringstream words{std::string(command.arguments)};
    for (std::string word; words >> word;) call += " 1";
    EXPECT_EQ(messages(call), "") << call;
  }
  EXPECT_EQ(current(), n);
  result("translate 1 1");
  EXPECT_EQ(result("getTransform " + std::to_string(n)), "0 0 0 0");
  EXPECT_EQ(messages("setAlignMode 2") + messages("setViewMode 2"),
            "invalid mode; 0<=mode<=3invalid mode; 0<=mode<=3");
  EXPECT_EQ(messages("getLandmark 0 0"), "Invalid slice number");
  EXPECT_EQ(failure("snapshot " + file("none.png")), "Viewer not active");
  EXPECT_EQ(messages("performance"), "");

  // What is read meanwhile is what the window shows when it opens, and can be taken back.
  const std::string slice = std::to_string(n);
  result("setTransform " + slice + " 4 3 0 0");
  EXPECT_TRUE(module->saveAlignment());
  result("setTransform " + slice + " 9 9 0 0");
  result("read");
  EXPECT_EQ(result("getTransform " + slice), "4 3 0 0");
  EXPECT_EQ(editor->findChild<QSpinBox*>("translationX")->value(), 4);
  result("undo");
  EXPECT_EQ(result("getTransform " + slice), "9 9 0 0");
  result("edit");
  EXPECT_EQ(result("isEditorOpen"), "1");
}

// The arguments are such that commands succeed now and then.
TEST_F(AlignCommandsTest, NoCommandWithWhateverArgumentsBreaksTheModule)
{
  host->hide(); // so that closing asks nobody
  Random random(11);
  static const char* words[] = {"0",
                                "1",
                                "3",
                                "6",
                                "7",
                                "-1",
                                "2.5",
                                "1e30",
                                "-9",
                                "upper",
                                "{}",
                                "x",
                                "999999999999",
                                "lower",
                                "nan",
                                "iterations",
                                "24",
                                "40",
                                "0.25",
                                "5",
                                "OptimizeAlignMethod"};
  std::size_t failed = 0;
  for (int i = 0; i < 3000; ++i) {
    const auto which = static_cast<std::size_t>(random.below(static_cast<int>(alignCommands().size())));
    const AlignCommand& command = alignCommands()[which];
    if (command.name == "setOutputDims" || command.name == "setOption") continue; // sizes of gigabytes
    std::string call(!command.alias.empty() && random.below(2) ? command.alias : command.name);
    for (int k = random.below(6); k > 0; --k)
      call += std::string(" ") + words[random.below(static_cast<int>(std::size(words)))];
    SCOPED_TRACE(call);
    failed += !run(call).succeeded();
    ASSERT_EQ(module->getSlices().size(), 7u);
    ASSERT_TRUE(current() >= 0 && current() < 7 && reference() >= 0 && reference() < 7);
    ASSERT_TRUE(side() == 1 || side() == -1);
    for (const SliceInfo& s : module->getSlices())
      ASSERT_EQ(s.landmarks.size(), module->getSlice(0).landmarks.size());
  }
  EXPECT_GT(failed, 300u);
  EXPECT_LT(failed, 2990u);
}

TEST_F(AlignCommandsTest, TheManualNamesEveryCommand)
{
  std::ifstream in(std::string(ZX_SOURCE_DIR) + "/zxalign/help/ZxAlignSlices.html");
  std::ostringstream page;
  page << in.rdbuf();
  ASSERT_FALSE(page.str().empty());
  for (const AlignCommand& command : alignCommands()) {
    const std::string usage =
        std::string(command.name) +
        (command.arguments.empty() ? "" : " <i>" + std::string(command.arguments) + "</i>");
    EXPECT_NE(page.str().find("<code>" + usage + "</code>"), std::string::npos) << usage;
    if (command.alias.empty()) continue;
    EXPECT_NE(page.str().find("<code>" + std::string(command.alias) + "</code>"), std::string::npos)
        << command.alias;
  }
}

} // namespace
