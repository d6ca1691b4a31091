#pragma once

#include "zx/ZxData.h"

#include <memory>

/// The interface type "lattice": whatever gives a ZxLattice derives its type record from this one.
class ZxLatticeInterface {
public:
  static const McTypeInfo& getClassTypeId();
};

/// The interface type "label lattice": its lattice is a ZxLabelLattice.
class ZxLabelLatticeInterface {
public:
  static const McTypeInfo& getClassTypeId();
};

/// A field on a three-dimensional grid. Owns its lattice, which is never null.
class ZxField3 : public ZxSpatialData {
public:
  static const McTypeInfo& getClassTypeId();
  const McTypeInfo& getTypeId() const override { return getClassTypeId(); }
  explicit ZxField3(std::unique_ptr<ZxLattice3> lattice) : m_lattice(std::move(lattice)) {}
  ZxLattice* getLattice() noexcept override { return m_lattice.get(); }

  /// The kind of field that holds a lattice: a colour field for colour, a stacked one for slices at positions
  /// of their own, else a regular scalar field.
  static McHandle<ZxField3> create(std::unique_ptr<ZxLattice3> lattice);

private:
  std::unique_ptr<ZxLattice3> m_lattice;
};

/// A field of one (or several) scalar values per voxel, equally spaced.
class ZxRegScalarField3 : public ZxField3 {
public:
  using ZxField3::ZxField3;
  static const McTypeInfo& getClassTypeId();
  const McTypeInfo& getTypeId() const override { return getClassTypeId(); }
};

/// A field of scalars whose slices lie at positions of their own.
class ZxStackedScalarField3 : public ZxField3 {
public:
  using ZxField3::ZxField3;
  static const McTypeInfo& getClassTypeId();
  const McTypeInfo& getTypeId() const override { return getClassTypeId(); }
};

/// A field of colours: four values of 8 bits per voxel.
class ZxUniformColorField3 : public ZxField3 {
public:
  using ZxField3::ZxField3;
  static const McTypeInfo& getClassTypeId();
  const McTypeInfo& getTypeId() const override { return getClassTypeId(); }
};

/// A volume whose voxels stay in a file and are read slice by slice.
class ZxExternalData : public ZxField3 {
public:
  using ZxField3::ZxField3;
  static const McTypeInfo& getClassTypeId();
  const McTypeInfo& getTypeId() const override { return getClassTypeId(); }
};

/// A field of labels. Owns its lattice, which is never null.
class ZxUniformLabelField3 : public ZxSpatialData {
public:
  static const McTypeInfo& getClassTypeId();
  const McTypeInfo& getTypeId() const override { return getClassTypeId(); }
  explicit ZxUniformLabelField3(std::unique_ptr<ZxLabelLattice3> lattice) : m_lattice(std::move(lattice)) {}
  ZxLattice* getLattice() noexcept override { return m_lattice.get(); }

private:
  std::unique_ptr<ZxLabelLattice3> m_lattice;
};
