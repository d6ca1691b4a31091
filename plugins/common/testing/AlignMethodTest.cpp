#include "AlignMethodTest.h"

#include "zx/ZxInterpreter.h"
#include "zx/ZxObjectPool.h"
#include "zx/ZxPackage.h"

#include <algorithm>

void AlignMethodTest::load(const std::string& name, const std::string& entry, const std::string& file)
{
  const std::string words[] = {name, entry, file};
  const std::string list[] = {ZxInterpreter::makeList(words)};
  ZxInterpreter::getTheInterpreter().setVar(kZxAlignPlugInVariable, ZxInterpreter::makeList(list).c_str());
  ASSERT_EQ(ZxPackage::load("zxalign"), "");
}

void AlignMethodTest::SetUp()
{
  m_module =
      McHandle<ZxCompModule>(dynamic_cast<ZxCompModule*>(ZxObjectPool::getThePool().create("ZxAlignSlices")));
  ASSERT_TRUE(m_module);
  control = dynamic_cast<ZxAlignControl*>(m_module.get());
  for (const ZxAlignControl::Method& method : control->methods())
    if (method.name == m_method) id = method.id;
  ASSERT_GE(id, 4); // the first four are built in
  ZxLatticeShape shape;
  shape.dims = {width, height, m_slices};
  volume = ZxField3::create(ZxLattice3::create(shape));
}

void AlignMethodTest::TearDown()
{
  m_module = {};
  ZxObjectPool::getThePool().clear();
}

void AlignMethodTest::fill(int k, const TestSlice& content)
{
  auto* out = static_cast<unsigned char*>(volume->getLattice()->beginWrite(k));
  std::copy(content.pixels.begin(), content.pixels.end(), out);
  volume->getLattice()->endWrite(k);
}

void AlignMethodTest::connect()
{
  m_module->portData.connect(volume.get());
  m_module->fire();
  ASSERT_EQ(control->numSlices(), m_slices);
}

void AlignMethodTest::expectTransform(const ZxAlignTransform& transform, double degrees, double tx, double ty,
                                      double degreesOff, double pixelsOff)
{
  EXPECT_LT(angleBetween(static_cast<double>(transform.angleDegrees), degrees), degreesOff)
      << transform.angleDegrees;
  EXPECT_NEAR(static_cast<double>(transform.tx), tx, pixelsOff);
  EXPECT_NEAR(static_cast<double>(transform.ty), ty, pixelsOff);
}
