#pragma once

#include "TiffDecoder.h"
#include "TiffDescription.h"

#include <vector>

namespace io {

/// Reads the pages of a TIFF file as the slices of a volume.
class TiffReader final : public VolumeReader {
public:
  explicit TiffReader(const std::string& path);
  void readSlice(int k, void* dst) override;
  SliceSize sliceSize(int k) const override;
  std::string sliceName(int k) const override;

private:
  void readPages();
  void dropExtraPages();
  void selectFirstVolume(const OmeDescription& ome);
  void checkOneType() const;
  void findShape();
  McPrimType findType(const StoredVoxels& voxels);
  void describe(const std::string& description, double xResolution, double yResolution, int unit);
  bool holdsSlicesBeyondPage(const ImageJDescription& imageJ) const;
  void readBeyondPage(int k, void* dst);

  TiffFile m_file;
  std::uint64_t m_fileBytes;
  TiffDecoder m_decoder;
  std::vector<TiffPage> m_pages;
  std::vector<std::size_t> m_pageNumbers; ///< of m_pages in the file, counted from 1 like readers do
  /// Slices that follow the only page without directories of their own, as ImageJ writes above 4 GB; else 0.
  std::size_t m_contiguous = 0;
  std::uint64_t m_firstByte = 0; ///< of these slices
};

} // namespace io
