#include "IoTest.h"

#include "TiffRemains.h"
#include "zx/ZxRecordingWorkArea.h"

#include <tiffio.h>

#include <map>

using namespace iotest;

namespace {

/// The voxels of a volume; keeps the slices that were asked for.
class AskedSource final : public ZxVoxelSource {
public:
  AskedSource(ZxLattice& lattice, std::vector<int>& asked) : m_lattice(lattice), m_asked(asked) {}
  bool readSlice(int k, void* dst) override
  {
    m_asked.push_back(k);
    return m_lattice.readSlice(k, dst);
  }
  bool readBox(const ZxBox3i& box, void* dst) override { return m_lattice.readBox(box, dst); }
  const void* sliceInMemory(int) const override { return nullptr; }
  void* beginWrite(int) override { return nullptr; }
  bool endWrite(int) override { return false; }

private:
  ZxLattice& m_lattice;
  std::vector<int>& m_asked;
};

struct Case {
  const char* name;
  ZxLatticeShape shape;
};
constexpr ZxLatticeShape grey{.dims = {7, 5, 4}};
constexpr ZxLatticeShape real{.dims = {5, 6, 5}, .primType = McPrimType::Float};
constexpr ZxLatticeShape colour{.dims = {3, 5, 4}, .numDataVars = 4};
constexpr Case files[] = {
    {"v.mrc", grey},   {"v.mrc", real}, {"v.nrrd", colour}, {"v.nhdr", grey},  {"v.mha", real},
    {"v.mhd", colour}, {"v.nii", grey}, {"v.tif", real},    {"v.tif", colour}, {"v.tif", {.dims = {4, 3, 1}}},
};

class ContinuationTest : public FolderTest {
protected:
  void begin(const ZxLatticeShape& shape)
  {
    volume = makeVolume(shape);
    volume->parameters().setReals("Note", {0.1});
    source = ZxField3::create(
        std::make_unique<ZxLattice3>(shape, std::make_unique<AskedSource>(*volume->getLattice(), asked)));
    source->getLattice()->setBoundingBox(volume->getLattice()->getBoundingBox());
    source->parameters() = volume->parameters();
  }
  /// The path of a file in an empty folder.
  std::string in(const std::string& folderName, const std::string& name)
  {
    fs::remove_all(path(folderName));
    fs::create_directories(path(folderName));
    return path(folderName) + '/' + name;
  }
  std::map<std::string, std::string> contents(const std::string& folderName) const
  {
    std::map<std::string, std::string> result;
    for (const auto& entry : fs::directory_iterator(path(folderName)))
      result[entry.path().filename().string()] = readBytes(entry.path().string());
    return result;
  }
  void put(const std::string& folderName, const std::map<std::string, std::string>& all)
  {
    in(folderName, "");
    for (const auto& [name, bytes] : all) writeBytes(path(folderName + '/' + name), bytes);
  }
  /// Continues at a path. Only what was not taken over may be asked for, each slice once.
  int continueAt(const std::string& target)
  {
    asked.clear();
    const int taken = io::continueVolume(*source, target);
    std::vector<int> expected;
    for (int k = taken; k < volume->getLattice()->getDims().slices; ++k) expected.push_back(k);
    EXPECT_EQ(asked, expected);
    return taken;
  }

  McHandle<ZxField3> volume;
  McHandle<ZxField3> source; ///< the same without memory
  std::vector<int> asked;
};

} // namespace

TEST_F(ContinuationTest, GoesOnWhereItWasStopped)
{
  for (const auto& [name, shape] : files) {
    begin(shape);
    io::writeVolume(*volume, in("whole", name));
    for (int k = 0; k <= shape.dims.slices; ++k) {
      SCOPED_TRACE(name + std::to_string(k));
      const std::string target = in("part", name);
      {
        ZxRecordingWorkArea area;
        area.interruptAtQuery(k + 1);
        if (k < shape.dims.slices)
          EXPECT_THROW(io::continueVolume(*source, target), io::Interrupted);
        else
          EXPECT_EQ(io::continueVolume(*source, target), 0);
      }
      EXPECT_EQ(continueAt(target), k);
      EXPECT_EQ(contents("part"), contents("whole"));
    }
  }
}

TEST_F(ContinuationTest, GoesOnFromAnyCutAndBehindGarbage)
{
  for (const auto& [name, shape] : files) {
    begin(shape);
    io::writeVolume(*volume, in("whole", name));
    const auto whole = contents("whole");
    // The file that holds the voxels: the header of a pair stands there before them.
    const auto voxels = whole.contains("v.raw") ? whole.find("v.raw") : whole.find(name);
    const std::size_t size = voxels->second.size();
    int before = 0;
    for (std::size_t cut = 0; cut <= size; cut = cut < size ? std::min(cut + 37, size) : size + 1) {
      SCOPED_TRACE(name + (' ' + std::to_string(cut)));
      auto part = whole;
      part[voxels->first].resize(cut);
      put("part", part);
      const int taken = continueAt(path("part/") + name);
      EXPECT_GE(taken, before);
      before = taken;
      EXPECT_EQ(contents("part"), whole);
    }
    EXPECT_EQ(before, shape.dims.slices);
    auto longer = whole;
    longer[voxels->first] += std::string(3 * shape.sliceBytes(), 'x');
    put("part", longer);
    EXPECT_EQ(continueAt(path("part/") + name), shape.dims.slices);
    EXPECT_EQ(contents("part"), whole);
  }
}

TEST_F(ContinuationTest, StartsAnewOverWhatIsNotItsOwn)
{
  for (const auto& [name, shape] : files) {
    begin(shape);
    io::writeVolume(*volume, in("whole", name));
    ZxLatticeShape other = shape;
    std::swap(other.dims.width, other.dims.height);
    io::writeVolume(*makeVolume(other, 5), in("part", name));
    EXPECT_EQ(continueAt(path("part/") + name), 0) << name;
    EXPECT_EQ(contents("part"), contents("whole")) << name;
    writeBytes(in("part", name), "something else");
    EXPECT_EQ(continueAt(path("part/") + name), 0) << name;
    EXPECT_EQ(contents("part"), contents("whole")) << name;
  }
  for (const char* name : {"v.nii.gz", "v.mrc.gz"}) {
    begin(grey);
    io::writeVolume(*volume, in("part", name));
    EXPECT_EQ(io::continueVolume(*source, path("part/") + name), 0);
    EXPECT_EQ(allBytes(*io::readVolume({path("part/") + name})), allBytes(*volume));
  }
}

TEST_F(ContinuationTest, ADamagedLastPageIsWrittenAgain)
{
  begin(colour);
  io::writeVolume(*volume, in("whole", "v.tif"));
  const std::string whole = readBytes(path("whole/v.tif"));
  for (std::size_t from = whole.size() - 1; from > whole.size() - 200; from -= 5)
    for (const char c : {'\0', '\xff'}) {
      std::string damaged = whole;
      std::fill(damaged.begin() + static_cast<std::ptrdiff_t>(from), damaged.end(), c);
      writeBytes(in("part", "v.tif"), damaged);
      const int taken = continueAt(path("part/v.tif"));
      EXPECT_GE(taken, colour.dims.slices - 1);
      EXPECT_EQ(allBytes(*io::readVolume({path("part/v.tif")})), allBytes(*volume)) << from;
    }
}

TEST_F(ContinuationTest, SequencesKeepAllButTheLastFile)
{
  for (const char* name : {"s%02d.png", "s%02d.mrc", "new/"}) {
    begin(grey);
    io::writeVolume(*volume, in("whole", name));
    for (int k = 0; k < grey.dims.slices; ++k) {
      SCOPED_TRACE(name + std::to_string(k));
      const std::string target = in("part", name);
      {
        ZxRecordingWorkArea area;
        area.interruptAtQuery(2 * k + 1);
        EXPECT_THROW(io::continueVolume(*source, target), io::Interrupted);
      }
      EXPECT_EQ(continueAt(target), std::max(k - 1, 0));
      const std::string inside = *name == 'n' ? "/new" : "";
      EXPECT_EQ(contents("part" + inside), contents("whole" + inside));
    }
  }
}

TEST_F(ContinuationTest, WholePagesOfALargeFileAreFound)
{
  const io::TiffPlan plan{3, 60, {{TIFFTAG_IMAGEWIDTH, 6}, {TIFFTAG_BITSPERSAMPLE, 16}}, "the first"};
  TIFF* tiff = TIFFOpen(path("big.tif").c_str(), "w8");
  std::vector<std::size_t> ends;
  for (int k = 0; k < 3; ++k) {
    std::vector<std::uint16_t> pixels(30, static_cast<std::uint16_t>(k));
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 6);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 5);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 16);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 2);
    if (k == 0) TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, "the first");
    for (std::uint32_t s = 0; s < 3; ++s) TIFFWriteEncodedStrip(tiff, s, pixels.data(), s < 2 ? 24 : 12);
    TIFFWriteDirectory(tiff);
    ends.push_back(fs::file_size(path("big.tif")));
  }
  TIFFClose(tiff);
  const std::string whole = readBytes(path("big.tif"));
  for (std::size_t cut = whole.size(); cut >= 16; cut -= cut % 5 ? 1 : 4) {
    writeBytes(path("cut.tif"), whole.substr(0, cut));
    const auto expected =
        std::count_if(ends.begin(), ends.end(), [cut](std::size_t end) { return end <= cut; });
    EXPECT_EQ(io::keepWholePages(path("cut.tif"), plan), expected) << cut;
    if (expected == 0) continue;
    EXPECT_EQ(io::readInfo({path("cut.tif")}).shape.dims.slices, expected);
  }
  EXPECT_EQ(io::keepWholePages(path("big.tif"), {3, 60, {}, "another"}), 0);
}
