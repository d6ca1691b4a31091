#include "IoTest.h"

#include <tiffio.h>
#include <zlib.h>

#include <cstring>
#include <functional>

using namespace iotest;

namespace {

class TiffFormatTest : public FolderTest {
protected:
  /// Writes pages of 8-bit grey; page k holds the byte 10 k + x + width y. fields may set more for page k.
  void writePages(const std::string& name, const std::vector<ZxDims>& sizes,
                  const std::function<void(TIFF*, int)>& fields = {})
  {
    TIFF* tiff = TIFFOpen(path(name).c_str(), "w");
    for (int k = 0; k < static_cast<int>(sizes.size()); ++k) {
      const ZxDims& size = sizes[static_cast<std::size_t>(k)];
      setGrey(tiff, size, 8);
      if (fields) fields(tiff, k);
      std::string bytes(size.slicePixels(), '\0');
      for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(10 * k + static_cast<int>(i));
      TIFFWriteRawStrip(tiff, 0, bytes.data(), static_cast<tmsize_t>(bytes.size()));
      TIFFWriteDirectory(tiff);
    }
    TIFFClose(tiff);
  }
  static void setGrey(TIFF* tiff, const ZxDims& size, int bits)
  {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, size.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, size.height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bits);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, size.height);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
  }
  void writeOne(const std::string& name, const ZxDims& size, int bits, const std::string& bytes)
  {
    TIFF* tiff = TIFFOpen(path(name).c_str(), "w");
    setGrey(tiff, size, bits);
    TIFFWriteRawStrip(tiff, 0, const_cast<char*>(bytes.data()), static_cast<tmsize_t>(bytes.size()));
    TIFFClose(tiff);
  }
  /// 12 x 20 pixels of 8 bits in one tile of 16 x 32, or in two strips of 16 rows; the last one is given.
  void writePiece(const std::string& name, bool tiled, int compression, const std::string& packed)
  {
    TIFF* tiff = TIFFOpen(path(name).c_str(), "w");
    setGrey(tiff, {12, 20, 1}, 8);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 16);
    if (tiled) TIFFSetField(tiff, TIFFTAG_TILEWIDTH, 16);
    if (tiled) TIFFSetField(tiff, TIFFTAG_TILELENGTH, 32);
    std::string first(std::size_t{12} * 16, '\7');
    if (!tiled) TIFFWriteEncodedStrip(tiff, 0, first.data(), static_cast<tmsize_t>(first.size()));
    auto* bytes = const_cast<char*>(packed.data());
    const auto size = static_cast<tmsize_t>(packed.size());
    tiled ? TIFFWriteRawTile(tiff, 0, bytes, size) : TIFFWriteRawStrip(tiff, 1, bytes, size);
    TIFFClose(tiff);
  }
  static void describe(TIFF* tiff, const std::string& text)
  {
    TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, text.c_str());
  }
};

std::string deflated(const std::string& bytes)
{
  uLongf size = compressBound(bytes.size());
  std::string packed(size, '\0');
  compress(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(bytes.data()),
           bytes.size());
  return packed.substr(0, size);
}

std::string noise(std::size_t size)
{
  Random random(3);
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random.next());
  return bytes;
}

void expectVoxelSize(const io::VolumeInfo& info, double x, double y, double z, const std::string& unit)
{
  EXPECT_DOUBLE_EQ(info.geometry.voxelSize[0], x);
  EXPECT_DOUBLE_EQ(info.geometry.voxelSize[1], y);
  EXPECT_DOUBLE_EQ(info.geometry.voxelSize[2], z);
  EXPECT_EQ(info.geometry.unit, unit);
}

} // namespace

TEST_F(TiffFormatTest, PagesOfUnequalSizeAreRefusedOrPaddedAndCentred)
{
  writePages("v.tif", {{5, 3, 1}, {2, 4, 1}});
  const std::string sentence = refusalOf(path("v.tif"));
  EXPECT_NE(sentence.find("5 x 3"), std::string::npos) << sentence;
  EXPECT_NE(sentence.find("2 x 4"), std::string::npos) << sentence;
  const auto padded = io::readVolume({path("v.tif")}, {.unequalSlices = io::UnequalSlices::PadToLargest});
  EXPECT_EQ(padded->getLattice()->getDims(), (ZxDims{5, 4, 2}));
  const std::string first = sliceBytes(*padded, 0);
  const std::string second = sliceBytes(*padded, 1);
  // The odd row goes below, the odd column to the right.
  EXPECT_EQ(first.substr(0, 5), std::string("\0\1\2\3\4", 5));
  EXPECT_EQ(first.substr(15), std::string(5, '\0'));
  EXPECT_EQ(second.substr(0, 10), std::string("\0\x0A\x0B\0\0\0\x0C\x0D\0\0", 10));
}

TEST_F(TiffFormatTest, ThumbnailsAndMasksArePassedOver)
{
  writePages("v.tif", {{5, 3, 1}, {2, 1, 1}, {5, 3, 1}}, [](TIFF* tiff, int k) {
    if (k == 1) TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, FILETYPE_REDUCEDIMAGE);
  });
  const auto volume = io::readVolume({path("v.tif")});
  EXPECT_EQ(volume->getLattice()->getDims(), (ZxDims{5, 3, 2}));
  EXPECT_EQ(sliceBytes(*volume, 1)[0], 20);
  EXPECT_NE(messages.find("passed over"), std::string::npos);
}

TEST_F(TiffFormatTest, ImageJSlicesWithoutDirectoriesAreRead)
{
  for (const char* mode : {"wl", "wb"}) {
    TIFF* tiff = TIFFOpen(path("v.tif").c_str(), mode);
    setGrey(tiff, {3, 2, 1}, 16);
    describe(tiff, "ImageJ=1.53t\nimages=3\nslices=3\nunit=\\u00B5m\nspacing=-0.25\n");
    std::uint16_t page[6] = {};
    TIFFWriteEncodedStrip(tiff, 0, page, sizeof page);
    TIFFClose(tiff);
    // The library puts the directory behind the pixels: here they are put behind the directory, three pages.
    std::string file = readBytes(path("v.tif"));
    const std::uint64_t end = file.size();
    std::string pixels;
    for (int i = 0; i < 18; ++i) pixels += mode[1] == 'l' ? std::string{char(i), 1} : std::string{1, char(i)};
    std::string offset =
        mode[1] == 'l' ? std::string{char(end), char(end >> 8)} : std::string{char(end >> 8), char(end)};
    const std::string tag = mode[1] == 'l' ? "\x11\x01" : "\x01\x11";
    const std::size_t entry = file.find(tag, 20);
    file.replace(entry + (mode[1] == 'l' ? 8 : 10), 2, offset);
    writeBytes(path("v.tif"), file + pixels);
    const auto volume = io::readVolume({path("v.tif")});
    ASSERT_EQ(volume->getLattice()->getDims(), (ZxDims{3, 2, 3}));
    std::string expected;
    for (int i = 0; i < 18; ++i) expected += {char(i), 1};
    EXPECT_EQ(allBytes(*volume), expected) << mode;
    expectVoxelSize(io::readInfo({path("v.tif")}), 1, 1, 0.25, "\u00B5m");
    writeBytes(path("v.tif"), file + pixels.substr(1));
    EXPECT_NE(refusalOf(path("v.tif")).find("cut off"), std::string::npos);
  }
}

TEST_F(TiffFormatTest, OmeGivesTheFirstVolumeInTheOrderOfItsDimensions)
{
  const std::string pixels =
      "<Pixels DimensionOrder=\"XYCZT\" SizeX=\"2\" SizeY=\"1\" SizeC=\"2\" SizeZ=\"3\" SizeT=\"1\" "
      "PhysicalSizeX=\"4\" PhysicalSizeXUnit=\"nm\" PhysicalSizeZ=\"0.05\" Type=\"uint8\">";
  const auto read = [&](const std::string& planes) {
    writePages("v.ome.tif", std::vector<ZxDims>(6, {2, 1, 1}), [&](TIFF* tiff, int k) {
      if (k == 0) describe(tiff, "<OME>" + ("<Image>" + pixels) + planes + "</Pixels></Image></OME>");
    });
    const std::string bytes = allBytes(*io::readVolume({path("v.ome.tif")}));
    std::vector<int> pages;
    for (std::size_t i = 0; i < bytes.size(); i += 2) pages.push_back(bytes[i] / 10);
    return pages;
  };
  EXPECT_EQ(read("<TiffData/>"), (std::vector<int>{0, 2, 4}));
  EXPECT_NE(messages.find("2 channels"), std::string::npos);
  expectVoxelSize(io::readInfo({path("v.ome.tif")}), 4, 1, 50, "nm");
  EXPECT_EQ(read("<TiffData IFD=\"5\" FirstZ=\"0\"/><TiffData IFD=\"3\" FirstZ=\"1\"/><TiffData IFD=\"0\" "
                 "FirstZ=\"2\"/>"),
            (std::vector<int>{5, 3, 0}));
  // Planes that are missing, or in other files: every page is a slice.
  EXPECT_EQ(read("<TiffData IFD=\"5\" FirstZ=\"1\"/>").size(), 6u);
  EXPECT_EQ(read("<TiffData IFD=\"0\"><UUID FileName=\"a.tif\">x</UUID></TiffData>"
                 "<TiffData IFD=\"0\" FirstZ=\"1\"><UUID FileName=\"b.tif\">y</UUID></TiffData>")
                .size(),
            6u);
}

TEST_F(TiffFormatTest, ResolutionGivesThePixelSize)
{
  for (const auto& [unit, size] : {std::pair(RESUNIT_INCH, 0.254), std::pair(RESUNIT_CENTIMETER, 0.1)}) {
    writePages("v.tif", {{2, 1, 1}}, [&](TIFF* tiff, int) {
      TIFFSetField(tiff, TIFFTAG_XRESOLUTION, 100.0);
      TIFFSetField(tiff, TIFFTAG_YRESOLUTION, 50.0);
      TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, unit);
    });
    expectVoxelSize(io::readInfo({path("v.tif")}), size, 2 * size, 1, "mm");
  }
  writePages("v.tif", {{2, 1, 1}},
             [&](TIFF* tiff, int) { TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_NONE); });
  expectVoxelSize(io::readInfo({path("v.tif")}), 1, 1, 1, "");
}

TEST_F(TiffFormatTest, WideIntegersTakeTheSmallestTypeThatHoldsThem)
{
  const auto typeOf = [&](std::uint32_t a, std::uint32_t b) {
    std::string bytes(8, '\0');
    std::memcpy(bytes.data(), &a, 4);
    std::memcpy(bytes.data() + 4, &b, 4);
    writeOne("v.tif", {2, 1, 1}, 32, bytes);
    const auto volume = io::readVolume({path("v.tif")});
    EXPECT_EQ(io::readInfo({path("v.tif")}).shape.primType, volume->getLattice()->primType());
    return volume;
  };
  EXPECT_EQ(typeOf(0, 255)->getLattice()->primType(), McPrimType::UInt8);
  EXPECT_EQ(typeOf(0, 70000)->getLattice()->primType(), McPrimType::Int32);
  const auto large = typeOf(1, 4294967295u);
  ASSERT_EQ(large->getLattice()->primType(), McPrimType::Double);
  const std::string bytes = allBytes(*large);
  double value = 0;
  std::memcpy(&value, bytes.data() + 8, 8);
  EXPECT_EQ(value, 4294967295.0);
}

TEST_F(TiffFormatTest, PackedSamplesKeepTheirValues)
{
  // 12 bits: 0xABC 0x123, a row begins at a byte; 2 bits: 3 0 2 and the rest of the byte.
  writeOne("twelve.tif", {1, 2, 1}, 12, std::string("\xAB\xC0\x12\x30", 4));
  EXPECT_EQ(allBytes(*io::readVolume({path("twelve.tif")})), std::string("\xBC\x0A\x23\x01", 4));
  writeOne("two.tif", {3, 2, 1}, 2, std::string("\xC8\x1B", 2));
  EXPECT_EQ(allBytes(*io::readVolume({path("two.tif")})), std::string("\3\0\2\0\1\2", 6));
}

TEST_F(TiffFormatTest, CutOffFilesAreRefusedWhereverTheyAreCut)
{
  const auto volume = makeVolume({.dims = {40, 30, 3}, .primType = McPrimType::UInt16});
  io::writeVolume(*volume, path("v.tif"));
  const std::string file = readBytes(path("v.tif"));
  for (std::size_t n = 1; n < file.size(); n += 97) {
    writeBytes(path("cut.tif"), file.substr(0, n));
    EXPECT_NE(refusalOf(path("cut.tif")), "") << n;
  }
}

// The library stops where its memory is full: it looks neither at data behind nor always at the checksum.
TEST_F(TiffFormatTest, DeflateStreamsThatHoldSomethingElseAreRefused)
{
  for (const bool tiled : {false, true}) {
    const auto read = [&](const std::string& packed) {
      writePiece("v.tif", tiled, COMPRESSION_ADOBE_DEFLATE, packed);
      return refusalOf(path("v.tif"));
    };
    const std::string bytes = noise(tiled ? 16 * 32 : 12 * 4), sound = deflated(bytes);
    EXPECT_EQ(read(sound), "");
    EXPECT_EQ(read(sound + "padding"), "");
    // Some programs write all rows of the last strip.
    EXPECT_EQ(read(deflated(noise(tiled ? bytes.size() : 12 * 16))), "");
    std::string wrongChecksum = sound;
    wrongChecksum.back() ^= 1;
    for (const std::string& packed : {deflated(bytes + '\0'), deflated(bytes + std::string(70000, '\1')),
                                      deflated(bytes.substr(1)), wrongChecksum, wrongChecksum + "padding",
                                      sound.substr(0, sound.size() - 1), sound.substr(0, sound.size() - 4)}) {
      const std::string sentence = read(packed);
      EXPECT_NE(sentence.find("v.tif"), std::string::npos) << tiled << packed.size();
      EXPECT_EQ(sentence.find('\n'), std::string::npos);
    }
  }
  // Runs of 40 and of 9 bytes where 48 are expected.
  writePiece("v.tif", false, COMPRESSION_PACKBITS, std::string("\xD9\5\xF8\6", 4));
  EXPECT_NE(refusalOf(path("v.tif")), "");
}

TEST_F(TiffFormatTest, DeflateStreamsOfAllLayoutsAreRead)
{
  const struct {
    int bits, format, predictor;
  } kinds[] = {{8, SAMPLEFORMAT_UINT, 2},    {16, SAMPLEFORMAT_INT, 1},    {16, SAMPLEFORMAT_UINT, 2},
               {32, SAMPLEFORMAT_INT, 2},    {32, SAMPLEFORMAT_IEEEFP, 1}, {32, SAMPLEFORMAT_IEEEFP, 3},
               {64, SAMPLEFORMAT_IEEEFP, 2}, {64, SAMPLEFORMAT_IEEEFP, 3}};
  for (const auto& kind : kinds) {
    for (const char* mode : {"wl", "wb"}) {
      if (kind.predictor == 3 && mode[1] == 'b') continue; // The library writes these wrong.
      for (const int order : {FILLORDER_MSB2LSB, FILLORDER_LSB2MSB}) {
        TIFF* tiff = TIFFOpen(path("v.tif").c_str(), mode);
        setGrey(tiff, {7, 5, 1}, kind.bits);
        TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, kind.format);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
        TIFFSetField(tiff, TIFFTAG_PREDICTOR, kind.predictor);
        TIFFSetField(tiff, TIFFTAG_FILLORDER, order);
        std::string bytes = noise(static_cast<std::size_t>(35 * kind.bits / 8)), kept = bytes;
        TIFFWriteEncodedStrip(tiff, 0, bytes.data(), static_cast<tmsize_t>(bytes.size()));
        TIFFClose(tiff);
        EXPECT_EQ(allBytes(*io::readVolume({path("v.tif")})), kept)
            << kind.bits << ' ' << kind.predictor << mode << order;
      }
    }
  }
}

// Nothing is asked but to end: where the pixels of an unpacked file are hit they are read as they are.
TEST_F(TiffFormatTest, DamagedBytesDoNoHarm)
{
  const fs::path data = testDataFolder() / "readers" / "written_by_other_programs" / "tiff_libtiff";
  if (!fs::exists(data)) GTEST_SKIP() << "no test data";
  Random random(7);
  for (const auto& entry : fs::directory_iterator(data)) {
    const std::string file = readBytes(entry.path().string());
    for (int i = 0; i < 40; ++i) {
      std::string damaged = file;
      // Half of the damage goes to the ends, where the directories are.
      const int place = random.below(4);
      const auto n = static_cast<int>(place < 2 ? damaged.size() : 300);
      const auto at = static_cast<std::size_t>(random.below(n));
      damaged[place == 2 ? at : damaged.size() - 1 - at] = static_cast<char>(random.next());
      writeBytes(path("damaged.tif"), damaged);
      refusalOf(path("damaged.tif"));
    }
  }
}

TEST_F(TiffFormatTest, WritesWhatImageJReads)
{
  const auto volume = makeVolume({.dims = {4, 3, 2}});
  ZxFileGeometry{.origin = {0, 0, 0}, .voxelSize = {0.5, 0.25, 3}, .unit = "\u00B5m"}.store(
      volume->parameters());
  volume->getLattice()->setBoundingBox({0, 1.5f, 0, 0.5f, 0, 3});
  io::writeVolume(*volume, path("v.tif"));
  fs::remove(path("v.tif.params.json"));
  expectVoxelSize(io::readInfo({path("v.tif")}), 0.5, 0.25, 3, "\u00B5m");
  TIFF* tiff = TIFFOpen(path("v.tif").c_str(), "r");
  const char* text = nullptr;
  TIFFGetField(tiff, TIFFTAG_IMAGEDESCRIPTION, &text);
  EXPECT_NE(std::string(text).find("images=2\nslices=2\nunit=\\u00B5m\nspacing=3\n"), std::string::npos)
      << text;
  TIFFClose(tiff);
}
