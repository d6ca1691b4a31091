#include "zx/ZxInterpreter.h"
#include "zx/ZxMessage.h"
#include "zxalign/ZxAlignSlices.h"
#include "zxalign/ZxAutoAlignMethod.h"
#include "zxalign/ZxAutoAlignMethodFabrique.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

std::string library(const std::string& name) { return ZX_TEST_PLUGINS "/" + name + ".so"; }

/// A registry that is made with a list of plug-ins, and what was printed meanwhile.
struct Discovery {
  explicit Discovery(const std::string& list)
    : before(ZxMessage::getTheMsg()->setSink([this](const auto& line) { printed += line; }))
  {
    ZxInterpreter::getTheInterpreter().setVar(kZxAlignPlugInVariable, list.c_str());
    registry = std::make_unique<ZxAutoAlignMethodFabrique>();
    ZxMessage::getTheMsg()->setSink(before);
  }

  /// "4 Shift" for every plug-in method, that is from number 4 on.
  std::vector<std::string> methods() const
  {
    McDArray<int> ids;
    McDArray<McString> names;
    registry->getAutoAlignMethods(ids, names);
    std::vector<std::string> found;
    for (std::size_t i = 0; i < ids.size(); ++i)
      if (ids[i] >= 4) found.push_back(std::to_string(ids[i]) + " " + names[i].str());
    return found;
  }
  /// True when the built-in methods are there.
  bool hasBuiltIn() const
  {
    const std::unique_ptr<ZxAutoAlignMethod> method(
        registry->createAutoAlignMethod(nullptr, "OptimizeAlignMethod"));
    return method != nullptr;
  }
  std::string problem(std::size_t i) const { return registry->getPlugIns().at(i).problem; }

  std::string printed;
  ZxMessage::Sink before;
  std::unique_ptr<ZxAutoAlignMethodFabrique> registry;
};

using Names = std::vector<std::string>;

const std::string adding = "{Good addShift " + library("AddingPlugIn") + "}";

bool contains(const std::string& text, const std::string& part)
{
  return text.find(part) != std::string::npos;
}

TEST(PlugInDiscovery, NumbersMethodsInTheOrderOfTheList)
{
  const Discovery d(adding + " {Twins addTwins " + library("AddingPlugIn") + "} {T addThrower " +
                    library("ThrowingPlugIn") + "}");
  EXPECT_EQ(d.methods(), (Names{"4 Shift", "5 Shift", "6 OptimizeAlignMethod", "7 Thrower", "8 Unmakeable"}));
  ASSERT_EQ(d.registry->getPlugIns().size(), 3u);
  EXPECT_EQ(d.registry->getPlugIns()[1].name, "Twins");
  for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(d.problem(i), "");
}

// By name the first of two methods is found: the built-in one, which is no Shift.
TEST(PlugInDiscovery, FindsTheFirstOfTwoMethodsOfOneName)
{
  const Discovery d("{Twins addTwins " + library("AddingPlugIn") + "}");
  const std::unique_ptr<ZxAutoAlignMethod> byName(
      d.registry->createAutoAlignMethod(nullptr, "OptimizeAlignMethod"));
  const std::unique_ptr<ZxAutoAlignMethod> byNumber(d.registry->createAutoAlignMethod(nullptr, 5));
  ASSERT_TRUE(byName && byNumber);
  EXPECT_NE(typeid(*byName), typeid(*byNumber));
}

/// One entry that cannot be used, between two that could, and a part of what is said about it.
struct Fault {
  const char* name;
  const char* entry;            ///< as it stands, or the first item where symbol and library follow
  const char* symbolAndLibrary; ///< the library is one of the tests
  const char* said;
};

void PrintTo(const Fault& fault, std::ostream* out) { *out << fault.name; }

class UnusableEntry : public testing::TestWithParam<Fault> {};

TEST_P(UnusableEntry, EndsDiscoverySilentlyAndLeavesTheOthers)
{
  const Fault& fault = GetParam();
  std::string entry = fault.entry;
  if (*fault.symbolAndLibrary) {
    const auto items = *ZxInterpreter::splitList(fault.symbolAndLibrary);
    entry = "{" + entry + " " + items[0] + " " + library(items[1]) + "}";
  }
  const Discovery d(adding + " " + entry + " {Late addTwins " + library("AddingPlugIn") + "}");
  EXPECT_EQ(d.methods(), Names{"4 Shift"});
  EXPECT_TRUE(d.hasBuiltIn());
  EXPECT_EQ(d.printed, "");
  ASSERT_EQ(d.registry->getPlugIns().size(), 3u);
  EXPECT_EQ(d.problem(0), "");
  EXPECT_TRUE(contains(d.problem(1), fault.said)) << d.problem(1);
  EXPECT_EQ(d.registry->getPlugIns()[2].name, "Late");
  EXPECT_EQ(d.problem(2), "one before it in the list could not be used");
}

INSTANTIATE_TEST_SUITE_P(
    PlugInDiscovery, UnusableEntry,
    testing::Values(
        Fault{"Missing", "Missing", "addShift NoSuchLibrary", "NoSuchLibrary"},
        Fault{"NoLibrary", "Text", "addShift NoLibrary", "NoLibrary"},
        Fault{"SymbolMissing", "Symbol", "noSuchSymbol AddingPlugIn", "lacks the symbol noSuchSymbol"},
        Fault{"OtherVersion", "Other", "addOther OtherVersionPlugIn", "built for the plug-in interface 9999"},
        Fault{"Unnumbered", "Unnumbered", "addUnnumbered UnnumberedPlugIn",
              "does not say which plug-in interface"},
        Fault{"Throwing", "Throwing", "throwHalfWay ThrowingPlugIn", "the licence has run out"},
        Fault{"TwoItems", "{two items}", "", "three items"},
        Fault{"FourItems", "{a b c four}", "", "three items"},
        Fault{"MalformedEntry", "\\{unbalanced", "", "three items"}),
    [](const auto& test) { return test.param.name; });

TEST(PlugInDiscovery, LoadsNothingOfAListThatIsNone)
{
  const Discovery d(adding + " {unbalanced");
  EXPECT_EQ(d.methods(), Names());
  EXPECT_TRUE(d.hasBuiltIn());
  EXPECT_EQ(d.printed, "");
  ASSERT_EQ(d.registry->getPlugIns().size(), 1u);
  EXPECT_EQ(d.problem(0), "the list of plug-ins is no well-formed list");
}

TEST(PlugInDiscovery, EndsExceptionsAtTheCall)
{
  ZxInterpreter::getTheInterpreter().setVar(
      kZxAlignPlugInVariable, ("{T addThrower " + library("ThrowingPlugIn") + "} " + adding).c_str());
  std::string printed;
  const ZxMessage::Sink before = ZxMessage::getTheMsg()->setSink([&](const auto& line) { printed = line; });
  McHandle<ZxAlignSlices> module(new ZxAlignSlices);
  ZxLatticeShape shape;
  shape.dims = {5, 4, 3};
  const McHandle<ZxField3> volume = ZxField3::create(ZxLattice3::create(shape));
  module->portData.connect(volume.get());
  module->fire();

  EXPECT_EQ(module->doLayout(4), 0);
  EXPECT_TRUE(contains(printed, "no room for a spectrum")) << printed;
  for (const SliceInfo& slice : module->getSlices()) EXPECT_EQ(slice.translationX, 0.0f);
  EXPECT_EQ(module->doLayout(5), 0);
  EXPECT_TRUE(contains(printed, "Unmakeable")) << printed;
  EXPECT_EQ(module->alignAll(4, 0, {}), 0);
  EXPECT_EQ(module->alignAll(6, 0, {}), 2);
  EXPECT_EQ(module->getSlice(2).translationX, 6.0f);
  EXPECT_EQ(module->getSlice(2).translationY, -4.0f);
  ZxMessage::getTheMsg()->setSink(before);
}

} // namespace
