#pragma once

#include "PlainFile.h"
#include "TiffDecoder.h"
#include "TiffDescription.h"

#include <span>
#include <vector>

namespace io {

/// What the first page of a file says beside its pixels.
struct TiffNotes {
  std::string description;
  double pixelsPerUnit[2] = {0, 0};
  std::uint16_t resolutionUnit = RESUNIT_INCH;

  explicit TiffNotes(TIFF* tiff);
};

/// Reads the pages of a TIFF file as the slices of a volume.
class TiffReader final : public VolumeReader {
public:
  explicit TiffReader(const std::string& path);
  void readSlice(int k, void* dst) override;
  bool readsInAnyOrder() const override { return true; }
  bool readRows(int k, int y, int rows, void* dst) override;
  void checkUnchanged(int k) override;
  SliceSize sliceSize(int k) const override;
  std::string sliceName(int k) const override;

private:
  void readPages();
  void keepPages(const std::vector<std::size_t>& indices);
  void dropExtraPages();
  void describe(const TiffNotes& first);
  void selectFirstVolume(const OmeDescription& ome);
  void findContiguousSlices(const ImageJDescription& imageJ);
  void checkPage(const TiffPage& page);
  void findShape();
  McPrimType findType(const StoredVoxels& voxels);
  /// Rows of a slice that has no directory of its own, as they are stored.
  std::span<std::byte> readBeyondPage(std::size_t k, std::size_t y, std::size_t rows);
  std::span<std::byte> readBeyondPage(std::size_t k) { return readBeyondPage(k, 0, m_pages.front().height); }

  TiffFile m_file;
  std::uint64_t m_fileBytes;
  FileStamp m_stamp;
  TiffDecoder m_decoder;
  std::vector<TiffPage> m_pages;
  std::vector<std::size_t> m_pageNumbers; ///< of m_pages in the file, counted from 1
  /// Slices that follow the only page without directories of their own, as ImageJ writes above 4 GB; else 0.
  std::size_t m_contiguous = 0;
  std::uint64_t m_firstByte = 0; ///< of these slices
  std::vector<std::byte> m_slice;
};

} // namespace io
