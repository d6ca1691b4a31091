// main() of every test program without windows.
#include "support/TestFolders.h"

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
  const TestFolders folders;
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
