#include "Arguments.h"

#include <gtest/gtest.h>

namespace {

using orvel::Arguments;
using Mode = Arguments::Mode;
using Words = std::vector<std::string>;

Arguments parse(Words words)
{
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  return Arguments::parse(pointers);
}

TEST(Arguments, WhatFollowsABatchScriptIsItsOwn)
{
  const Arguments a = parse({"-b", "x.tcl", "-s", "--help", "", "a b"});
  EXPECT_EQ(a.problem, "");
  EXPECT_EQ(a.mode, Mode::Batch);
  EXPECT_EQ(a.script, "x.tcl");
  EXPECT_EQ(a.words, (Words{"-s", "--help", "", "a b"}));
}

TEST(Arguments, TheWindowTakesAScriptAndFiles)
{
  const Arguments a = parse({"-s", "x.tcl", "--", "-b", "c.tif"});
  EXPECT_EQ(a.problem, "");
  EXPECT_EQ(a.mode, Mode::Window);
  EXPECT_EQ(a.script, "x.tcl");
  EXPECT_EQ(a.words, (Words{"-b", "c.tif"}));
  EXPECT_EQ(parse({"a.tif", "-s"}).words, (Words{"a.tif", "-s"})) << "options come first";
  EXPECT_EQ(parse({"-"}).words, Words{"-"});
  EXPECT_EQ(parse({"--version", "x"}).mode, Mode::Version);
  EXPECT_EQ(parse({"-h"}).mode, Mode::Help);
}

TEST(Arguments, RefusesWhatMakesNoSense)
{
  EXPECT_EQ(parse({"-q"}).problem, "There is no option -q (see orvel --help).");
  EXPECT_EQ(parse({"-b"}).problem, "The option -b needs the name of a script (see orvel --help).");
  EXPECT_EQ(parse({"-s", ""}).problem, "The option -s needs the name of a script (see orvel --help).");
  EXPECT_EQ(parse({"-s", "a", "-b", "b"}).problem, "Only one script can be run (see orvel --help).");
  EXPECT_EQ(parse({"a.tif", ""}).problem, "The name of a file is empty.");
}

} // namespace
