#include "IoTest.h"

#include "NumberPattern.h"

#include <cstring>

using namespace iotest;

namespace {

class SliceSequenceTest : public FolderTest {
protected:
  /// A picture of 8-bit grey whose pixels all have one value.
  void writeFlat(const std::string& name, int value, ZxDims size = {3, 2, 1})
  {
    const auto slice = makeVolume({.dims = size});
    std::memset(slice->getLattice()->beginWrite(0), value, size.slicePixels());
    slice->getLattice()->endWrite(0);
    io::writeVolume(*slice, path(name));
  }
  static std::vector<int> values(ZxField3& field)
  {
    std::vector<int> result;
    for (int k = 0; k < field.getLattice()->getDims().slices; ++k) result.push_back(sliceBytes(field, k)[0]);
    return result;
  }
};

} // namespace

TEST(NumberPatternTest, OnePlaceForANumber)
{
  const auto name = [](const char* text, int k) {
    const auto pattern = io::NumberPattern::parse(text);
    return pattern ? pattern->name(k) : "none";
  };
  EXPECT_EQ(name("a_%04d.tif", 7), "a_0007.tif");
  EXPECT_EQ(name("%d", 12345), "12345");
  EXPECT_EQ(name("100%%_%3d", 7), "100%_  7");
  for (const char* bad :
       {"a.tif", "%s", "%n", "%d%d", "%", "%12d", "%-4d", "%04", "%ld", "%.3d", "%d%", "%%"}) {
    EXPECT_EQ(name(bad, 1), "none") << bad;
  }
  const auto pattern = io::NumberPattern::parse("a_%03d.tif");
  EXPECT_EQ(pattern->numberIn("a_012.tif"), 12);
  EXPECT_EQ(pattern->numberIn("a_1234.tif"), 1234);
  for (const char* other : {"a_12.tif", "a_0012.tif", "a_.tif", "a_-01.tif", "b_012.tif", "a_012.tiff"}) {
    EXPECT_EQ(pattern->numberIn(other), -1) << other;
  }
}

TEST(NumberPatternTest, NaturalOrder)
{
  const std::vector<std::string> order = {
      "a", "a1", "a02", "a2", "a2b", "a10", "a10.5", "a99999999999999999999", "a100000000000000000000", "b1"};
  for (std::size_t i = 0; i < order.size(); ++i) {
    for (std::size_t j = 0; j < order.size(); ++j) {
      EXPECT_EQ(io::naturalLess(order[i], order[j]), i < j) << order[i] << ' ' << order[j];
    }
  }
}

TEST_F(SliceSequenceTest, FoldersAreReadInNaturalOrderWithoutWhatIsNoPicture)
{
  writeFlat("s10.png", 10);
  writeFlat("s9.tif", 9);
  writeFlat("s100.PNG.png", 100);
  for (const char* other : {"notes.txt", ".hidden.png", "s1.json"}) writeBytes(path(other), "no picture");
  fs::create_directory(folder / "s0.png");
  const auto volume = io::readVolume({folder.string() + "/"});
  EXPECT_EQ(values(*volume), (std::vector<int>{9, 10, 100}));
  EXPECT_EQ(volume->getLabel().str(), folder.filename().string());
}

TEST_F(SliceSequenceTest, ListsKeepTheirOrderUnlessAShellMadeIt)
{
  for (const int k : {1, 2, 10}) writeFlat("s" + std::to_string(k) + ".png", k);
  const auto read = [&](std::vector<std::string> list) {
    for (std::string& name : list) name = path(name);
    return values(*io::readVolume(list));
  };
  EXPECT_EQ(read({"s1.png", "s10.png", "s2.png"}), (std::vector<int>{1, 2, 10}));
  EXPECT_EQ(read({"s10.png", "s1.png", "s2.png"}), (std::vector<int>{10, 1, 2}));
  EXPECT_EQ(read({"s2.png", "s2.png"}), (std::vector<int>{2, 2}));
}

TEST_F(SliceSequenceTest, StacksInAListGiveAllTheirSlices)
{
  const auto stack = makeVolume({.dims = {3, 2, 2}});
  io::writeVolume(*stack, path("b.tif"));
  writeFlat("a.png", 5);
  const auto volume = io::readVolume({path("b.tif"), path("a.png")});
  EXPECT_EQ(allBytes(*volume), allBytes(*stack) + std::string(6, '\5'));
}

TEST_F(SliceSequenceTest, UnequalSlicesAreRefusedWithBothNames)
{
  writeFlat("a.png", 1);
  writeFlat("b.png", 2, {4, 5, 1});
  const std::string sentence = refusalOf(folder.string());
  for (const char* part : {"a.png", "b.png", "3 x 2", "4 x 5"})
    EXPECT_NE(sentence.find(part), std::string::npos) << sentence;
  const io::ReadOptions pad{.unequalSlices = io::UnequalSlices::PadToLargest};
  EXPECT_EQ(io::readInfo({folder.string()}, pad).shape.dims, (ZxDims{4, 5, 2}));
  const std::string padded = sliceBytes(*io::readVolume({folder.string()}, pad), 0);
  EXPECT_EQ(padded, std::string("\0\0\0\0\1\1\1\0\1\1\1\0\0\0\0\0\0\0\0\0", 20));
  io::writeVolume(*makeVolume({.dims = {3, 2, 1}, .primType = McPrimType::UInt16}), path("b.png"));
  const std::string types = refusalOf(folder.string());
  for (const char* part : {"a.png", "b.png", "uint8", "uint16"})
    EXPECT_NE(types.find(part), std::string::npos) << types;
}

TEST_F(SliceSequenceTest, WrittenSequencesComeBackWithTheirParameters)
{
  const auto volume = makeVolume({.dims = {5, 4, 12}, .primType = McPrimType::Float});
  const ZxFileGeometry geometry{.origin = {1, 2, 3}, .voxelSize = {0.1, 0.2, 0.3}, .unit = "nm"};
  geometry.store(volume->parameters());
  volume->getLattice()->setBoundingBox(geometry.box({5, 4, 12}));
  volume->parameters().setNum("slices", 12);
  io::writeVolume(*volume, path("out/"));
  const auto expectSame = [&](ZxField3& read) {
    EXPECT_EQ(allBytes(read), allBytes(*volume));
    EXPECT_EQ(read.getLattice()->getBoundingBox(), volume->getLattice()->getBoundingBox());
    int slices = 0;
    EXPECT_TRUE(read.parameters().findNums("slices", 1, &slices));
    EXPECT_EQ(ZxFileGeometry::of(read).origin[2], 3);
  };
  expectSame(*io::readVolume({path("out")}));
  io::writeVolume(*volume, path("x_%d.tif"));
  std::vector<std::string> list;
  for (int k = 0; k < 12; ++k) list.push_back(path("x_" + std::to_string(k) + ".tif"));
  expectSame(*io::readVolume(list));
  list.erase(list.begin() + 5);
  EXPECT_EQ(io::readInfo(list).parameters.getNumEntries(), 0);
  EXPECT_FALSE(io::readInfo(list).remarks.empty());
}

TEST_F(SliceSequenceTest, AShorterSequenceDoesNotMixWithALongerOne)
{
  io::writeVolume(*makeVolume({.dims = {5, 4, 3}}), path("x_%02d.tif"));
  const auto shorter = makeVolume({.dims = {5, 4, 2}});
  EXPECT_NE(refusal([&] { io::writeVolume(*shorter, path("x_%02d.tif")); }).find("x_02.tif"),
            std::string::npos);
  io::writeVolume(*makeVolume({.dims = {5, 4, 3}}, 9), path("x_%02d.tif"));
}
