#pragma once

#include <itkImageIOBase.h>
#include <itkMetaDataObject.h>

#include <string>
#include <vector>

namespace io::testing {

/// A file as a reader of others sees it.
struct IndependentVolume {
  std::vector<std::size_t> sizes;
  std::vector<double> spacing, origin;
  std::size_t components = 0;
  std::string voxels;
  itk::MetaDataDictionary pairs;
};

inline IndependentVolume readIndependently(itk::ImageIOBase& reader, const std::string& path)
{
  reader.SetFileName(path);
  reader.ReadImageInformation();
  IndependentVolume volume;
  itk::ImageIORegion region(reader.GetNumberOfDimensions());
  for (unsigned axis = 0; axis < reader.GetNumberOfDimensions(); ++axis) {
    volume.sizes.push_back(reader.GetDimensions(axis));
    volume.spacing.push_back(reader.GetSpacing(axis));
    volume.origin.push_back(reader.GetOrigin(axis));
    region.SetSize(axis, reader.GetDimensions(axis));
  }
  reader.SetIORegion(region);
  volume.components = reader.GetNumberOfComponents();
  volume.voxels.resize(static_cast<std::size_t>(reader.GetImageSizeInBytes()));
  reader.Read(volume.voxels.data());
  volume.pairs = reader.GetMetaDataDictionary();
  return volume;
}

/// What stands under a key; empty when there is nothing.
inline std::string pairOf(const IndependentVolume& volume, const std::string& key)
{
  std::string value;
  itk::ExposeMetaData(volume.pairs, key, value);
  return value;
}

} // namespace io::testing
