#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

/// Folders of its own for one run of a test program, so that no setting of the user reaches the tests, none
/// of theirs is left behind, and the cases of one program can run at the same time.
class TestFolders {
public:
  TestFolders()
  {
    std::filesystem::create_directories(ZX_TEST_HOMES);
    std::string home = ZX_TEST_HOMES "/XXXXXX";
    if (!mkdtemp(home.data())) std::abort();
    m_home = home;
    setenv("HOME", home.c_str(), 1);
    setenv("XDG_CONFIG_HOME", (home + "/.config").c_str(), 1);
    setenv("XDG_STATE_HOME", (home + "/.local/state").c_str(), 1);
    setenv("XDG_DATA_HOME", (home + "/.local/share").c_str(), 1);
    setenv("XDG_CACHE_HOME", (home + "/.cache").c_str(), 1);
    setenv("XDG_RUNTIME_DIR", home.c_str(), 1);
    setenv("LOCPATH", ZX_TEST_LOCALES, 1);
  }
  ~TestFolders()
  {
    std::error_code ignored;
    std::filesystem::remove_all(m_home, ignored);
  }
  TestFolders(const TestFolders&) = delete;
  TestFolders& operator=(const TestFolders&) = delete;

private:
  std::filesystem::path m_home;
};

/// A file of this name in the home folder of this run.
inline std::string fileInTestHome(const std::string& name)
{
  return std::string(std::getenv("HOME")) + "/" + name;
}
