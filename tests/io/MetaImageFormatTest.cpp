#include "FormatTesting.h"
#include "IndependentReader.h"

#include <itkMetaImageIO.h>

namespace io::testing {
namespace {

const std::unique_ptr<Format> meta = makeMetaImageFormat();

TEST(MetaImageFormat, BringsEveryTypeBackAndOtherReadersAgree)
{
  const TemporaryFolder folder;
  for (const McHandle<ZxField3>& volume : volumesOfAllTypes())
    for (const char* name : {"v.mha", "v.mhd"}) {
      SCOPED_TRACE(std::string(name) + " " + mcNameOf(volume->getLattice()->primType()));
      write(*meta, *volume, folder.file(name));
      const auto reader = meta->open(folder.file(name));
      EXPECT_TRUE(voxelsOf(*reader) == voxelsOf(*volume));
      expectExactGeometry(reader->info().geometry, ZxFileGeometry::of(*volume));
      const auto other = readIndependently(*itk::MetaImageIO::New(), folder.file(name));
      EXPECT_TRUE(other.voxels == voxelsOf(*volume));
      EXPECT_EQ(other.sizes, (std::vector<std::size_t>{7, 5, 3}));
      EXPECT_EQ(other.spacing, (std::vector<double>{0.0046, 4.0 / 3.0, 50.25}));
      EXPECT_EQ(other.origin, (std::vector<double>{-1.5, 0.1 + 0.2, 1e-3}));
    }
}

// Names that the format defines, names and values beyond the buffers of other readers, and blanks at the ends
// of what is cut: each would make the file unreadable, or come back changed.
TEST(MetaImageFormat, KeepsParametersThatWouldBreakOtherReaders)
{
  const TemporaryFolder folder;
  const auto volume = makeVolume(McPrimType::Int16);
  ZxParamBundle& parameters = volume->parameters();
  std::vector<std::pair<std::string, std::string>> texts = {{"Comment", "mine"},
                                                            {"NDims", "9"},
                                                            {"Zx_NDims", "8"},
                                                            {"ElementDataFile", "LOCAL"},
                                                            {"VoxelSizeUnit", "px"},
                                                            {"Zx_Part0_0", "no part"},
                                                            {"a = b : c", "x = y : z"},
                                                            {"lines", "one\ntwo\r"},
                                                            {std::string(300, 'k'), "long name"},
                                                            {"empty", ""},
                                                            {"long", ""}};
  for (int i = 0; i < 4000; ++i) texts.back().second += "   \"%" + std::to_string(i);
  for (const auto& [key, value] : texts) parameters.setString(key, value);
  for (int k = 0; k < 3000; ++k)
    parameters.getBundle("AlignTransform")->setReals("slice" + std::to_string(k), {k / 7.0, 1e308, -0.0});
  write(*meta, *volume, folder.file("p.mha"));
  const auto reader = meta->open(folder.file("p.mha"));
  const ZxParamBundle& read = reader->info().parameters;
  for (const auto& [key, value] : texts) {
    std::string text = "missing";
    EXPECT_TRUE(read.findString(key, text)) << key;
    EXPECT_EQ(text, value);
  }
  double reals[3] = {};
  ASSERT_NE(read.findBundle("AlignTransform"), nullptr);
  EXPECT_TRUE(read.findBundle("AlignTransform")->findReals("slice2999", 3, reals));
  EXPECT_EQ(reals[0], 2999 / 7.0);
  expectExactGeometry(reader->info().geometry, ZxFileGeometry::of(*volume));
  const auto other = readIndependently(*itk::MetaImageIO::New(), folder.file("p.mha"));
  EXPECT_TRUE(other.voxels == voxelsOf(*volume));
  EXPECT_EQ(pairOf(other, "Zx_Comment"), "mine");
}

// Each file holds 2 x 3 x 2 values 1 ... 12 of 16 bits; what differs is how the header says so.
TEST(MetaImageFormat, UnderstandsTheWaysToWriteAHeader)
{
  const TemporaryFolder folder;
  std::vector<std::uint16_t> expected(12);
  for (std::size_t i = 0; i < 12; ++i) expected[i] = static_cast<std::uint16_t>(i + 1);
  const std::string big = bytesOf(expected, std::endian::native == std::endian::little);
  folder.put("head.raw", "head" + big);
  folder.put("s 1.raw", big.substr(0, 12));
  folder.put("s 3.raw", big.substr(12));
  folder.put("s001.raw", big.substr(0, 12));
  folder.put("s003.raw", big.substr(12));
  folder.put("text.txt", "1 2 3 4 5 6\n7 8 9 10 11 12\n");
  const std::string common =
      "NDims = 3\nDimSize: 2 3 2\nElementType = MET_USHORT\nBinaryDataByteOrderMSB = True\n";
  const std::string files[] = {
      common + "ElementDataFile = LOCAL\n" + big,
      common + "\r\nElementDataFile = Local\r\n" + big,
      common + "HeaderSize = 4\nElementDataFile = head.raw\n",
      common + "HeaderSize = -1\nElementDataFile = head.raw\n",
      common + "ElementDataFile = LIST\ns 1.raw\ns 3.raw\n",
      common + "ElementDataFile = s%03d.raw 1 3 2\n",
      common + "BinaryData = False\nElementDataFile = text.txt\n",
  };
  for (const std::string& file : files) {
    SCOPED_TRACE(file);
    const auto reader = meta->open(folder.put("x.mhd", file));
    EXPECT_EQ(reader->info().shape.dims, (ZxDims{2, 3, 2}));
    EXPECT_EQ(valuesOf<std::uint16_t>(*reader), expected);
  }
}

TEST(MetaImageFormat, FindsGeometryColoursAndFurtherVolumes)
{
  const TemporaryFolder folder;
  const auto open = [&](const std::string& lines) {
    const std::string data(48, 'a');
    return meta->open(
        folder.put("g.mha", lines + "ElementType = MET_UCHAR\nElementDataFile = LOCAL\n" + data));
  };
  const auto plain =
      open("NDims = 2\nDimSize = 4 2\nElementSize = 0.5 -3\nPosition = 1 2\nMaker = someone\n");
  expectExactGeometry(plain->info().geometry, {{1, 2, 0}, {0.5, 3, 1}, ""});
  std::string maker;
  EXPECT_TRUE(plain->info().parameters.findString("Maker", maker));
  EXPECT_EQ(maker, "someone");
  const auto colours = open("NDims = 3\nDimSize = 4 2 2\nElementNumberOfChannels = 3\nDistanceUnits = um\n");
  EXPECT_EQ(voxelsOf(*colours).substr(0, 5), "aaa\xff"
                                             "a");
  EXPECT_EQ(colours->info().geometry.unit, "um");
  EXPECT_EQ(open("NDims = 4\nDimSize = 4 2 2 3\n")->info().remarks.at(0),
            "\"g.mha\" holds 3 volumes, the first one is read.");
}

TEST(MetaImageFormat, RefusesWhatItCannotReadByNameAndReason)
{
  const TemporaryFolder folder;
  const std::string sizes = "NDims = 3\nDimSize = 2 2 2\n", type = "ElementType = MET_UCHAR\n";
  const std::string local = "ElementDataFile = LOCAL\n12345678";
  const std::pair<std::string, std::string> cases[] = {
      {"", "empty"},
      {sizes + type, "does not name its data"},
      {std::string("\x89PNG\r\n\x1a\n", 8), "no MetaImage field"},
      {sizes + local, "no ElementType"},
      {sizes + "ElementType = MET_FLOAT\nElementNumberOfChannels = 3\n" + local,
       "3 values of the type float"},
      {sizes + type + "ElementNumberOfChannels = 2\n" + local, "2 values of the type uint8"},
      {"NDims = 3\nDimSize = 2 2\n" + type + local, "does not hold 3 sizes"},
      {"NDims = 1\nDimSize = 8\n" + type + local, "NDims"},
      {"NDims = 4\nDimSize = 2 2 2 0\n" + type + local, "not positive"},
      {sizes + type + "HeaderSize = x\n" + local, "HeaderSize is no whole number"},
      {sizes + type + "ElementDataFile = LIST\n", "0 files"},
      {sizes + type + "ElementDataFile = a%d_%d.raw 1 2 1\n", "pattern"},
      {sizes + type + "ElementDataFile = a%d.raw 2 1\n", "make no sense"},
      {sizes + type + "ElementDataFile = gone.raw\n", "\"gone.raw\" is missing"},
      {"NDims = 3\nDimSize = 20000 20000 2\nCompressedData = True\n" + type + local, "truncated"},
  };
  for (const auto& [text, reason] : cases) {
    SCOPED_TRACE(text);
    expectRefused(*meta, folder.put("r.mha", text), reason);
  }
}

} // namespace
} // namespace io::testing
