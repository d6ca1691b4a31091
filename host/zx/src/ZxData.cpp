#include "zx/ZxData.h"

#include <algorithm>
#include <cmath>

namespace {

/// Keeps what the exact numbers of the file say as long as the box agrees with them; a box that someone has
/// changed wins.
double voxelSizeOf(double stored, float min, float max, int n)
{
  if (n < 2) return stored;
  const double fromBox = (static_cast<double>(max) - static_cast<double>(min)) / (n - 1);
  return std::abs(fromBox - stored) <= 1e-5 * std::abs(stored) ? stored : fromBox;
}

} // namespace

const McTypeInfo& ZxData::getClassTypeId()
{
  static const McTypeInfo type("ZxData", {&ZxObject::getClassTypeId()});
  return type;
}

void ZxData::touch()
{
  ++m_changes;
  changed();
}

void ZxData::setSaved(std::uint64_t changeCount)
{
  m_saved = changeCount;
  changed();
}

McString ZxData::composeLabel(const McString& base, const char* suffix)
{
  const std::string& text = base.str();
  const std::size_t dot = text.rfind('.');
  const bool hasEnding = dot != std::string::npos && dot > 0;
  return McString((hasEnding ? text.substr(0, dot) : text) + "." + suffix);
}

const McTypeInfo& ZxSpatialData::getClassTypeId()
{
  static const McTypeInfo type("ZxSpatialData", {&ZxData::getClassTypeId()});
  return type;
}

ZxDataUse::ZxDataUse(McHandle<ZxSpatialData> data) : m_data(std::move(data))
{
  ++m_data->m_users;
  if (ZxLattice* lattice = m_data->getLattice()) lattice->lock();
}

ZxDataUse::~ZxDataUse()
{
  if (ZxLattice* lattice = m_data->getLattice()) lattice->unlock();
  --m_data->m_users;
}

ZxFileGeometry ZxFileGeometry::of(const ZxSpatialData& data)
{
  ZxFileGeometry g;
  if (const ZxParamBundle* file = data.parameters().findBundle(bundleName)) {
    file->findReals("Origin", 3, g.origin);
    file->findReals("VoxelSize", 3, g.voxelSize);
    file->findString("Unit", g.unit);
  }
  if (const ZxLattice* lattice = data.getLattice()) {
    const ZxBox3f& b = lattice->getBoundingBox();
    const ZxDims& d = lattice->getDims();
    g.voxelSize[0] = voxelSizeOf(g.voxelSize[0], b.xmin, b.xmax, d.width);
    g.voxelSize[1] = voxelSizeOf(g.voxelSize[1], b.ymin, b.ymax, d.height);
    g.voxelSize[2] = voxelSizeOf(g.voxelSize[2], b.zmin, b.zmax, d.slices);
  }
  return g;
}

void ZxFileGeometry::store(ZxParamBundle& parameters) const
{
  ZxParamBundle* file = parameters.getBundle(bundleName);
  if (!file) return;
  file->setReals("Origin", {origin[0], origin[1], origin[2]});
  file->setReals("VoxelSize", {voxelSize[0], voxelSize[1], voxelSize[2]});
  if (!unit.empty()) file->setString("Unit", unit);
}

ZxBox3f ZxFileGeometry::box(const ZxDims& dims) const noexcept
{
  const auto end = [&](int axis, int n) { return static_cast<float>(voxelSize[axis] * (n - 1)); };
  return {0, end(0, dims.width), 0, end(1, dims.height), 0, end(2, dims.slices)};
}
