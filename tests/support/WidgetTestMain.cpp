// main() of every test program with widgets. Without a platform from outside (see zx_add_test) windows are
// shown nowhere.
#include "support/TestFolders.h"

#include <gtest/gtest.h>

#include <QApplication>

#include <clocale>

int main(int argc, char** argv)
{
  const TestFolders folders;
  testing::InitGoogleTest(&argc, argv);
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  QApplication application(argc, argv);
  std::setlocale(LC_NUMERIC, "C"); // The application takes over the locale of the environment.
  return RUN_ALL_TESTS();
}
