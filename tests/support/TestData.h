#pragma once

#include <cstdlib>
#include <filesystem>

/// Folder of the real stacks: the environment variable ZX_TEST_DATA, else shared/data beside the checkout.
/// Tests that need a file there skip when it is absent.
inline std::filesystem::path testDataFolder()
{
  if (const char* const folder = std::getenv("ZX_TEST_DATA")) return folder;
  return std::filesystem::path(ZX_SOURCE_DIR).parent_path() / "shared" / "data";
}
