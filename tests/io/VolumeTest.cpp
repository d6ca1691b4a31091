#include "IoTest.h"

#include "mc/McRound.h"
#include "zx/ZxRecordingWorkArea.h"

#include <QCryptographicHash>
#include <nlohmann/json.hpp>

#include <sys/resource.h>

#include <csignal>
#include <cstring>
#include <limits>

using namespace iotest;
using Json = nlohmann::json;

namespace {

fs::path readersFolder() { return testDataFolder() / "readers"; }

Json readJson(const fs::path& path) { return Json::parse(readBytes(path.string())); }

template <class S, class T>
std::string narrowed(const std::string& bytes)
{
  std::string out;
  for (std::size_t i = 0; i < bytes.size(); i += sizeof(T)) {
    T value;
    std::memcpy(&value, bytes.data() + i, sizeof value);
    const S stored = static_cast<S>(value);
    out.append(reinterpret_cast<const char*>(&stored), sizeof stored);
  }
  return out;
}

/// The 16 bits of a float that came from them.
std::string halves(const std::string& bytes)
{
  std::string out;
  for (std::size_t i = 0; i < bytes.size(); i += sizeof(float)) {
    std::uint32_t bits;
    std::memcpy(&bits, bytes.data() + i, sizeof bits);
    const std::uint32_t exponent = bits >> 23 & 255;
    const std::uint32_t magnitude = exponent < 113 ? 0 : (exponent - 112) << 10 | (bits >> 13 & 1023);
    const auto half = static_cast<std::uint16_t>(bits >> 31 << 15 | magnitude);
    out.append(reinterpret_cast<const char*>(&half), sizeof half);
  }
  return out;
}

std::string withoutAlpha(const std::string& rgba)
{
  std::string out;
  for (std::size_t i = 0; i < rgba.size(); i += 4) out.append(rgba, i, 3);
  return out;
}

/// The samples as the file has them.
std::string storedBytes(ZxField3& field, const std::string& type, int channels)
{
  const std::string bytes = allBytes(field);
  if (channels == 3) return withoutAlpha(bytes);
  if (type == "int8") return narrowed<std::int8_t, std::int16_t>(bytes);
  if (type == "float16") return halves(bytes);
  return bytes;
}

std::string sha256(const std::string& bytes)
{
  const QByteArray view = QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
  return QCryptographicHash::hash(view, QCryptographicHash::Sha256).toHex().toStdString();
}

/// Mean of all values of slice k, alpha apart.
double sliceMean(ZxField3& field, int k)
{
  const std::string bytes = sliceBytes(field, k);
  return mcVisit(field.getLattice()->primType(), [&](auto zero) {
    using T = decltype(zero);
    double sum = 0;
    double count = 0;
    for (std::size_t i = 0; i * sizeof(T) < bytes.size(); ++i) {
      if (field.getLattice()->isColor() && i % 4 == 3) continue;
      T value;
      std::memcpy(&value, bytes.data() + i * sizeof(T), sizeof value);
      sum += static_cast<double>(value);
      ++count;
    }
    return sum / count;
  });
}

/// What a stored type is in memory.
std::string typeInMemory(const std::string& stored)
{
  if (stored == "int8") return "int16";
  if (stored == "float16" || stored == "float32") return "float";
  return stored;
}

void expectAsDescribed(const std::string& file, const Json& expected)
{
  SCOPED_TRACE(file);
  McHandle<ZxField3> field;
  ASSERT_NO_THROW(field = io::readVolume({file})) << refusalOf(file);
  const ZxLatticeShape& shape = field->getLattice()->shape();
  EXPECT_EQ(shape.dims.width, expected["width"]);
  EXPECT_EQ(shape.dims.height, expected["height"]);
  ASSERT_EQ(shape.dims.slices, expected["slices"]);
  const int channels = expected["channels"];
  EXPECT_EQ(shape.numDataVars, channels == 3 ? 4 : 1);
  const std::string type = expected["type"];
  if (expected.value("sha256", Json()).is_string() && file.find("lossy") == std::string::npos) {
    EXPECT_STREQ(mcNameOf(shape.primType), typeInMemory(type).c_str());
    EXPECT_EQ(sha256(storedBytes(*field, type, channels)), expected["sha256"]);
    return;
  }
  if (!expected.contains("slice_means")) return;
  for (int k = 0; k < shape.dims.slices; ++k)
    EXPECT_NEAR(sliceMean(*field, k), expected["slice_means"][k], 1.0);
}

struct Statistics {
  double min = std::numeric_limits<double>::infinity();
  double max = -std::numeric_limits<double>::infinity();
  double mean = 0;
};

/// Of all values of slice 0.
Statistics statisticsOf(ZxField3& field, bool withAlpha)
{
  const std::string bytes = sliceBytes(field, 0);
  return mcVisit(field.getLattice()->primType(), [&](auto zero) {
    using T = decltype(zero);
    Statistics result;
    double count = 0;
    for (std::size_t i = 0; i * sizeof(T) < bytes.size(); ++i) {
      if (field.getLattice()->isColor() && i % 4 == 3 && !withAlpha) continue;
      T value;
      std::memcpy(&value, bytes.data() + i * sizeof(T), sizeof value);
      result.min = std::min(result.min, static_cast<double>(value));
      result.max = std::max(result.max, static_cast<double>(value));
      result.mean += static_cast<double>(value);
      ++count;
    }
    result.mean /= count;
    return result;
  });
}

/// Grey and palette of any depth, colour of 8 bits; of the other formats all but a header without its image
/// and a line of numbers.
bool isSupported(const std::string& name, const Json& facts)
{
  if (!facts.contains("pages"))
    return name.find("nifti1.hdr") == std::string::npos && name.find("1d") == std::string::npos;
  const std::string photometric = facts["photometric"];
  if (facts["samples"] == 1) return true;
  return facts["bits"] == 8 && facts["sample_format"] == "1" &&
         (photometric == "RGB" || photometric == "YCBCR");
}

/// Compares the first page with what another reader says of it. One of them spreads 2 and 4 bits to 0..255,
/// turns packed pictures with white at 0 over, and divides colours by their alpha.
void expectLikeOtherReader(ZxField3& field, const Json& facts)
{
  const Json& page = facts["first_page"];
  if (!page.is_object() || !page.value("min", Json()).is_number()) return;
  const bool pillow = page["by"] == "Pillow";
  const int bits = facts["bits"];
  const bool spread = pillow && facts["photometric"] != "PALETTE" && (bits == 2 || bits == 4);
  const double scale = spread ? 255.0 / ((1 << bits) - 1) : 1.0;
  if (pillow && (facts["samples"] == 4 || facts["photometric"] == "MINISWHITE")) return;
  if (facts["samples"] == 4 && page["max"] == 1) return; // a fourth sample that is no alpha
  const Statistics own = statisticsOf(field, facts["samples"] == 4);
  const double tolerance = facts["compression"] == "JPEG" ? 1.0 : 6e-5;
  EXPECT_NEAR(own.min * scale, page["min"], tolerance);
  EXPECT_NEAR(own.max * scale, page["max"], tolerance);
  EXPECT_NEAR(own.mean * scale, page["mean"], tolerance);
}

/// Refused with one sentence that names the file or one that belongs to it, and quickly enough to be no
/// attack.
void expectRefused(const fs::path& file)
{
  const std::string sentence = refusalOf(file.string());
  EXPECT_NE(sentence, "") << file << " was read";
  EXPECT_NE(sentence.find(file.parent_path().string()), std::string::npos) << sentence;
  EXPECT_EQ(sentence.find('\n'), std::string::npos) << sentence;
  EXPECT_EQ(sentence.back(), '.');
}

/// Parameters of all kinds, with the values that text loses most easily.
ZxParamBundle someParameters()
{
  ZxParamBundle p;
  p.setNums("IndexMin", {-2147483647 - 1, 0, 2147483647});
  p.setReals("reals", {0.1, -0.0, 1e-310, 12345678.000000001, std::numeric_limits<double>::infinity()});
  p.setString("note", "two\nlines = \"quoted\" : 100% \\ \xC3\xA9");
  p.setString("empty", "");
  ZxParamBundle* align = p.getBundle("AlignTransform");
  align->setReals("slice0000", {3.25, -4.0, 10.1});
  align->getBundle("deep/er:")->setNum("n =", 7);
  p.getBundle("nothing");
  return p;
}

void expectEqual(const ZxParamBundle& a, const ZxParamBundle& b)
{
  ASSERT_EQ(a.getNumEntries(), b.getNumEntries());
  for (int i = 0; i < a.getNumEntries(); ++i) {
    const auto& x = a.entries()[static_cast<std::size_t>(i)];
    const auto& y = b.entries()[static_cast<std::size_t>(i)];
    EXPECT_EQ(x.name, y.name);
    ASSERT_EQ(x.value.index(), y.value.index()) << x.name;
    if (const auto* bundle = std::get_if<ZxParamBundle::Bundle>(&x.value)) {
      expectEqual(**bundle, *std::get<ZxParamBundle::Bundle>(y.value));
    } else if (const auto* reals = std::get_if<ZxParamBundle::Reals>(&x.value)) {
      const auto& others = std::get<ZxParamBundle::Reals>(y.value);
      ASSERT_EQ(reals->size(), others.size());
      EXPECT_EQ(std::memcmp(reals->data(), others.data(), reals->size() * sizeof(double)), 0) << x.name;
    } else {
      EXPECT_EQ(x.value, y.value) << x.name;
    }
  }
}

const ZxLatticeShape shapes[] = {
    {.dims = {13, 7, 3}, .primType = McPrimType::UInt8},
    {.dims = {13, 7, 3}, .primType = McPrimType::Int16},
    {.dims = {13, 7, 3}, .primType = McPrimType::UInt16},
    {.dims = {13, 7, 3}, .primType = McPrimType::Int32},
    {.dims = {13, 7, 3}, .primType = McPrimType::Float},
    {.dims = {13, 7, 3}, .primType = McPrimType::Double},
    {.dims = {13, 7, 3}, .numDataVars = 4, .primType = McPrimType::UInt8},
};

class VolumeTest : public FolderTest {};

} // namespace

TEST_F(VolumeTest, ReadsTheFilesOfOtherPrograms)
{
  const fs::path data = readersFolder() / "written_by_other_programs";
  if (!fs::exists(data / "expected.json")) GTEST_SKIP() << "no test data";
  const Json expected = readJson(data / "expected.json");
  for (const auto& [name, facts] : expected.items()) {
    if (facts.contains("width"))
      expectAsDescribed((data / name).string(), facts);
    else
      expectRefused(data / name);
  }
}

TEST_F(VolumeTest, ReadsOtherFilesLikeOtherReaders)
{
  const fs::path data = readersFolder();
  if (!fs::exists(data / "expected_other_files.json")) GTEST_SKIP() << "no test data";
  const Json expected = readJson(data / "expected_other_files.json");
  for (const auto& [name, facts] : expected.items()) {
    SCOPED_TRACE(name);
    const std::string file = (data / name).string();
    if (!isSupported(name, facts)) {
      expectRefused(file);
      continue;
    }
    McHandle<ZxField3> field;
    ASSERT_NO_THROW(field = io::readVolume({file})) << refusalOf(file);
    if (!facts.contains("pages")) continue;
    EXPECT_EQ(field->getLattice()->getDims().width, facts["width"]);
    EXPECT_EQ(field->getLattice()->getDims().height, facts["height"]);
    expectLikeOtherReader(*field, facts);
  }
}

TEST_F(VolumeTest, RefusesDamagedFiles)
{
  const fs::path data = readersFolder() / "malformed_made";
  if (!fs::exists(data / "cases.json")) GTEST_SKIP() << "no test data";
  const Json cases = readJson(data / "cases.json");
  for (const auto& [name, facts] : cases.items()) {
    const std::string expectation = facts["expect"];
    const bool mayRefuse = expectation.find("refuse") != std::string::npos;
    const bool mayRead = expectation.find("read") != std::string::npos;
    const std::string sentence = refusalOf((data / name).string());
    if (sentence.empty())
      EXPECT_TRUE(mayRead) << name << " was read";
    else
      EXPECT_TRUE(mayRefuse) << sentence;
    if (!sentence.empty()) expectRefused(data / name);
  }
}

TEST_F(VolumeTest, RefusesFuzzedFiles)
{
  const fs::path data = readersFolder() / "tiff_malformed_fuzz";
  if (!fs::exists(data)) GTEST_SKIP() << "no test data";
  for (const auto& entry : fs::directory_iterator(data)) expectRefused(entry.path());
}

TEST_F(VolumeTest, RefusesFilesThatAreNone)
{
  EXPECT_NE(refusalOf(path("absent.tif")).find("absent.tif"), std::string::npos);
  EXPECT_NE(refusalOf(folder.string()).find("no TIFF"), std::string::npos);
  EXPECT_NE(refusal([] { io::readVolume({}); }), "");
  EXPECT_NE(refusalOf("/dev/null").find("regular"), std::string::npos);
}

TEST_F(VolumeTest, EveryTypeComesBackFromEveryFormat)
{
  int written = 0;
  for (const char* ending :
       {".tif", ".nrrd", ".nhdr", ".mha", ".mhd", ".mrc", ".nii", ".nii.gz", "_%03d.png"}) {
    for (const ZxLatticeShape& shape : shapes) {
      const std::string file = path("v" + std::to_string(written) + ending);
      if (!io::checkWritable(shape, file).empty()) continue;
      SCOPED_TRACE(file + ' ' + mcNameOf(shape.primType));
      const McHandle<ZxField3> volume = makeVolume(shape);
      ZxFileGeometry geometry{
          .origin = {-0.1, 3.3, 1e6 / 3}, .voxelSize = {0.0046, 0.3, 0.05 / 3}, .unit = "micron"};
      volume->parameters() = someParameters();
      geometry.store(volume->parameters());
      volume->getLattice()->setBoundingBox(geometry.box(shape.dims));
      io::writeVolume(*volume, file);
      std::vector<std::string> inputs = {file};
      if (file.ends_with("png")) inputs = {file.substr(0, file.size() - 8) + "000.png", "", ""};
      for (std::size_t k = 1; k < inputs.size(); ++k) {
        inputs[k] = inputs[0];
        inputs[k].replace(inputs[k].size() - 5, 1, std::to_string(k));
      }
      const McHandle<ZxField3> read = io::readVolume(inputs);
      EXPECT_EQ(read->getLattice()->primType(), shape.primType);
      EXPECT_EQ(read->getLattice()->getNumDataVars(), shape.numDataVars);
      EXPECT_EQ(read->getLattice()->getDims(), shape.dims);
      EXPECT_EQ(allBytes(*read), allBytes(*volume));
      EXPECT_EQ(read->getLattice()->getBoundingBox(), volume->getLattice()->getBoundingBox());
      expectEqual(volume->parameters(), read->parameters());
      ++written;
    }
  }
  EXPECT_GE(written, 45);
}

TEST_F(VolumeTest, RefusesToWriteWhereItCannot)
{
  const McHandle<ZxField3> volume = makeVolume(shapes[0]);
  writeBytes(path("plain"), "x");
  for (const char* name : {"absent/v.tif", "plain/v.tif", "v.xyz", "v.jpg", "v.png", "v", "v_%s.tif",
                           "v_%d_%d.tif", "v_%99d.tif", "absent/folder/", "plain/"}) {
    SCOPED_TRACE(name);
    const std::string sentence = refusal([&] { io::writeVolume(*volume, path(name)); });
    EXPECT_NE(sentence, "");
    EXPECT_EQ(sentence, io::checkWritable(shapes[0], path(name)));
  }
  EXPECT_EQ(names(), std::vector<std::string>{"plain"});
}

TEST_F(VolumeTest, OverwritesAndForgetsOldParameters)
{
  const McHandle<ZxField3> first = makeVolume(shapes[1], 1);
  first->parameters() = someParameters();
  const McHandle<ZxField3> second = makeVolume(shapes[4], 2);
  io::writeVolume(*first, path("v.tif"));
  fs::create_symlink("v.tif", folder / "link.tif");
  io::writeVolume(*second, path("link.tif"));
  EXPECT_TRUE(fs::is_symlink(folder / "link.tif"));
  const McHandle<ZxField3> read = io::readVolume({path("v.tif")});
  EXPECT_EQ(allBytes(*read), allBytes(*second));
  EXPECT_EQ(read->parameters().findBundle("AlignTransform"), nullptr);
  EXPECT_EQ(read->getLabel(), "v.tif");
  EXPECT_FALSE(read->isUnsaved());
}

TEST_F(VolumeTest, AFullDiskLeavesWhatWasThere)
{
  const ZxLatticeShape large{.dims = {200, 100, 10}};
  const McHandle<ZxField3> volume = makeVolume(large);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const auto previous = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit small{60000, before.rlim_max};
  for (const char* name : {"v.tif", "v.nrrd", "v.nhdr", "v.mha", "v.mhd", "v.mrc", "v.nii", "v.nii.gz"}) {
    writeBytes(path(name), "old");
    setrlimit(RLIMIT_FSIZE, &small);
    const std::string sentence = refusal([&] { io::writeVolume(*volume, path(name)); });
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_NE(sentence.find("/v."), std::string::npos) << name << ": " << sentence;
    EXPECT_EQ(readBytes(path(name)), "old");
    EXPECT_EQ(names(), std::vector<std::string>{name});
    fs::remove(path(name));
  }
  const rlimit tiny{5000, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &tiny);
  const std::string sentence = refusal([&] { io::writeVolume(*volume, path("new/")); });
  const std::string png = refusal([&] { io::writeVolume(*volume, path("s%d.png")); });
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, previous);
  EXPECT_NE(sentence, "");
  EXPECT_NE(png, "");
  EXPECT_TRUE(names().empty());
}

TEST_F(VolumeTest, AStopLeavesNothingBehind)
{
  const McHandle<ZxField3> volume = makeVolume(shapes[0]);
  io::writeVolume(*volume, path("v.tif"));
  for (const char* name : {"w.tif", "w.nrrd", "w.mhd", "w.mrc", "w.nii.gz", "w/", "w%d.png"}) {
    ZxRecordingWorkArea area;
    area.startWorking("");
    area.interruptAtQuery(2);
    EXPECT_THROW(io::writeVolume(*volume, path(name)), io::Interrupted) << name;
    EXPECT_EQ(names(), std::vector<std::string>{"v.tif"}) << name;
  }
  ZxRecordingWorkArea area;
  area.startWorking("");
  io::readVolume({path("v.tif")});
  float last = 0;
  for (const auto& step : area.steps()) {
    EXPECT_GE(step.fraction, last);
    last = step.fraction;
  }
  EXPECT_GT(last, 0.5f);
  area.interruptAtQuery(area.getNumQueries() + 2);
  EXPECT_THROW(io::readVolume({path("v.tif")}), io::Interrupted);
}

TEST_F(VolumeTest, LabelsAreIntegers)
{
  for (const ZxLatticeShape& shape : shapes) {
    const bool integers = shape.numDataVars == 1 && ZxLabelLattice::isLabelType(shape.primType);
    io::writeVolume(*makeVolume(shape), path("labels.nrrd"));
    const auto read = [&] { return io::readLabels({path("labels.nrrd")}); };
    if (integers)
      EXPECT_EQ(read()->getLattice()->primType(), shape.primType);
    else
      EXPECT_NE(refusal(read).find("labels"), std::string::npos);
  }
}

TEST_F(VolumeTest, RefusesWhatDoesNotFitIntoMemory)
{
  // A terabyte that is there, as a hole in the file.
  writeBytes(path("large.nrrd"),
             "NRRD0004\ntype: uint8\ndimension: 3\nsizes: 65536 65536 256\nencoding: raw\n\n");
  std::error_code error;
  fs::resize_file(path("large.nrrd"), fs::file_size(path("large.nrrd")) + (std::uintmax_t{1} << 40), error);
  if (error) GTEST_SKIP() << "no files of this size here";
  EXPECT_EQ(io::readInfo({path("large.nrrd")}).shape.dims.slices, 256);
  EXPECT_NE(refusalOf(path("large.nrrd")).find("memory"), std::string::npos) << refusalOf(path("large.nrrd"));
}
