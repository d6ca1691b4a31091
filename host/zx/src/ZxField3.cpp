#include "zx/ZxField3.h"

const McTypeInfo& ZxLatticeInterface::getClassTypeId()
{
  static const McTypeInfo type("ZxLattice", {});
  return type;
}

const McTypeInfo& ZxLabelLatticeInterface::getClassTypeId()
{
  static const McTypeInfo type("ZxLabelLattice", {&ZxLatticeInterface::getClassTypeId()});
  return type;
}

const McTypeInfo& ZxField3::getClassTypeId()
{
  static const McTypeInfo type("ZxField3",
                               {&ZxSpatialData::getClassTypeId(), &ZxLatticeInterface::getClassTypeId()});
  return type;
}

McHandle<ZxField3> ZxField3::create(std::unique_ptr<ZxLattice3> lattice)
{
  if (lattice->isColor()) return mcMake<ZxUniformColorField3>(std::move(lattice));
  if (lattice->getCoordType() == ZxCoordType::Stacked)
    return mcMake<ZxStackedScalarField3>(std::move(lattice));
  return mcMake<ZxRegScalarField3>(std::move(lattice));
}

const McTypeInfo& ZxRegScalarField3::getClassTypeId()
{
  static const McTypeInfo type("ZxRegScalarField3", {&ZxField3::getClassTypeId()});
  return type;
}

const McTypeInfo& ZxStackedScalarField3::getClassTypeId()
{
  static const McTypeInfo type("ZxStackedScalarField3", {&ZxField3::getClassTypeId()});
  return type;
}

const McTypeInfo& ZxUniformColorField3::getClassTypeId()
{
  static const McTypeInfo type("ZxUniformColorField3", {&ZxField3::getClassTypeId()});
  return type;
}

const McTypeInfo& ZxExternalData::getClassTypeId()
{
  static const McTypeInfo type("ZxExternalData", {&ZxField3::getClassTypeId()});
  return type;
}

const McTypeInfo& ZxUniformLabelField3::getClassTypeId()
{
  static const McTypeInfo type(
      "ZxUniformLabelField3", {&ZxSpatialData::getClassTypeId(), &ZxLabelLatticeInterface::getClassTypeId()});
  return type;
}
