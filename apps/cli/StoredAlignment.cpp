#include "StoredAlignment.h"

#include <cstring>

namespace cli {
namespace {

/// Voxels that are all 0.
class BlankVoxels : public ZxReadOnlyVoxelSource {
public:
  explicit BlankVoxels(const ZxLatticeShape& shape) : m_shape(shape) {}

  bool readSlice(int, void* dst) override
  {
    std::memset(dst, 0, m_shape.sliceBytes());
    return true;
  }
  bool readBox(const ZxBox3i& box, void* dst) override
  {
    std::memset(dst, 0, box.size.voxels() * m_shape.voxelBytes());
    return true;
  }

private:
  ZxLatticeShape m_shape;
};

constexpr const char* kApplied = "AlignIsApplied";

/// Size of the slices that the stored alignment belongs to.
ZxDims alignedDims(const io::VolumeInfo& info)
{
  ZxDims dims = info.shape.dims;
  const ZxParamBundle* alignment = info.parameters.findBundle("AlignTransform");
  int size[2];
  if (alignment && isAligned(info.parameters) && alignment->findNums("ImageSize", 2, size) && size[0] > 0 &&
      size[1] > 0) {
    dims.width = size[0];
    dims.height = size[1];
  }
  return dims;
}

} // namespace

bool hasAlignment(const ZxParamBundle& parameters)
{
  return parameters.findBundle("AlignTransform") != nullptr;
}

bool isAligned(const ZxParamBundle& parameters)
{
  int applied = 0;
  return parameters.findNums(kApplied, 1, &applied) && applied != 0;
}

McHandle<ZxField3> alignmentCarrier(const io::VolumeInfo& info)
{
  const ZxLatticeShape shape{alignedDims(info), 1, McPrimType::UInt8};
  McHandle<ZxField3> field =
      ZxField3::create(std::make_unique<ZxLattice3>(shape, std::make_unique<BlankVoxels>(shape)));
  field->parameters() = info.parameters;
  field->parameters().setNum(kApplied, 0);
  // With a window of its own nobody looks for the range of the values.
  field->parameters().setReals("DataWindow", {0.0, 255.0});
  return field;
}

} // namespace cli
