#include "zx/ZxInterpreter.h"
#include "zx/ZxWorkArea.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

/// A script in a file that goes away with the object.
class Script {
public:
  explicit Script(const std::string& text)
    : m_path(std::filesystem::temp_directory_path() /
             ("ZxInterpreterTest-" + std::to_string(reinterpret_cast<std::uintptr_t>(this)) + ".tcl"))
  {
    std::ofstream(m_path) << text;
  }
  ~Script() { std::filesystem::remove(m_path); }
  Script(const Script&) = delete;
  Script& operator=(const Script&) = delete;

  std::string path() const { return m_path.string(); }

private:
  std::filesystem::path m_path;
};

ZxInterpreter& interpreter() { return ZxInterpreter::getTheInterpreter(); }

TEST(ZxInterpreter, HoldsGlobalVariablesAsText)
{
  EXPECT_EQ(interpreter().getVar("::never_set"), nullptr);
  EXPECT_TRUE(interpreter().setVar("::text", "{two words} \xC3\xA4 \\n"));
  EXPECT_STREQ(interpreter().getVar("::text"), "{two words} \xC3\xA4 \\n");
  EXPECT_STREQ(interpreter().getVar("text"), "{two words} \xC3\xA4 \\n");
  EXPECT_FALSE(interpreter().setVar("::no_such_namespace::text", "1"));
}

TEST(ZxInterpreter, LetsNothingHappenLaterWhileWorkGoesOn)
{
  interpreter().eval("set happened 0; after 0 {set happened 1}");
  ZxWorkArea::getTheWorkArea()->setBusy(true);
  interpreter().handleEvents();
  EXPECT_STREQ(interpreter().getVar("happened"), "0");
  ZxWorkArea::getTheWorkArea()->setBusy(false);
  interpreter().handleEvents();
  EXPECT_STREQ(interpreter().getVar("happened"), "1");
}

TEST(ZxInterpreter, EvaluatesScriptsAtGlobalLevelAndAsUtf8)
{
  const Script script("set fromScript \"caf\xC3\xA9\"\nproc counted {} {return [llength {a b c}]}\n"
                      "lappend collected one {two words}\nset count [counted]\n");
  EXPECT_EQ(interpreter().evalFile(script.path()), "");
  EXPECT_STREQ(interpreter().getVar("fromScript"), "caf\xC3\xA9");
  EXPECT_STREQ(interpreter().getVar("count"), "3");
  EXPECT_STREQ(interpreter().getVar("collected"), "one {two words}");
}

TEST(ZxInterpreter, SaysInOneSentenceWhatIsWrongWithAScript)
{
  const Script script("set before 1\n\nno_such_command with arguments\nset after 1\n");
  EXPECT_EQ(interpreter().evalFile(script.path()), "The start-up script " + script.path() +
                                                       " failed in line 3: invalid command name "
                                                       "\"no_such_command\".");
  EXPECT_STREQ(interpreter().getVar("before"), "1");
  EXPECT_EQ(interpreter().getVar("after"), nullptr);
  EXPECT_EQ(interpreter().evalFile("missing.tcl"), "The start-up script missing.tcl is no file.");
  EXPECT_EQ(interpreter().evalFile(std::filesystem::temp_directory_path().string()),
            "The start-up script " + std::filesystem::temp_directory_path().string() + " is no file.");
}

TEST(ZxInterpreter, SplitsAndMakesLists)
{
  using List = std::vector<std::string>;
  EXPECT_EQ(ZxInterpreter::splitList(" a {b c}  \"d e\" {} "), (List{"a", "b c", "d e", ""}));
  EXPECT_EQ(ZxInterpreter::splitList(""), List());
  EXPECT_EQ(ZxInterpreter::splitList("a {b"), std::nullopt);
  EXPECT_EQ(ZxInterpreter::splitList("{a}b"), std::nullopt);
  const List awkward{"", "two words", "brace {", "$dollar [command]", "back\\slash", "quote\""};
  EXPECT_EQ(ZxInterpreter::splitList(ZxInterpreter::makeList(awkward).c_str()), awkward);
}

TEST(ZxInterpreter, KeepsTheNumberFormat)
{
  setenv("LC_ALL", "de_DE.UTF-8", 1); // taken up when the interpreter is made
  const Script script("set product [expr {1.5 * 3}]\n");
  EXPECT_EQ(interpreter().evalFile(script.path()), "");
  EXPECT_STREQ(interpreter().getVar("product"), "4.5");
  EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
}

} // namespace
