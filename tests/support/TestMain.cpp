// main() of every test program: tests run with folders of their own, so that no setting of the user reaches
// them and none of theirs is left behind, whoever starts them.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

int main(int argc, char** argv)
{
  const std::string home = ZX_TEST_HOME;
  setenv("HOME", home.c_str(), 1);
  setenv("XDG_CONFIG_HOME", (home + "/.config").c_str(), 1);
  setenv("LOCPATH", ZX_TEST_LOCALES, 1);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
