#include "FormatTesting.h"
#include "IndependentReader.h"

#include <itkNiftiImageIO.h>

namespace io::testing {
namespace {

const std::unique_ptr<Format> nifti = makeNiftiFormat();

/// A NIfTI-1 file of 3 x 2 x 2 voxels that is changed field by field.
class NiftiFile {
public:
  explicit NiftiFile(bool swapped = false) : m_bytes(352, '\0'), m_swapped(swapped)
  {
    put<std::int32_t>(0, 348);
    sizes({3, 3, 2, 2});
    put<std::int16_t>(70, 4);
    for (std::size_t i = 1; i < 4; ++i) put(76 + 4 * i, 0.5f * static_cast<float>(i));
    put(108, 352.0f);
    m_bytes.replace(344, 4, std::string("n+1\0", 4));
  }
  template <class T>
  NiftiFile& put(std::size_t at, T value)
  {
    m_bytes.replace(at, sizeof value, bytesOf(std::vector{value}, m_swapped));
    return *this;
  }
  NiftiFile& sizes(const std::vector<std::int16_t>& dim)
  {
    m_bytes.replace(40, 2 * dim.size(), bytesOf(dim, m_swapped));
    return *this;
  }
  NiftiFile& text(std::size_t at, const std::string& value)
  {
    m_bytes.replace(at, value.size(), value);
    return *this;
  }
  std::string with(const std::vector<std::int16_t>& values) const
  {
    return m_bytes + bytesOf(values, m_swapped);
  }

private:
  std::string m_bytes;
  bool m_swapped;
};

const std::vector<std::int16_t> kValues{-1, 2, 300, -400, 5, 6, 7, 8, 9, 10, 11, 32767};

TEST(NiftiFormat, BringsEveryTypeBackAndOtherReadersAgree)
{
  const TemporaryFolder folder;
  for (const McHandle<ZxField3>& volume : volumesOfAllTypes())
    for (const char* name : {"v.nii", "v.nii.gz"}) {
      SCOPED_TRACE(std::string(name) + " " + mcNameOf(volume->getLattice()->primType()));
      write(*nifti, *volume, folder.file(name));
      const auto reader = nifti->open(folder.file(name));
      EXPECT_EQ(reader->info().shape.primType, volume->getLattice()->primType());
      EXPECT_TRUE(voxelsOf(*reader) == voxelsOf(*volume));
      const ZxFileGeometry geometry = reader->info().geometry;
      expectExactGeometry(geometry, {{-1.5, static_cast<float>(0.1 + 0.2), static_cast<float>(1e-3)},
                                     {static_cast<float>(0.0046), static_cast<float>(4.0 / 3.0), 50.25},
                                     "micron"});
      const auto other = readIndependently(*itk::NiftiImageIO::New(), folder.file(name));
      EXPECT_TRUE(other.voxels == voxelsOf(*volume));
      EXPECT_EQ(other.sizes, (std::vector<std::size_t>{7, 5, 3}));
      EXPECT_NEAR(other.spacing[2] * 1000, 50.25, 1e-4) << "millimetres";
      EXPECT_EQ(other.origin[0], 1.5) << "its x axis points the other way, and it leaves the unit alone";
    }
}

TEST(NiftiFormat, WritesSizesBeyond16BitsInVersion2)
{
  const TemporaryFolder folder;
  const auto volume = makeVolume(McPrimType::Int16, 1, {40000, 2, 3});
  write(*nifti, *volume, folder.file("wide.nii"));
  EXPECT_EQ(folder.get("wide.nii").substr(4, 3), "n+2");
  const auto reader = nifti->open(folder.file("wide.nii"));
  EXPECT_TRUE(voxelsOf(*reader) == voxelsOf(*volume));
  expectExactGeometry(reader->info().geometry, ZxFileGeometry::of(*volume));
}

TEST(NiftiFormat, ReadsBothByteOrdersPairsAndOffsets)
{
  const TemporaryFolder folder;
  for (const bool swapped : {false, true}) {
    NiftiFile file(swapped);
    EXPECT_EQ(valuesOf<std::int16_t>(*nifti->open(folder.put("a.nii", file.with(kValues)))), kValues);
    file.put(108, 0.0f);
    EXPECT_EQ(valuesOf<std::int16_t>(*nifti->open(folder.put("z.nii", file.with(kValues)))), kValues);
    file.put(108, 4.0f).text(344, "ni1");
    const std::string header = folder.put("pair.hdr", file.with({}).substr(0, 348));
    const std::string image = folder.put("pair.img", "skip" + bytesOf(kValues, swapped));
    EXPECT_EQ(valuesOf<std::int16_t>(*nifti->open(header)), kValues);
    EXPECT_EQ(valuesOf<std::int16_t>(*nifti->open(image)), kValues);
  }
}

TEST(NiftiFormat, ScalesStoredIntegers)
{
  const TemporaryFolder folder;
  const auto open = [&](float slope, float intercept) {
    NiftiFile file;
    return nifti->open(folder.put("s.nii", file.put(112, slope).put(116, intercept).with(kValues)));
  };
  EXPECT_EQ(valuesOf<float>(*open(0.5f, -3.0f))[3], -203.0f);
  EXPECT_EQ(valuesOf<float>(*open(1.0f, 0.25f))[0], -0.75f);
  EXPECT_EQ(valuesOf<std::int16_t>(*open(1.0f, 0.0f)), kValues);
  EXPECT_EQ(valuesOf<std::int16_t>(*open(0.0f, 9.0f)), kValues);
  EXPECT_EQ(valuesOf<std::int16_t>(*open(std::numeric_limits<float>::quiet_NaN(), 9.0f)), kValues);
}

TEST(NiftiFormat, FindsGeometryAndTheFirstVolume)
{
  const TemporaryFolder folder;
  NiftiFile file;
  file.put<std::int8_t>(123, 2 + 8).put<std::int16_t>(254, 1);
  for (std::size_t i = 0; i < 3; ++i) file.put(280 + 16 * i + 12, 7.5f + static_cast<float>(i));
  const auto geometryOf = [&] {
    return nifti->open(folder.put("g.nii", file.with(kValues)))->info().geometry;
  };
  expectExactGeometry(geometryOf(), {{7.5, 8.5, 9.5}, {0.5, 1, 1.5}, "mm"});
  file.put<std::int16_t>(252, 1).put(268, -2.5f).put(80, -4.0f);
  expectExactGeometry(geometryOf(), {{-2.5, 0, 0}, {4, 1, 1.5}, "mm"});
  file.sizes({4, 3, 2, 1, 2});
  const auto reader = nifti->open(folder.put("4d.nii", file.with(kValues)));
  EXPECT_EQ(valuesOf<std::int16_t>(*reader), std::vector<std::int16_t>(kValues.begin(), kValues.begin() + 6));
  EXPECT_EQ(reader->info().remarks.at(0), "\"4d.nii\" holds 2 volumes, the first one is read.");
}

TEST(NiftiFormat, RefusesWhatItCannotReadByNameAndReason)
{
  const TemporaryFolder folder;
  const auto expect = [&](const std::string& reason, const NiftiFile& file) {
    expectRefused(*nifti, folder.put("r.nii", file.with(kValues)), reason);
  };
  expect("complex", NiftiFile().put<std::int16_t>(70, 32));
  expect("128-bit", NiftiFile().put<std::int16_t>(70, 1536));
  expect("single bits", NiftiFile().put<std::int16_t>(70, 1));
  expect("one dimension", NiftiFile().sizes({1, 12}));
  expect("vectors of 3", NiftiFile().sizes({5, 2, 2, 1, 1, 3}));
  expect("not positive", NiftiFile().sizes({4, 3, 2, 2, 0}));
  expect("not positive", NiftiFile().sizes({3, 3, -2, 2}));
  expect("impossible place", NiftiFile().put(108, std::numeric_limits<float>::quiet_NaN()));
  expect("truncated", NiftiFile().put(108, 1e30f));
  expect("Analyze 7.5", NiftiFile().text(344, std::string(4, '\0')));
  expectRefused(*nifti, folder.put("alone.img", "data"), "\"alone.hdr\" is missing");
}

} // namespace
} // namespace io::testing
