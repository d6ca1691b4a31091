#include "support/Volumes.h"

#include <gtest/gtest.h>

TEST(ZxData, ComposesLabels)
{
  const std::pair<const char*, const char*> cases[] = {
      {"stack.tif", "stack.align"}, {"a.b.nrrd", "a.b.align"}, {"stack", "stack.align"}, {".a", ".a.align"}};
  for (const auto& [base, label] : cases) EXPECT_EQ(ZxData::composeLabel(base, "align"), label);
}

TEST(ZxFileGeometry, KeepsExactNumbersUnlessTheBoxSaysOtherwise)
{
  const ZxDims dims{11, 7, 1};
  const auto field = makeField<std::uint8_t>(dims, 1, [](auto...) { return 0; });
  const ZxFileGeometry g{{0, -1e-9, 0}, {0.1, 1.0 / 3.0, 50}, "nm"};
  g.store(field->parameters());
  field->getLattice()->setBoundingBox(g.box(dims));
  const ZxFileGeometry back = ZxFileGeometry::of(*field);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(back.origin[i], g.origin[i]);
    EXPECT_EQ(back.voxelSize[i], g.voxelSize[i]); // also along z, where one slice has no extent
  }
  EXPECT_EQ(back.unit, "nm");
  field->getLattice()->setBoundingBox({0, 20, 0, 2, 0, 0});
  EXPECT_DOUBLE_EQ(ZxFileGeometry::of(*field).voxelSize[0], 2.0);
  EXPECT_EQ(ZxFileGeometry::of(*field).voxelSize[1], 1.0 / 3.0);
}
