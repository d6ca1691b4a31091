#include "IoTest.h"

#include "ParameterJson.h"
#include "zx/ZxRecordingWorkArea.h"

#include <tiffio.h>
#include <zlib.h>

#include <cstring>

using namespace iotest;

namespace {

constexpr ZxLatticeShape shapes[] = {
    {.dims = {13, 7, 6}},
    {.dims = {5, 9, 5}, .primType = McPrimType::Int16},
    {.dims = {1, 4, 7}, .primType = McPrimType::Float},
    {.dims = {6, 5, 5}, .numDataVars = 4},
};

class FileVoxelSourceTest : public FolderTest {
protected:
  /// Opens a volume that is to stay in its files and compares it with what is read into memory.
  void expectStays(const std::vector<std::string>& inputs, const io::ReadOptions& options = {})
  {
    SCOPED_TRACE(inputs.front());
    messages.clear();
    const McHandle<ZxField3> expected = io::readVolume(inputs, options);
    const std::string remarks = std::exchange(messages, {});
    const McHandle<ZxField3> opened = io::openVolume(inputs, options);
    EXPECT_EQ(messages, remarks);
    EXPECT_EQ(opened->getTypeId().name(), "ZxExternalData");
    EXPECT_EQ(opened->getLabel(), expected->getLabel());
    EXPECT_EQ(io::toJson(opened->parameters()), io::toJson(expected->parameters()));
    expectSameVoxels(*expected->getLattice(), *opened->getLattice());
    EXPECT_EQ(messages, remarks);
  }
  static void expectSameVoxels(ZxLattice& a, ZxLattice& b)
  {
    ASSERT_EQ(a.shape(), b.shape());
    EXPECT_EQ(a.getBoundingBox(), b.getBoundingBox());
    EXPECT_EQ(b.sliceInMemory(0), nullptr);
    EXPECT_EQ(b.beginWrite(0), nullptr);
    const ZxDims& d = a.getDims();
    Random random(7);
    const auto below = [&](int n) { return static_cast<int>(random.next() % static_cast<unsigned>(n)); };
    for (int i = 0; i < 40; ++i) {
      ZxBox3i box{below(d.width), below(d.height), below(d.slices), {}};
      box.size = {i % 3 ? 1 + below(d.width - box.x) : d.width, 1 + below(d.height - box.y),
                  1 + below(d.slices - box.z)};
      if (box.size.width == d.width) box.x = 0;
      const std::size_t bytes = box.size.voxels() * a.shape().voxelBytes();
      std::string fromA(bytes, 'a'), fromB(bytes, 'b');
      ASSERT_TRUE(a.readBox(box, fromA.data()) && b.readBox(box, fromB.data()));
      ASSERT_EQ(fromA, fromB) << box.x << ' ' << box.y << ' ' << box.z;
      const int k = below(d.slices);
      std::string sliceA(a.shape().sliceBytes(), 'a'), sliceB(sliceA.size(), 'b');
      ASSERT_TRUE(a.readSlice(k, sliceA.data()) && b.readSlice(k, sliceB.data()));
      ASSERT_EQ(sliceA, sliceB) << k;
    }
    float rangeA[2], rangeB[2];
    a.getRange(rangeA[0], rangeA[1]);
    b.getRange(rangeB[0], rangeB[1]);
    EXPECT_TRUE(rangeA[0] == rangeB[0] && rangeA[1] == rangeB[1]);
  }
  /// Bytes that differ from each other and from those in the other order.
  static std::string someBytes(std::size_t n)
  {
    std::string bytes(n, '\0');
    Random random(3);
    for (char& c : bytes) c = static_cast<char>(random.next() >> 24);
    return bytes;
  }
  std::string put(const std::string& name, const std::string& bytes)
  {
    writeBytes(path(name), bytes);
    return path(name);
  }
};

std::string read(ZxSpatialData& data, int k)
{
  std::string bytes(data.getLattice()->shape().sliceBytes(), '\0');
  return data.getLattice()->readSlice(k, bytes.data()) ? bytes : "failed";
}

/// Pages of 16 bits in big-endian order, packed in strips of 2 rows.
void writePackedTiff(const std::string& path, std::initializer_list<ZxDims> pages)
{
  TIFF* tiff = TIFFOpen(path.c_str(), "wb");
  Random random(11);
  for (const ZxDims& size : pages) {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, size.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, size.height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 16);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 2);
    std::vector<std::uint16_t> row(static_cast<std::size_t>(size.width));
    for (int y = 0; y < size.height; ++y) {
      for (auto& value : row) value = static_cast<std::uint16_t>(random.next());
      TIFFWriteScanline(tiff, row.data(), static_cast<std::uint32_t>(y));
    }
    TIFFWriteDirectory(tiff);
  }
  TIFFClose(tiff);
}

} // namespace

TEST_F(FileVoxelSourceTest, GivesTheVoxelsOfEveryFormatInAnyOrder)
{
  for (const ZxLatticeShape& shape : shapes) {
    const McHandle<ZxField3> volume = makeVolume(shape);
    ZxFileGeometry{{1, -2, 3}, {0.5, 0.25, 40}, "nm"}.store(volume->parameters());
    volume->parameters().setReals("Note", {1.5});
    for (const char* name : {"v.tif", "v.nrrd", "v.nhdr", "v.mha", "v.mhd", "v.nii", "v.mrc"}) {
      if (!io::checkWritable(shape, path(name)).empty()) continue;
      io::writeVolume(*volume, path(name));
      expectStays({path(name)});
    }
    fs::remove_all(path("s"));
    io::writeVolume(*volume, path("s/"));
    expectStays({path("s")});
  }
}

TEST_F(FileVoxelSourceTest, ConvertsWhatIsStoredOtherwise)
{
  const std::string data = someBytes(7 * 5 * 4 * 4);
  const auto nrrd = [&](const std::string& type, const std::string& rest) {
    return "NRRD0004\ntype: " + type + "\ndimension: 3\nsizes: 7 5 4\nencoding: raw\n" + rest + "\n";
  };
  expectStays({put("big.nrrd", nrrd("ushort", "endian: big\n") + data)});
  expectStays({put("int8.nrrd", nrrd("int8", "") + data)});
  std::string small = data;
  for (std::size_t i = 2; i < small.size(); i += 4) small[i] = small[i + 1] = '\0';
  expectStays({put("narrowed.nrrd", nrrd("uint", "endian: little\n") + small)});
  expectStays({put("end.nrrd", nrrd("float", "endian: big\nbyteskip: -1\n") + "other" + data)});
  // 140 bytes in 5 files: slices of 35 go over their ends.
  std::string list = nrrd("uint8", "data file: LIST\n");
  list.pop_back();
  for (std::size_t i = 0; i < 5; ++i) {
    const std::string name = "part" + std::to_string(i);
    put(name, data.substr(28 * i, 28));
    list += name + '\n';
  }
  expectStays({put("list.nhdr", list)});

  io::writeVolume(*makeVolume({.dims = {7, 5, 4}, .primType = McPrimType::Int16}), path("scaled.nii"));
  std::string nifti = readBytes(path("scaled.nii"));
  const float scale[2] = {0.5f, -3.0f};
  std::memcpy(nifti.data() + 112, scale, sizeof scale);
  expectStays({put("scaled.nii", nifti)});
  EXPECT_EQ(io::openVolume({path("scaled.nii")})->getLattice()->primType(), McPrimType::Float);
}

TEST_F(FileVoxelSourceTest, ReadsPackedPagesPaddedOnesAndLists)
{
  writePackedTiff(path("packed.tif"), {{9, 7, 1}, {9, 7, 1}, {9, 7, 1}, {9, 7, 1}});
  expectStays({path("packed.tif")});
  writePackedTiff(path("unequal.tif"), {{9, 7, 1}, {4, 8, 1}, {6, 2, 1}});
  const io::ReadOptions pad{.unequalSlices = io::UnequalSlices::PadToLargest};
  expectStays({path("unequal.tif")}, pad);
  expectStays({path("unequal.tif"), path("packed.tif"), path("unequal.tif")}, pad);
  const std::string sentence = refusal([&] { io::openVolume({path("unequal.tif")}); });
  EXPECT_NE(sentence.find("different sizes"), std::string::npos) << sentence;
}

TEST_F(FileVoxelSourceTest, ReadsIntoMemoryWhatHasToBeUnpackedFromItsStart)
{
  const McHandle<ZxField3> volume = makeVolume(shapes[0]);
  for (const char* name : {"v.nii.gz", "v.mrc.gz"}) {
    io::writeVolume(*volume, path(name));
    const McHandle<ZxField3> opened = io::openVolume({path(name)});
    EXPECT_EQ(opened->getTypeId().name(), "ZxRegScalarField3");
    EXPECT_EQ(allBytes(*opened), allBytes(*volume)) << name;
  }
  put("text.nrrd", "NRRD0004\ntype: uint8\ndimension: 3\nsizes: 2 1 2\nencoding: ascii\n\n1 2 3 4\n");
  EXPECT_EQ(allBytes(*io::openVolume({path("text.nrrd")})), "\1\2\3\4");
}

TEST_F(FileVoxelSourceTest, LabelsStayInTheirFileToo)
{
  const McHandle<ZxField3> volume = makeVolume(shapes[1]);
  io::writeVolume(*volume, path("v.mha"));
  const McHandle<ZxUniformLabelField3> labels = io::openLabels({path("v.mha")});
  expectSameVoxels(*io::readLabels({path("v.mha")})->getLattice(), *labels->getLattice());
  io::writeVolume(*makeVolume(shapes[2]), path("f.mha"));
  EXPECT_NE(refusal([&] { io::openLabels({path("f.mha")}); }).find("labels"), std::string::npos);
}

TEST_F(FileVoxelSourceTest, AFileThatChangesIsNamedWithTheSliceAndAReplacedOneIsReadAsItWas)
{
  const McHandle<ZxField3> volume = makeVolume({.dims = {300, 200, 12}, .primType = McPrimType::UInt16});
  for (const char* name : {"v.mrc", "v.tif", "v.nrrd"}) {
    io::writeVolume(*volume, path(name));
    const McHandle<ZxField3> opened = io::openVolume({path(name)});
    const std::string expected = allBytes(*volume);
    io::writeVolume(*makeVolume(shapes[0]), path(name)); // renamed over it
    EXPECT_EQ(allBytes(*opened), expected) << name;

    io::writeVolume(*volume, path(name));
    const McHandle<ZxField3> changed = io::openVolume({path(name)});
    EXPECT_EQ(read(*changed, 3), sliceBytes(*volume, 3));
    fs::resize_file(path(name), fs::file_size(path(name)) / 2);
    messages.clear();
    EXPECT_EQ(read(*changed, 10), "failed");
    EXPECT_EQ(messages,
              "Cannot read slice 10 from \"" + path(name) + "\": it has changed since it was opened.\n");
    char voxel[2];
    EXPECT_FALSE(changed->getLattice()->readBox({1, 1, 11, {1, 1, 1}}, voxel));
    float min, max;
    messages.clear();
    changed->getLattice()->getRange(min, max);
    EXPECT_EQ(std::count(messages.begin(), messages.end(), '\n'), 1) << messages;
  }
  io::writeVolume(*volume, path("s/"));
  const McHandle<ZxField3> sequence = io::openVolume({path("s")});
  fs::remove(path("s/slice_0007.tif"));
  messages.clear();
  EXPECT_EQ(read(*sequence, 7), "failed");
  EXPECT_NE(messages.find("Cannot read slice 7 from \"" + path("s/slice_0007.tif")), std::string::npos)
      << messages;
  EXPECT_EQ(read(*sequence, 6), sliceBytes(*volume, 6));
}

TEST_F(FileVoxelSourceTest, WhatDoesNotFitIntoMemoryStaysInItsFileWhereThatIsWanted)
{
  put("large.nrrd", "NRRD0004\ntype: uint8\ndimension: 3\nsizes: 4096 4096 65536\nencoding: raw\n\n");
  std::error_code error;
  fs::resize_file(path("large.nrrd"), fs::file_size(path("large.nrrd")) + (std::uintmax_t{1} << 40), error);
  if (error) GTEST_SKIP() << "no files of this size here";
  for (const bool automatic : {false, true}) {
    messages.clear();
    const io::ReadOptions options{.tooLarge = io::TooLarge::LeaveInFile};
    const McHandle<ZxSpatialData> data =
        automatic ? io::readAnything({path("large.nrrd")}, options)
                  : McHandle<ZxSpatialData>(io::readVolume({path("large.nrrd")}, options));
    EXPECT_NE(messages.find("stays in its file: it does not fit into memory."), std::string::npos);
    ZxRecordingWorkArea area; // Its range is that of a terabyte, unless one is allowed to stop.
    area.interruptAtQuery(3);
    float min, max;
    data->getLattice()->getRange(min, max);
    char row[3] = {1, 1, 1};
    EXPECT_TRUE(data->getLattice()->readBox({4093, 4095, 65535, {3, 1, 1}}, row));
    EXPECT_EQ(row[2], 0);
  }
}

TEST_F(FileVoxelSourceTest, EndsAtAnyTime)
{
  io::writeVolume(*makeVolume({.dims = {400, 300, 8}}), path("v.mha"));
  io::writeVolume(*makeVolume({.dims = {400, 300, 8}}), path("s%d.png"));
  for (int i = 0; i < 30; ++i) {
    std::vector<std::string> inputs{path("v.mha")};
    if (i % 2) inputs = {path("s0.png"), path("s1.png"), path("s2.png")};
    const McHandle<ZxField3> opened = io::openVolume(inputs);
    for (int k = 0; k < i % 3; ++k) EXPECT_NE(read(*opened, k), "failed");
  }
}
