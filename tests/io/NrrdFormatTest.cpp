#include "FormatTesting.h"
#include "IndependentReader.h"

#include <itkNrrdImageIO.h>
#include <zlib.h>

namespace io::testing {
namespace {

const std::unique_ptr<Format> nrrd = makeNrrdFormat();

std::string header(const std::string& lines) { return "NRRD0004\n" + lines; }

/// A stream of gzip, or of zlib, whose size does not depend on the bytes.
std::string packed(const std::string& bytes, bool gzip)
{
  z_stream stream{};
  deflateInit2(&stream, Z_NO_COMPRESSION, Z_DEFLATED, gzip ? 31 : 15, 8, Z_DEFAULT_STRATEGY);
  std::string out(deflateBound(&stream, bytes.size()) + 100, '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = static_cast<uInt>(out.size());
  EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
  out.resize(stream.total_out);
  deflateEnd(&stream);
  return out;
}

TEST(NrrdFormat, BringsEveryTypeBackAndOtherReadersAgree)
{
  const TemporaryFolder folder;
  for (const McHandle<ZxField3>& volume : volumesOfAllTypes())
    for (const char* name : {"v.nrrd", "v.nhdr"}) {
      SCOPED_TRACE(std::string(name) + " " + mcNameOf(volume->getLattice()->primType()));
      volume->parameters().setString("Note", "two\nlines, a \\ and \"quotes\"");
      write(*nrrd, *volume, folder.file(name));
      const auto reader = nrrd->open(folder.file(name));
      EXPECT_TRUE(voxelsOf(*reader) == voxelsOf(*volume));
      expectExactGeometry(reader->info().geometry, ZxFileGeometry::of(*volume));
      const auto other = readIndependently(*itk::NrrdImageIO::New(), folder.file(name));
      EXPECT_TRUE(other.voxels == voxelsOf(*volume));
      EXPECT_EQ(other.sizes, (std::vector<std::size_t>{7, 5, 3}));
      EXPECT_EQ(other.spacing, (std::vector<double>{0.0046, 4.0 / 3.0, 50.25}));
      EXPECT_EQ(other.origin, (std::vector<double>{-1.5, 0.1 + 0.2, 1e-3}));
      EXPECT_NE(pairOf(other, "Note"), "");
    }
}

TEST(NrrdFormat, KeepsParametersOfAnySize)
{
  const TemporaryFolder folder;
  const auto volume = makeVolume(McPrimType::UInt8);
  ZxParamBundle& parameters = volume->parameters();
  for (int k = 0; k < 2000; ++k)
    parameters.getBundle("AlignTransform")
        ->setReals("slice" + std::to_string(k), {k / 3.0, -1e-300 * k, 0.1, 1.0});
  parameters.setString("Long", std::string(200'000, 'x'));
  parameters.setNums("ints", {-2147483647 - 1, 0, 7});
  write(*nrrd, *volume, folder.file("p.nrrd"));
  const ZxParamBundle read = nrrd->open(folder.file("p.nrrd"))->info().parameters;
  double reals[4] = {};
  ASSERT_NE(read.findBundle("AlignTransform"), nullptr);
  EXPECT_EQ(read.findBundle("AlignTransform")->getNumEntries(), 2000);
  EXPECT_TRUE(read.findBundle("AlignTransform")->findReals("slice1999", 4, reals));
  EXPECT_EQ(reals[0], 1999 / 3.0);
  EXPECT_EQ(reals[1], -1e-300 * 1999);
  int ints[3] = {};
  EXPECT_TRUE(read.findNums("ints", 3, ints));
  EXPECT_EQ(ints[0], -2147483647 - 1);
  std::string text;
  EXPECT_TRUE(read.findString("Long", text));
  EXPECT_EQ(text.size(), 200'000u);
}

// Each file holds 2 x 3 x 2 values 1 ... 12 of 16 bits; what differs is how the header says so.
TEST(NrrdFormat, UnderstandsTheWaysToWriteAHeader)
{
  const TemporaryFolder folder;
  std::vector<std::int16_t> expected(12);
  for (std::size_t i = 0; i < 12; ++i) expected[i] = static_cast<std::int16_t>(i + 1);
  const std::string big = bytesOf(expected, std::endian::native == std::endian::little);
  folder.put("all.raw", "junk before" + big);
  folder.put("part 0.raw", big.substr(0, 12) + "more than needed");
  folder.put("part 1.raw", big.substr(12));
  folder.put("z08.raw", "line\n" + big.substr(0, 12));
  folder.put("z10.raw", "line\n" + big.substr(12));
  const std::string common = "Type: SHORT\n# a comment\ndimension: 3\nsizes:  2 3\t2\nendian: big\n";
  const std::string files[] = {
      header(common + "encoding: raw\n\n") + big,
      header(common + "encoding: raw\nbyteskip: 3\n\n") + "abc" + big,
      header(common + "encoding: raw\nline skip: 2\nbyte skip: 1\n\n") + "a\n\nx" + big,
      header(common + "encoding: raw\nbyte skip: -1\n\n") + "any junk" + big,
      header(common + "encoding: raw\nbyte skip: -1\ndata file: all.raw\n\n"),
      header(common + "encoding: raw\ndata file: LIST 2\npart 0.raw\npart 1.raw\n"),
      header(common + "encoding: raw\nlineskip: 1\ndatafile: z%02d.raw 8 10 2\n\n"),
      header(common + "encoding: txt\n\n 1,2 +3\n4 5 6 7 8\t9 10 11 12"),
      header(common + "encoding: hex\n\n0001 0002 0003 0004 0005 0006 00070008\n0009000A000b000c"),
  };
  for (const std::string& file : files) {
    SCOPED_TRACE(file);
    const auto reader = nrrd->open(folder.put("x.nhdr", file));
    EXPECT_EQ(reader->info().shape.dims, (ZxDims{2, 3, 2}));
    EXPECT_EQ(valuesOf<std::int16_t>(*reader), expected);
  }
  std::string crlf = header(common + "content:\nencoding: raw\n\n");
  for (std::size_t at = 0; (at = crlf.find('\n', at)) != std::string::npos; at += 2) crlf.insert(at, "\r");
  EXPECT_EQ(valuesOf<std::int16_t>(*nrrd->open(folder.put("crlf.nrrd", crlf + big))), expected);
}

TEST(NrrdFormat, FindsVoxelSizeOriginAndUnit)
{
  const TemporaryFolder folder;
  const auto geometryOf = [&](const std::string& lines) {
    const std::string start = "type: uint8\nencoding: raw\ndimension: 3\nsizes: 2 2 2\n";
    return nrrd->open(folder.put("g.nrrd", header(start + lines + "\n") + "12345678"))->info().geometry;
  };
  expectExactGeometry(geometryOf("spacings: 0.5 -2 nan\nunits: \"nm per px\" \"b\" \"c\"\n"),
                      {{0, 0, 0}, {0.5, 2, 1}, "nm per px"});
  expectExactGeometry(geometryOf("space dimension: 3\nspace directions: (0, -0.3,0) (3,0,4) none\n"
                                 "space origin: (1.25,-2,3)\nspace units: \"mm\" \"mm\" \"mm\"\n"),
                      {{1.25, -2, 3}, {0.3, 5, 1}, "mm"});
  expectExactGeometry(geometryOf("axis mins: 0 10 -3\naxis maxs: 4 20 3\ncenterings: cell cell node\n"),
                      {{1, 12.5, -3}, {2, 5, 6}, ""});
}

TEST(NrrdFormat, TellsColoursFromAxes)
{
  const TemporaryFolder folder;
  const auto shapeOf = [&](const std::string& lines) {
    const std::string data(64, 'a');
    const auto reader =
        nrrd->open(folder.put("c.nrrd", header("type: uint8\nencoding: raw\n" + lines + "\n") + data));
    const ZxLatticeShape& shape = reader->info().shape;
    return std::vector<int>{shape.numDataVars, shape.dims.width, shape.dims.height, shape.dims.slices};
  };
  using Sizes = std::vector<int>;
  EXPECT_EQ(shapeOf("dimension: 3\nsizes: 3 4 2\n"), (Sizes{1, 3, 4, 2}));
  EXPECT_EQ(shapeOf("dimension: 3\nsizes: 3 4 2\nkinds: RGB-color domain domain\n"), (Sizes{4, 4, 2, 1}));
  EXPECT_EQ(shapeOf("dimension: 3\nsizes: 4 3 2\nspace dimension: 2\nspace directions: none (1,0) (0,1)\n"),
            (Sizes{4, 3, 2, 1}));
  EXPECT_EQ(shapeOf("dimension: 4\nsizes: 3 2 5 2\n"), (Sizes{4, 2, 5, 2}));
  EXPECT_EQ(shapeOf("dimension: 4\nsizes: 3 2 5 2\nkinds: domain domain domain list\n"), (Sizes{1, 3, 2, 5}));
  EXPECT_EQ(shapeOf("dimension: 4\nsizes: 1 2 5 3\nkinds: scalar domain domain domain\n"),
            (Sizes{1, 2, 5, 3}));
}

TEST(NrrdFormat, GivesWideIntegersTheSmallestTypeThatHoldsThem)
{
  const TemporaryFolder folder;
  const auto open = [&](const std::string& type, const std::string& values) {
    return nrrd->open(folder.put(
        "w.nrrd", header("type: " + type + "\nencoding: ascii\ndimension: 2\nsizes: 2 1\n\n") + values));
  };
  EXPECT_EQ(valuesOf<std::uint8_t>(*open("uint32", "0 255")), (std::vector<std::uint8_t>{0, 255}));
  EXPECT_EQ(valuesOf<std::int16_t>(*open("int64", "-1 300")), (std::vector<std::int16_t>{-1, 300}));
  EXPECT_EQ(valuesOf<std::uint16_t>(*open("uint64", "0 65535")), (std::vector<std::uint16_t>{0, 65535}));
  EXPECT_EQ(valuesOf<std::int32_t>(*open("uint", "1 2147483647")),
            (std::vector<std::int32_t>{1, 2147483647}));
  EXPECT_EQ(valuesOf<double>(*open("uint", "1 2147483648")), (std::vector<double>{1, 2147483648.0}));
  EXPECT_EQ(valuesOf<double>(*open("int64", "-9007199254740992 5")),
            (std::vector<double>{-9007199254740992.0, 5}));
  EXPECT_EQ(valuesOf<std::int16_t>(*open("int8", "-128 127")), (std::vector<std::int16_t>{-128, 127}));
  EXPECT_EQ(open("uint32", "0 255")->info().storedType, "uint32");
  const std::string tooLarge =
      header("type: uint64\nencoding: ascii\ndimension: 2\nsizes: 2 1\n\n1 9007199254740993");
  expectRefused(*nrrd, folder.put("l.nrrd", tooLarge), "uint64 lie beyond 2^53");
}

// A slice is converted by parts; its size is no multiple of theirs.
TEST(NrrdFormat, ConvertsLargeSlicesInAnyOrder)
{
  const TemporaryFolder folder;
  std::vector<std::uint16_t> values(1001 * 703 * 2);
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<std::uint16_t>(i * 7919 >> 3);
  const std::string lines = "type: uint16\nencoding: raw\ndimension: 3\nsizes: 1001 703 2\nendian: ";
  const bool little = std::endian::native == std::endian::little;
  const std::string path =
      folder.put("s.nrrd", header(lines + (little ? "big" : "little") + "\n\n") + bytesOf(values, true));
  const auto reader = nrrd->open(path);
  const std::size_t half = values.size() / 2;
  std::vector<std::uint16_t> slice(half);
  for (const int k : {1, 0, 1}) {
    reader->readSlice(k, slice.data());
    EXPECT_TRUE(
        std::equal(slice.begin(), slice.end(), values.begin() + (k ? static_cast<std::ptrdiff_t>(half) : 0)));
  }
}

TEST(NrrdFormat, QuotesADamagedHeaderInOneSentence)
{
  const TemporaryFolder folder;
  const std::string lines = "encoding: raw\ndimension: 3\nsizes: 3 2 2\ntype: ";
  const std::string control =
      folder.put("c.nrrd", header(lines + std::string("u\0int\x1b\x7f", 7) + "8\n\n"));
  expectRefused(*nrrd, control, "the type \"u?int??8\" is not supported.");
  std::string accents;
  for (int i = 0; i < 50'000; ++i) accents += "\u00FC";
  const std::string sentence = refusal(*nrrd, folder.put("l.nrrd", header(lines + accents + "\n\n")));
  EXPECT_LT(sentence.size(), folder.file("l.nrrd").size() + 600);
  EXPECT_TRUE(sentence.ends_with("\u00FC....")) << sentence;
}

// A file is read by chunks of 65536 bytes: in some of these the last voxel and the checksum lie in two of
// them.
TEST(NrrdFormat, ChecksThePackedDataToTheirEnd)
{
  const TemporaryFolder folder;
  for (const bool gzip : {true, false}) {
    for (std::size_t size = 65490; size < 65536; size += 3) {
      const std::string voxels(size, '\5'), sound = packed(voxels, gzip),
                                            more = packed(voxels + "more", gzip);
      const std::string lines =
          header("encoding: gzip\ntype: uint8\ndimension: 2\nsizes: " + std::to_string(size) + " 1\n\n");
      for (const std::string& data : {sound, more, sound + "padding", sound + packed("another member", gzip)})
        EXPECT_EQ(refusal(*nrrd, folder.put("s.nrrd", lines + data)), "") << size;
      const std::size_t sum = gzip ? 8 : 4; // from the end
      for (std::string data : {sound, more}) {
        data[data.size() - sum] ^= 1;
        expectRefused(*nrrd, folder.put("d.nrrd", lines + data), "its compressed data are damaged");
        data.resize(data.size() - 1);
        EXPECT_NE(refusal(*nrrd, folder.put("d.nrrd", lines + data)), "");
      }
      expectRefused(*nrrd, folder.put("d.nrrd", lines + sound.substr(0, sound.size() - 1)), "end too early");
    }
  }
}

TEST(NrrdFormat, RefusesWhatItCannotReadByNameAndReason)
{
  const TemporaryFolder folder;
  const std::string raw = "encoding: raw\ndimension: 3\nsizes: 3 2 2\n";
  const std::pair<std::string, std::string> cases[] = {
      {raw + "type: block\n\n", "\"block\" is not supported"},
      {raw + "type: float\nendian: little\nkinds: 3-vector domain domain\n\n",
       "3 values of the type float (3-vector)"},
      {raw + "type: uint8\nkinds: HSV-color domain domain\n\n", "(hsv-color)"},
      {raw + "type: uint8\nkinds: domain domain 2-vector\n\n", "axis 2 is of the kind 2-vector"},
      {raw + "type: uint8\nkinds: domain domain\n\n", "\"kinds\" holds 2 entries for 3 axes"},
      {raw + "type: uint8\nbyte skip: -2\n\n", "negative"},
      {raw + "type: uint8\nline skip: 9\n\n123456789012", "fewer lines"},
      {raw + "type: uint8\nthis is no field\n\n", "neither field nor key"},
      {raw + "type: uint8\ndata file: gone.raw\n", "\"gone.raw\" is missing"},
      {raw + "type: uint8\ndata file: /dev/zero\n", "regular"},
      {raw + "type: uint8\ndata file: x%s 1 2 1\n", "pattern"},
      {raw + "type: uint8\ndata file: LIST\n\n", "0 files"},
      {raw + "type: uint8\n\n12345678901", "room for 11 at most"},
      {"encoding: gzip\ndimension: 3\nsizes: 30000 30000 30000\ntype: uint8\n\nabc", "truncated"},
      {"encoding: ascii\ndimension: 2\nsizes: 2 1\ntype: uint8\n\n1 256", "no value of the type uint8"},
      {"encoding: hex\ndimension: 2\nsizes: 2 1\ntype: uint8\n\n01xy", "no hexadecimal digits"},
  };
  for (const auto& [lines, reason] : cases) {
    SCOPED_TRACE(lines);
    const std::string name = reason == "regular" ? "zero" : "r.nrrd";
    const std::string path = folder.put("r.nrrd", header(lines));
    EXPECT_NE(refusal(*nrrd, path).find(name), std::string::npos);
    EXPECT_NE(refusal(*nrrd, path).find(reason), std::string::npos) << refusal(*nrrd, path);
  }
}

} // namespace
} // namespace io::testing
