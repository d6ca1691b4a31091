#include "FormatTesting.h"
#include "IndependentReader.h"

#include <itkMRCImageIO.h>

#include <cmath>

namespace io::testing {
namespace {

const std::unique_ptr<Format> mrc = makeMrcFormat();

/// A header of 3 x 2 x 2 voxels of 5 x 6 x 7 Angstrom with the data behind it.
struct MrcFile {
  std::int32_t mode = 1;
  std::int32_t sizes[3] = {3, 2, 2};
  std::int32_t axes[3] = {1, 2, 3};
  std::int32_t sampling = 2, spaceGroup = 1, extended = 0, imodStamp = 0, imodFlags = 0;
  bool swapped = false, stamped = true;

  std::string with(const std::string& data) const
  {
    std::string bytes(1024, '\0');
    const auto put = [&](std::size_t at, auto value) {
      bytes.replace(at, 4, bytesOf(std::vector{value}, swapped));
    };
    for (std::size_t i = 0; i < 3; ++i) {
      put(4 * i, sizes[i]);
      put(28 + 4 * i, i == 2 ? sampling : sizes[i]);
      put(40 + 4 * i, static_cast<float>((5 + static_cast<int>(i)) * (i == 2 ? sampling : sizes[i])));
      put(64 + 4 * i, axes[i]);
      put(196 + 4 * i, 0.5f + static_cast<float>(i));
    }
    put(12, mode);
    put(88, spaceGroup);
    put(92, extended);
    put(152, imodStamp);
    put(156, imodFlags);
    const bool big = (std::endian::native == std::endian::little) == swapped;
    if (stamped)
      bytes.replace(208, 8, std::string("MAP ") + (big ? "\x11\x11" : "\x44\x44") + std::string(2, '\0'));
    return bytes + std::string(static_cast<std::size_t>(std::max(extended, 0)), 'e') + data;
  }
};

TEST(MrcFormat, BringsTypesBackAndOtherReadersAgree)
{
  const TemporaryFolder folder;
  for (const McPrimType type : {McPrimType::Int16, McPrimType::UInt16, McPrimType::Float, McPrimType::UInt8})
    for (const char* name : {"v.mrc", "v.mrc.gz"}) {
      SCOPED_TRACE(std::string(name) + " " + mcNameOf(type));
      const auto volume = makeVolume(type);
      write(*mrc, *volume, folder.file(name));
      const auto reader = mrc->open(folder.file(name));
      EXPECT_EQ(reader->info().shape.primType, type);
      EXPECT_TRUE(voxelsOf(*reader) == voxelsOf(*volume));
      const ZxFileGeometry& geometry = reader->info().geometry;
      EXPECT_EQ(geometry.unit, "Angstrom");
      EXPECT_FLOAT_EQ(static_cast<float>(geometry.voxelSize[0]), 46.0f); // 0.0046 micron
      EXPECT_FLOAT_EQ(static_cast<float>(geometry.voxelSize[2]), 502500.0f);
      EXPECT_FLOAT_EQ(static_cast<float>(geometry.origin[0]), -15000.0f);
      if (std::string(name).ends_with("gz")) continue;
      const auto other = readIndependently(*itk::MRCImageIO::New(), folder.file(name));
      EXPECT_EQ(other.sizes, (std::vector<std::size_t>{7, 5, 3}));
      if (type != McPrimType::UInt8)
        EXPECT_TRUE(other.voxels == voxelsOf(*volume));
      else
        EXPECT_EQ(other.voxels.substr(0, 2), std::string(1, voxelsOf(*volume)[0]) + '\0') << "16 bits hold 8";
    }
}

TEST(MrcFormat, SaysWhatItCannotHold)
{
  const auto reason = [&](McPrimType type, int vars = 1) {
    return mrc->cannotHold({.dims = {2, 2, 2}, .numDataVars = vars, .primType = type});
  };
  EXPECT_EQ(reason(McPrimType::Float), "");
  EXPECT_NE(reason(McPrimType::Int32), "");
  EXPECT_NE(reason(McPrimType::Double), "");
  EXPECT_NE(reason(McPrimType::UInt8, 4), "");
}

TEST(MrcFormat, FindsTheByteOrderAlsoWithoutOrAgainstTheStamp)
{
  const TemporaryFolder folder;
  const std::vector<std::int16_t> values{-1, 2, 300, -400, 5, 6, 7, 8, 9, 10, 11, 32767};
  for (const bool swapped : {false, true})
    for (const bool stamped : {false, true}) {
      MrcFile file;
      file.swapped = swapped;
      file.stamped = stamped;
      file.extended = 33;
      const auto reader = mrc->open(folder.put("b.st", file.with(bytesOf(values, swapped))));
      EXPECT_EQ(valuesOf<std::int16_t>(*reader), values) << swapped << stamped;
      expectExactGeometry(reader->info().geometry, {{0.5, 1.5, 2.5}, {5, 6, 7}, "Angstrom"});
    }
}

TEST(MrcFormat, BytesAreSignedUnlessTheirProgramSaysOtherwise)
{
  const TemporaryFolder folder;
  const std::string data("\x80\xff\x00\x7f\x05\x06\x07\x08\x09\x0a\x0b\x0c", 12);
  MrcFile file;
  file.mode = 0;
  EXPECT_EQ(valuesOf<std::int16_t>(*mrc->open(folder.put("s.mrc", file.with(data))))[0], -128);
  file.imodStamp = 1146047817;
  EXPECT_EQ(valuesOf<std::uint8_t>(*mrc->open(folder.put("u.mrc", file.with(data))))[1], 255);
  file.imodFlags = 1;
  EXPECT_EQ(valuesOf<std::int16_t>(*mrc->open(folder.put("f.mrc", file.with(data))))[1], -1);
  file.mode = 16;
  const auto colours = mrc->open(folder.put("c.mrc", file.with(data + data + data)));
  EXPECT_EQ(voxelsOf(*colours).substr(0, 8), std::string("\x80\xff\x00\xff\x7f\x05\x06\xff", 8));
}

TEST(MrcFormat, WidensHalfFloatsExactly)
{
  const TemporaryFolder folder;
  MrcFile file;
  file.mode = 12;
  const std::vector<std::uint16_t> halves{0x3c00, 0xc000, 0x0001, 0x83ff, 0x0400, 0x7bff,
                                          0x7c00, 0xfc00, 0x8000, 0x3555, 0x7e00, 0x0000};
  const auto values = valuesOf<float>(*mrc->open(folder.put("h.mrc", file.with(bytesOf(halves)))));
  const float infinity = std::numeric_limits<float>::infinity();
  const float expected[] = {1.0f,     -2.0f,     0x1p-24f, -1023 * 0x1p-24f, 0x1p-14f, 65504.0f,
                            infinity, -infinity, -0.0f,    1365 * 0x1p-12f};
  for (std::size_t i = 0; i < std::size(expected); ++i) EXPECT_EQ(values[i], expected[i]) << i;
  EXPECT_TRUE(std::signbit(values[8]));
  EXPECT_TRUE(std::isnan(values[10]));
}

TEST(MrcFormat, ReadsTheFirstOfSeveralVolumes)
{
  const TemporaryFolder folder;
  MrcFile file;
  file.sizes[2] = 6;
  file.spaceGroup = 401;
  std::vector<std::int16_t> values(36);
  for (std::size_t i = 0; i < 36; ++i) values[i] = static_cast<std::int16_t>(i);
  const auto reader = mrc->open(folder.put("m.mrc", file.with(bytesOf(values))));
  values.resize(12);
  EXPECT_EQ(valuesOf<std::int16_t>(*reader), values);
  ASSERT_EQ(reader->info().remarks.size(), 1u);
  EXPECT_EQ(reader->info().remarks[0], "\"m.mrc\" holds 3 volumes, the first one is read.");
}

TEST(MrcFormat, RefusesWhatItCannotReadByNameAndReason)
{
  const TemporaryFolder folder;
  const auto expect = [&](const std::string& reason, auto change) {
    MrcFile file;
    change(file);
    expectRefused(*mrc, folder.put("r.mrc", file.with(std::string(24, 'd'))), reason);
  };
  expect("complex", [](MrcFile& f) { f.mode = 4; });
  expect("4 bits", [](MrcFile& f) { f.mode = 101; });
  expect("order 3 2 1", [](MrcFile& f) { f.axes[0] = 3, f.axes[2] = 1; });
  expect("negative length", [](MrcFile& f) { f.extended = -8; });
  expect("truncated", [](MrcFile& f) { f.mode = 2; });
  expect("not positive", [](MrcFile& f) { f.sizes[1] = 0; });
}

} // namespace
} // namespace io::testing
