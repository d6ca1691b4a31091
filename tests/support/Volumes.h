#pragma once

#include "zx/ZxField3.h"

#include <vector>

/// Fills a new lattice with value(x, y, k, c).
template <class T, class L, class F>
std::unique_ptr<L> filled(std::unique_ptr<L> lattice, const F& value)
{
  const ZxDims& d = lattice->getDims();
  for (int k = 0; k < d.slices; ++k) {
    T* out = static_cast<T*>(lattice->beginWrite(k));
    for (int y = 0; y < d.height; ++y)
      for (int x = 0; x < d.width; ++x)
        for (int c = 0; c < lattice->getNumDataVars(); ++c) *out++ = static_cast<T>(value(x, y, k, c));
  }
  return lattice;
}

/// A field of T of the kind that its lattice asks for.
template <class T, class F>
McHandle<ZxField3> makeField(const ZxDims& dims, int numDataVars, const F& value)
{
  auto field = ZxField3::create(
      filled<T>(ZxLattice3::create({dims, numDataVars, mcPrimTypeOf<T>, ZxCoordType::Uniform}), value));
  field->setLabel("stack.tif");
  return field;
}

template <class T, class F>
McHandle<ZxUniformLabelField3> makeLabels(const ZxDims& dims, const F& value)
{
  return mcMake<ZxUniformLabelField3>(
      filled<T>(ZxLabelLattice3::create({dims, 1, mcPrimTypeOf<T>, ZxCoordType::Uniform}), value));
}

/// All values of a lattice of T, slice after slice.
template <class T>
std::vector<T> valuesOf(ZxLattice& lattice)
{
  const std::size_t n = lattice.shape().sliceBytes() / sizeof(T);
  std::vector<T> values(n * static_cast<std::size_t>(lattice.getDims().slices));
  for (int k = 0; k < lattice.getDims().slices; ++k)
    lattice.readSlice(k, values.data() + n * static_cast<std::size_t>(k));
  return values;
}
