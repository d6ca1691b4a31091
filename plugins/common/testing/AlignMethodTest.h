#pragma once

#include "TestSlices.h"
#include "zx/ZxField3.h"
#include "zx/ZxModule.h"
#include "zxalign/ZxAlignControl.h"

#include <gtest/gtest.h>

#include <string>

/// The module with a plug-in, loaded as programs load it, and a volume of slices that the test fills.
class AlignMethodTest : public testing::Test {
protected:
  static constexpr int width = 203, height = 180;

  /// The method that is tested, by its whole name, and how many slices the volume has.
  AlignMethodTest(const std::string& method, int slices) : m_method(method), m_slices(slices) {}

  /// Loads the package with one plug-in: its name, its entry symbol, its file. For SetUpTestSuite().
  static void load(const std::string& name, const std::string& entry, const std::string& file);

  /// Makes the module and the volume. The module gets the volume from connect() on.
  void SetUp() override;
  void TearDown() override;

  void fill(int k, const TestSlice& content);
  void connect();

  /// Angle and translation are those wanted to within a tolerance in degrees and one in pixels.
  static void expectTransform(const ZxAlignTransform& transform, double degrees, double tx, double ty,
                              double degreesOff, double pixelsOff);

  ZxAlignControl* control = nullptr; ///< of the module
  McHandle<ZxField3> volume;
  int id = 0; ///< of the method

private:
  std::string m_method;
  int m_slices;
  McHandle<ZxCompModule> m_module;
};
