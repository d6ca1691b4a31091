#include "zx/ZxPackage.h"

#include "zx/ZxDSO.h"
#include "zx/ZxObjectPool.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <unistd.h>

namespace fs = std::filesystem;

namespace {

class ZxPackageTest : public testing::Test {
protected:
  ZxPackageTest() : folder(fs::temp_directory_path() / ("zx_package_test_" + std::to_string(getpid())))
  {
    fs::create_directories(folder);
    const std::string path = ":/no/such/folder:" + folder.string() + "::" + ZX_LIBRARY_FOLDER;
    setenv("ZX_PACKAGE_PATH", path.c_str(), 1);
  }
  ~ZxPackageTest() override
  {
    unsetenv("ZX_PACKAGE_PATH");
    fs::remove_all(folder);
  }
  fs::path folder;
};

bool contains(const std::string& text, const std::string& part)
{
  return text.find(part) != std::string::npos;
}

} // namespace

TEST_F(ZxPackageTest, LoadsThePackageAndItsClasses)
{
  EXPECT_EQ(ZxPackage::load("zxalign"), "");
  EXPECT_EQ(ZxPackage::load("zxalign"), "");
  ZxObject* const module = ZxObjectPool::getThePool().create("ZxAlignSlices");
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(module->getTypeId().name(), "ZxAlignSlices");
  ZxObjectPool::getThePool().clear();
}

TEST_F(ZxPackageTest, SaysWhatIsWrong)
{
  EXPECT_TRUE(contains(ZxPackage::load("nothing"), "The package nothing was not found: no libnothing.so"));
  std::ofstream(folder / "libtext.so") << "no library";
  EXPECT_TRUE(contains(ZxPackage::load("text"), "The package text could not be loaded: "));
  fs::create_directory(folder / "libfolder.so");
  EXPECT_TRUE(contains(ZxPackage::load("folder"), "was not found"));
  fs::create_symlink(fs::path(ZX_LIBRARY_FOLDER) / "libhost_zx.so", folder / "libother.so");
  EXPECT_TRUE(contains(ZxPackage::load("other"), "libother.so is no package: it lacks orvelpackage_other."));
}

TEST_F(ZxPackageTest, FindsSymbolsOfLibraries)
{
  ZxDSO library;
  EXPECT_EQ(library.getSymbol("orvelpackage_zxalign"), nullptr); // nothing is open
  EXPECT_NE(library.open("/no/such/library.so"), 0);
  EXPECT_FALSE(library.getError().empty());
  ASSERT_EQ(library.open((fs::path(ZX_LIBRARY_FOLDER) / "libzxalign.so").c_str()), 0);
  auto* const buildId = reinterpret_cast<int (*)()>(library.getSymbol("orvelpackage_zxalign"));
  ASSERT_NE(buildId, nullptr);
  EXPECT_EQ(buildId(), kZxBuildId);
  for (const char* entry : {"orvelpackage_zxalign_init", "orvelpackage_zxalign_finish",
                            "soconstructor_zxalign", "sodestructor_zxalign"})
    EXPECT_NE(library.getSymbol(entry), nullptr) << entry;
  EXPECT_EQ(library.getSymbol("orvelpackage_none"), nullptr);
}
