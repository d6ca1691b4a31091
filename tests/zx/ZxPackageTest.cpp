#include "zx/ZxPackage.h"

#include "support/TestFolders.h"
#include "zx/ZxObjectPool.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

TEST(ZxPackage, LoadsThePackageAndSaysWhatIsWrongWithOthers)
{
  const fs::path folder = fileInTestHome("packages");
  fs::create_directories(folder / "libfolder.so");
  std::ofstream(folder / "libtext.so") << "no library";
  fs::create_symlink(fs::path(ZX_LIBRARY_FOLDER) / "libhost_zx.so", folder / "libother.so");
  setenv("ZX_PACKAGE_PATH", (":/no/such/folder:" + folder.string() + "::" + ZX_LIBRARY_FOLDER).c_str(), 1);

  for (int i = 0; i < 2; ++i) EXPECT_EQ(ZxPackage::load("zxalign"), "");
  ZxObject* const module = ZxObjectPool::getThePool().create("ZxAlignSlices");
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(module->getTypeId().name(), "ZxAlignSlices");
  EXPECT_EQ(ZxObjectPool::getThePool().create("ZxNothing"), nullptr);
  ZxObjectPool::getThePool().clear();

  const std::pair<const char*, const char*> cases[] = {
      {"nothing", "The package nothing was not found: no libnothing.so"},
      {"folder", "The package folder was not found"},
      {"text", "The package text could not be loaded: "},
      {"other", "libother.so is no package: it lacks orvelpackage_other."}};
  for (const auto& [name, sentence] : cases)
    EXPECT_NE(ZxPackage::load(name).find(sentence), std::string::npos) << ZxPackage::load(name);
  fs::remove_all(folder);
}
