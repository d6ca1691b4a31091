#pragma once

#include <cstdlib>
#include <string>

/// Gives a test program folders of its own, so that no setting of the user reaches the tests and none of
/// theirs is left behind, whoever starts them.
inline void useTestFolders()
{
  const std::string home = ZX_TEST_HOME;
  setenv("HOME", home.c_str(), 1);
  setenv("XDG_CONFIG_HOME", (home + "/.config").c_str(), 1);
  setenv("XDG_STATE_HOME", (home + "/.local/state").c_str(), 1);
  setenv("XDG_DATA_HOME", (home + "/.local/share").c_str(), 1);
  setenv("XDG_CACHE_HOME", (home + "/.cache").c_str(), 1);
  setenv("LOCPATH", ZX_TEST_LOCALES, 1);
}
