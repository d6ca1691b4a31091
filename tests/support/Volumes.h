#pragma once

#include "zx/ZxField3.h"

#include <cstring>
#include <vector>

/// Fills a lattice of T with value(x, y, k, c).
template <class T, class F>
void fillLattice(ZxLattice& lattice, const F& value)
{
  const ZxDims& d = lattice.getDims();
  for (int k = 0; k < d.slices; ++k) {
    T* out = static_cast<T*>(lattice.beginWrite(k));
    for (int y = 0; y < d.height; ++y)
      for (int x = 0; x < d.width; ++x)
        for (int c = 0; c < lattice.getNumDataVars(); ++c) *out++ = static_cast<T>(value(x, y, k, c));
    lattice.endWrite(k);
  }
}

/// A field of T of the kind that its lattice asks for.
template <class T, class F>
McHandle<ZxField3> makeField(const ZxDims& dims, int numDataVars, const F& value)
{
  auto lattice = ZxLattice3::create({dims, numDataVars, mcPrimTypeOf<T>, ZxCoordType::Uniform});
  fillLattice<T>(*lattice, value);
  McHandle<ZxField3> field = ZxField3::create(std::move(lattice));
  field->setLabel("stack.tif");
  return field;
}

template <class T, class F>
McHandle<ZxUniformLabelField3> makeLabels(const ZxDims& dims, const F& value)
{
  auto lattice = ZxLabelLattice3::create({dims, 1, mcPrimTypeOf<T>, ZxCoordType::Uniform});
  fillLattice<T>(*lattice, value);
  auto labels = mcMake<ZxUniformLabelField3>(std::move(lattice));
  labels->setLabel("labels.tif");
  return labels;
}

/// All values of a lattice of T, slice after slice.
template <class T>
std::vector<T> valuesOf(ZxLattice& lattice)
{
  const ZxLatticeShape& shape = lattice.shape();
  const std::size_t n = shape.dims.slicePixels() * static_cast<std::size_t>(shape.numDataVars);
  std::vector<T> values(n * static_cast<std::size_t>(shape.dims.slices));
  for (int k = 0; k < shape.dims.slices; ++k)
    lattice.readSlice(k, values.data() + n * static_cast<std::size_t>(k));
  return values;
}
