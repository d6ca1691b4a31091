#include "support/Volumes.h"

#include <gtest/gtest.h>

TEST(ZxData, ComposesLabels)
{
  const auto label = [](const char* base) { return ZxData::composeLabel(base, "align").str(); };
  EXPECT_EQ(label("stack.tif"), "stack.align");
  EXPECT_EQ(label("a.b.nrrd"), "a.b.align");
  EXPECT_EQ(label("stack"), "stack.align");
  EXPECT_EQ(label(".hidden"), ".hidden.align");
  EXPECT_EQ(label(""), ".align");
}

TEST(ZxData, KnowsWhetherItIsSaved)
{
  const auto data = mcMake<ZxSpatialData>();
  EXPECT_FALSE(data->isUnsaved());
  data->touch();
  EXPECT_TRUE(data->isUnsaved());
  data->setSaved();
  EXPECT_FALSE(data->isUnsaved());
  EXPECT_EQ(data->getLattice(), nullptr);
}

TEST(ZxFileGeometry, KeepsExactNumbersUnlessTheBoxSaysOtherwise)
{
  const ZxDims dims{11, 7, 1};
  auto field = makeField<std::uint8_t>(dims, 1, [](auto...) { return 0; });
  ZxFileGeometry g;
  g.origin[1] = -1e-9;
  g.voxelSize[0] = 0.1;
  g.voxelSize[1] = 1.0 / 3.0;
  g.voxelSize[2] = 50;
  g.unit = "nm";
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
