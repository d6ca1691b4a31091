#include "zx/ZxCommand.h"
#include "support/Console.h"
#include "support/Volumes.h"
#include "zx/ZxFileAccess.h"
#include "zx/ZxInterpreter.h"
#include "zx/ZxModule.h"
#include "zx/ZxObjectPool.h"
#include "zx/ZxRecordingWorkArea.h"

#include <gtest/gtest.h>

namespace {

/// Files that are names only.
class MadeUpFiles : public ZxFileAccess {
public:
  std::vector<ZxFileFormat> readableFormats() const override { return writableFormats(); }
  std::vector<ZxFileFormat> writableFormats() const override
  {
    return {{"TIFF", {".tif", ".tiff"}}, {"NRRD", {".nrrd"}}};
  }
  std::string checkWritable(const ZxSpatialData&, const std::string&) const override { return {}; }

  ZxReadRequest asked;
  std::vector<std::string> written;

private:
  ZxFileOutcome readVolume(const ZxReadRequest& request) override
  {
    asked = request;
    if (request.inputs.front() == "damaged") return {ZxFileOutcome::State::Failed, {}, "It is damaged."};
    auto field = makeField<std::uint8_t>({3, 2, 2}, 1, [](int x, int, int, int) { return x; });
    field->setLabel(McString(request.inputs.front()));
    return {ZxFileOutcome::State::Done, field, {}};
  }
  ZxFileOutcome writeVolume(const ZxSpatialData&, const std::string& path) override
  {
    if (path.starts_with("full/")) return {ZxFileOutcome::State::Failed, {}, "The disk is full."};
    written.push_back(path);
    return {};
  }
};

class Scripted : public ZxCompModule {
public:
  Scripted()
    : ZxCompModule({&ZxRegScalarField3::getClassTypeId()}),
      mask(this, "mask", {&ZxLabelLatticeInterface::getClassTypeId()}),
      numbers(this, "numbers", "", {{"a", 0.1f}, {"b", 2.0f}}),
      menu(this, "menu", "", {"one", "two words"}, 1), buttons(this, "buttons", "", {"go", "stop"})
  {
  }
  static const McTypeInfo& getClassTypeId()
  {
    static const McTypeInfo type("Scripted", {&ZxCompModule::getClassTypeId()},
                                 []() -> McHandable* { return new Scripted; });
    return type;
  }
  const McTypeInfo& getTypeId() const override { return getClassTypeId(); }
  void update() override { buttons.setButtonSensitive(1, portData.isConnected()); }
  void compute() override
  {
    ++passes;
    if (buttons.getHit() == 1) setResult(1, makeField<float>({1, 1, 1}, 1, [](auto...) { return 0; }).get());
  }

  ZxConnection mask;
  ZxPortFloatTextN numbers;
  ZxPortMultiMenu menu;
  ZxPortButtonList buttons;
  int passes = 0;
};

struct Case {
  const char* script;
  const char* expected;
};

class ZxCommandTest : public testing::Test {
protected:
  ZxCommandTest()
  {
    Scripted::getClassTypeId();
    auto owned = std::make_unique<MadeUpFiles>();
    files = owned.get();
    ZxFileAccess::setTheFileAccess(std::move(owned));
  }
  ~ZxCommandTest() override
  {
    pool.clear();
    ZxFileAccess::setTheFileAccess(nullptr);
  }

  /// The result, or the error behind "!".
  static std::string eval(const std::string& script)
  {
    const ZxScriptResult result = ZxInterpreter::getTheInterpreter().eval(script);
    return (result.succeeded() ? "" : "!") + result.text;
  }
  static void expect(std::initializer_list<Case> cases)
  {
    for (const Case& c : cases) EXPECT_EQ(eval(c.script), c.expected) << c.script;
  }
  Scripted& module() { return dynamic_cast<Scripted&>(*pool.find("m")); }

  ZxObjectPool& pool = ZxObjectPool::getThePool();
  MadeUpFiles* files;
};

} // namespace

TEST_F(ZxCommandTest, HostCommandsMakeListAndRemoveObjects)
{
  expect({{"load", "!wrong # args: should be \"load ?-labels|-field? ?-pad? FILE ?FILE ...?\""},
          {"load -labels", "!wrong # args: should be \"load ?-labels|-field? ?-pad? FILE ?FILE ...?\""},
          {"load -fast a.tif", "!unknown option \"-fast\": should be -labels, -field, -pad or --"},
          {"load damaged", "!It is damaged."},
          {"objects", ""},
          {"load {my stack.tif}", "my stack.tif"},
          {"load {my stack.tif}", "my stack.tif (2)"},
          {"load -labels -pad -- -b c", "-b"},
          {"create", "!wrong # args: should be \"create CLASS ?NAME?\""},
          {"create Scripted m n", "!wrong # args: should be \"create CLASS ?NAME?\""},
          {"create Scripted {}", "!a label cannot be empty"},
          {"create Scripted", "Scripted"},
          {"create Scripted m", "m"},
          {"objects Scripted", "Scripted m"},
          {"objects a b", "!wrong # args: should be \"objects ?CLASS?\""},
          {"objects Nothing", "!there is no class \"Nothing\""},
          {"remove", "!wrong # args: should be \"remove NAME ?NAME ...?\""},
          {"remove m nothing", "!there is no object \"nothing\""},
          {"remove m Scripted", ""},
          {"objects", "{my stack.tif} {my stack.tif (2)} -b"},
          {"m getLabel", "!invalid command name \"m\""},
          {"help a b", "!wrong # args: should be \"help ?NAME?\""},
          {"help nothing", "!there is no object \"nothing\""}});
  EXPECT_EQ(files->asked.inputs, (std::vector<std::string>{"-b", "c"}));
  EXPECT_EQ(files->asked.as, ZxReadAs::Labels);
  EXPECT_EQ(files->asked.unequalSlices, ZxUnequalSlices::PadToLargest);
  EXPECT_TRUE(eval("create Nothing").starts_with("!unknown class \"Nothing\": should be "));
  EXPECT_NE(eval("help").find("remove NAME ?NAME ...?"), std::string::npos);
  EXPECT_NE(eval("help -b").find("parameters get PATH"), std::string::npos);
}

TEST_F(ZxCommandTest, EveryObjectIsACommandByItsLabel)
{
  Console console;
  eval("load a; load {b c}");
  expect({{"a", "!wrong # args: should be \"a COMMAND ?ARG ...?\""},
          {"a getLabel x", "!wrong # args: should be \"a getLabel\""},
          {"{b c} setLabel", "!wrong # args: should be \"{b c} setLabel LABEL\""},
          {"{b c} getTypeId", "ZxRegScalarField3"},
          {"{b c} setLabel a", "a (2)"},
          {"{b c} getLabel", "!invalid command name \"b c\""},
          {"a setLabel {}", "!a label cannot be empty"},
          {"a setLabel z::y", "z::y"},
          {"z::y getLabel", "z::y"},
          {"namespace eval q {z::y setLabel a; a getLabel}", "a"}});
  EXPECT_TRUE(eval("a nothing").starts_with("!unknown command \"nothing\": should be getLabel, setLabel, "));
  EXPECT_EQ(console.take(), Lines());
  EXPECT_EQ(eval("a setLabel set"), "set (2)");
  EXPECT_EQ(console.take(),
            Lines{"\"set\" is a command of the interpreter: the object is called \"set (2)\"."});
  EXPECT_EQ(eval("set x 5"), "5");
  eval("proc {set (2)} {} {return mine}");
  pool.clear();
  EXPECT_EQ(eval("{set (2)}"), "mine") << "what a script has put in the place of an object stays";
  eval("rename {set (2)} {}");
}

TEST_F(ZxCommandTest, ParametersKeepTheirKindAndAreReachedByPath)
{
  eval("load a");
  ZxParamBundle& parameters = dynamic_cast<ZxData&>(*pool.find("a")).parameters();
  parameters.setReals("Turn", {0.1});
  parameters.setString("odd/name", "7");
  pool.find("a");
  expect({{"a parameters", "!wrong # args: should be \"a parameters list|get|set|remove ?ARG ...?\""},
          {"a parameters put", "!unknown command \"put\": should be list, get, set or remove"},
          {"a parameters get", "!wrong # args: should be \"a parameters get PATH\""},
          {"a parameters set x", "!wrong # args: should be \"a parameters set PATH VALUE ?VALUE ...?\""},
          {"a parameters set Size 3 4", ""},
          {"a parameters get SIZE", "3 4"},
          {"a parameters set Size 3 4.5", ""},
          {"a parameters get Size", "3.0 4.5"},
          {"a parameters set turn 2", ""},
          {"a parameters get Turn", "2.0"},
          {"a parameters set odd/name 8", ""},
          {"a parameters get odd/name", "8"},
          {"a parameters set In/Deep/Text {two words}", ""},
          {"a parameters get in/deep/text", "two words"},
          {"a parameters list", "Turn odd/name Size In"},
          {"a parameters list In/Deep", "Text"},
          {"a parameters list Turn", "!there is no bundle \"Turn\""},
          {"a parameters get In", "!\"In\" is a bundle: parameters list gives what it holds"},
          {"a parameters set In 1", "!\"In\" is a bundle and holds no value"},
          {"a parameters set Turn/x 1", "!there is no parameter \"Turn/x\""},
          {"a parameters set x 1 two", "!several values have to be numbers"},
          {"a parameters remove In/Deep", ""},
          {"a parameters remove In/Deep", "!there is no parameter \"In/Deep\""},
          {"a parameters list In", ""}});
  EXPECT_TRUE(std::holds_alternative<std::string>(parameters.entries()[1].value));
  EXPECT_TRUE(dynamic_cast<ZxData&>(*pool.find("a")).isUnsaved());
}

TEST_F(ZxCommandTest, SavesUnderTheNameOrInTheFormat)
{
  eval("load a");
  dynamic_cast<ZxData&>(*pool.find("a")).touch();
  expect({{"a save", "!wrong # args: should be \"a save FILE ?FORMAT?\""},
          {"a save b.tif TIFF x", "!wrong # args: should be \"a save FILE ?FORMAT?\""},
          {"a save b.tif gif", "!unknown format \"gif\": should be TIFF or NRRD"},
          {"a save full/b.tif", "!The disk is full."}});
  EXPECT_TRUE(dynamic_cast<ZxData&>(*pool.find("a")).isUnsaved());
  expect({{"a save b.tif", "b.tif"},
          {"a save B.TIFF tif", "B.TIFF"},
          {"a save b.tif nrrd", "b.tif.nrrd"},
          {"a save .nrrd .NRRD", ".nrrd.nrrd"}});
  EXPECT_EQ(files->written, (std::vector<std::string>{"b.tif", "B.TIFF", "b.tif.nrrd", ".nrrd.nrrd"}));
  EXPECT_FALSE(dynamic_cast<ZxData&>(*pool.find("a")).isUnsaved());
  EXPECT_EQ(dynamic_cast<ZxData&>(*pool.find("a")).getFileName(), ".nrrd.nrrd");
}

TEST_F(ZxCommandTest, ModulesAndTheirPortsAreDrivenByName)
{
  eval("create Scripted m; load {a b}");
  expect({{"m ports", "data mask numbers menu buttons"},
          {"m ports x", "!wrong # args: should be \"m ports\""},
          {"m data", "!wrong # args: should be \"m data COMMAND ?ARG ...?\""},
          {"m data push", "!unknown command \"push\": should be connect or getValue"},
          {"m data connect", "!wrong # args: should be \"m data connect OBJECT|none\""},
          {"m data connect nothing", "!there is no object \"nothing\""},
          {"m mask connect {a b}", "!mask does not accept \"a b\", which is a ZxRegScalarField3"},
          {"m data connect m", "!data does not accept \"m\", which is a Scripted"},
          {"m buttons hit 1", "!the button \"stop\" cannot be pressed now"},
          {"m data connect {a b}", ""},
          {"m data getValue", "a b"},
          {"m numbers getValue", "0.1 2.0"},
          {"m numbers getValue 2", "!there is no field 2: they are counted from 0 to 1"},
          {"m numbers getValue x", "!expected integer but got \"x\""},
          {"m numbers setValue 1 x", "!expected floating-point number but got \"x\""},
          {"m numbers setValue 1 1e99", "!expected a number of single precision but got \"1e99\""},
          {"m numbers setValue 1 -7.25; m numbers setValue 4", ""},
          {"m numbers getValue", "4.0 -7.25"},
          {"m menu setValue 2", "!there is no entry 2: they are counted from 0 to 1"},
          {"m menu setValue 0; m menu getValue", "0"},
          {"m menu setValue {two words}; m menu getValue", "1"},
          {"m menu getEntries", "one {two words}"}});
  EXPECT_EQ(module().passes, 1) << "values wait for fire";
  expect({{"m fire now", "!wrong # args: should be \"m fire\""},
          {"m fire", ""},
          {"m result", ""},
          {"m result x", "!expected integer but got \"x\""},
          {"m result -1", "!there is no result -1"},
          {"m buttons hit", "!wrong # args: should be \"m buttons hit INDEX\""},
          {"m buttons hit 2", "!there is no button 2: they are counted from 0 to 1"},
          {"m buttons hit 1", ""},
          {"m result 1", "stack.tif"},
          {"m data connect none; m data getValue", ""}});
  EXPECT_EQ(module().passes, 3) << "a button runs the module";
}

TEST_F(ZxCommandTest, AScriptThatNeverEndsIsStopped)
{
  for (const char* script : {"while 1 {}", "while 1 {catch {error x}}", "after 1000000", "vwait forever",
                             "proc f {} {while 1 {catch {f2}}}; f"}) {
    ZxRecordingWorkArea area;
    area.interruptAtQuery(2);
    const ZxScriptResult result = ZxInterpreter::getTheInterpreter().eval(script);
    EXPECT_EQ(result.state, ZxScriptResult::State::Stopped) << script;
    EXPECT_FALSE(area.isWorking());
  }
  EXPECT_EQ(eval("expr {1 + 1}"), "2") << "the next script runs";
}

TEST_F(ZxCommandTest, QuitEndsAScriptWhateverItCatches)
{
  ZxInterpreter& interpreter = ZxInterpreter::getTheInterpreter();
  int status = -1;
  interpreter.setQuitHandler([&](int s) { status = s; });
  EXPECT_EQ(eval("quit 1 2"), "!wrong # args: should be \"quit ?STATUS?\"");
  EXPECT_EQ(eval("quit now"), "!expected integer but got \"now\"");
  EXPECT_EQ(status, -1);
  for (const char* script : {"catch {quit 3}; set after 1", "proc f {} {catch {exit 3}; set ::after 1}; f"}) {
    status = -1;
    EXPECT_EQ(interpreter.eval(script).state, ZxScriptResult::State::Quit);
    EXPECT_EQ(status, 3);
    EXPECT_EQ(interpreter.getVar("after"), nullptr);
  }
  interpreter.setQuitHandler({});
}

TEST_F(ZxCommandTest, PrintsToWhereTheProgramWants)
{
  Lines lines;
  ZxInterpreter& interpreter = ZxInterpreter::getTheInterpreter();
  interpreter.setOutput([&](const std::string& line) { lines.push_back(line); });
  EXPECT_EQ(eval("echo one {two  three}; puts -nonewline a; puts b\\nc; puts stderr \xC3\xA4; echo"), "");
  interpreter.setOutput({});
  EXPECT_EQ(lines, (Lines{"one two  three", "ab", "c", "\xC3\xA4", ""}));
}

TEST_F(ZxCommandTest, CompletesWhatIsTyped)
{
  const ZxInterpreter& interpreter = ZxInterpreter::getTheInterpreter();
  using Words = std::vector<std::string>;
  eval("create Scripted m; load {my stack}");
  EXPECT_EQ(interpreter.completions("my"), (Words{"{my stack}"}));
  EXPECT_EQ(interpreter.completions("set x [{my st"), (Words{"{my stack}"}));
  EXPECT_EQ(interpreter.completions("{my stack} get"), (Words{"getLabel", "getTypeId"}));
  EXPECT_EQ(interpreter.completions("puts x; m b"), (Words{"buttons"}));
  EXPECT_EQ(interpreter.completions("m menu "), (Words{"getEntries", "getValue", "setValue"}));
  EXPECT_EQ(interpreter.completions("m menu getValue "), Words());
  EXPECT_EQ(interpreter.completions("m data connect "), (Words{"{my stack}", "none"}));
  EXPECT_EQ(interpreter.completions("m mask connect "), (Words{"none"}));
  EXPECT_EQ(interpreter.completions("remove {my"), (Words{"{my stack}"}));
  EXPECT_FALSE(ZxInterpreter::isComplete("foreach x {1 2} {"));
  EXPECT_TRUE(ZxInterpreter::isComplete("foreach x {1 2} {\n}"));
}
