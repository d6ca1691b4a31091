#pragma once

#include "support/Console.h"
#include "support/Random.h"
#include "support/Volumes.h"
#include "zx/ZxObjectPool.h"
#include "zx/ZxRecordingWorkArea.h"
#include "zxalign/ZxAlignData.h"
#include "zxalign/ZxAlignSlices.h"

#include <gtest/gtest.h>

/// A module with everything around it recorded.
class ModuleTest : public testing::Test {
protected:
  ~ModuleTest() override
  {
    module = {};
    ZxObjectPool::getThePool().clear();
  }
  void connect(ZxConnection& port, const McHandle<ZxData>& source)
  {
    ASSERT_TRUE(port.connect(source.get()));
    module->fire();
  }
  void press(int button)
  {
    module->portAction.hit(button);
    module->fire();
  }
  void setTransform(int k, const SliceXForm& x) { module->getSlice(k).setXForm(x); }
  /// Exactly this transform.
  bool isAt(int k, const SliceXForm& x) { return SliceInfo(SliceXForm(module->getSlice(k))) == SliceInfo(x); }
  std::vector<int> editableImage() { return image(module->getComputedEditableSlicePtr()); }
  std::vector<int> referenceImage() { return image(module->getComputedReferenceSlicePtr()); }
  std::vector<int> image(const unsigned char* p)
  {
    return {p, p + module->getDataLattice()->getDims().slicePixels()};
  }

  Console console;
  ZxRecordingWorkArea work;
  McHandle<ZxAlignSlices> module = mcMake<ZxAlignSlices>();
};

/// A grey stack whose voxels all differ from their neighbours in every direction.
inline int greyAt(int x, int y, int k, int c = 0)
{
  return (x * 7 + y * 31 + k * 57 + c * 101 + x * y) % 251;
}
inline McHandle<ZxField3> greyStack(const ZxDims& dims) { return makeField<std::uint8_t>(dims, 1, greyAt); }
