#pragma once

#include "Format.h"
#include "zx/ZxField3.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

/// What the tests of the file formats share.
namespace io::testing {

/// A folder of its own for one test, removed with its contents.
class TemporaryFolder {
public:
  TemporaryFolder()
  {
    std::string name = (std::filesystem::temp_directory_path() / "zxformatXXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
    m_path = name;
  }
  ~TemporaryFolder() { std::filesystem::remove_all(m_path); }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string file(const std::string& name) const { return m_path + "/" + name; }
  /// Writes a file and returns its path.
  std::string put(const std::string& name, const std::string& bytes) const
  {
    std::ofstream(file(name), std::ios::binary) << bytes;
    return file(name);
  }
  std::string get(const std::string& name) const
  {
    std::ifstream in(file(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }

private:
  std::string m_path;
};

/// The bytes of numbers, in the other byte order when swapped.
template <class T>
std::string bytesOf(const std::vector<T>& values, bool swapped = false)
{
  std::string bytes;
  for (const T value : values) {
    std::string one(sizeof value, '\0');
    std::memcpy(one.data(), &value, sizeof value);
    if (swapped) one.assign(one.rbegin(), one.rend());
    bytes += one;
  }
  return bytes;
}

/// A volume of different sizes along the axes whose bytes follow no simple order. Floating-point values
/// include the largest one and -0.
inline McHandle<ZxField3> makeVolume(McPrimType type, int dataVars = 1, ZxDims dims = {7, 5, 3})
{
  ZxLatticeShape shape{.dims = dims, .numDataVars = dataVars, .primType = type};
  auto lattice = ZxLattice3::create(shape);
  std::uint32_t state = 12345;
  for (int k = 0; k < dims.slices; ++k) {
    mcVisit(type, [&](auto zero) {
      using T = decltype(zero);
      auto* values = static_cast<T*>(lattice->beginWrite(k));
      const std::size_t count = shape.sliceBytes() / sizeof(T);
      for (std::size_t i = 0; i < count; ++i) {
        state = state * 1664525u + 1013904223u;
        if constexpr (std::is_integral_v<T>)
          values[i] = static_cast<T>(state >> 9);
        else
          values[i] = static_cast<T>(static_cast<double>(state) / -7.0);
      }
      if constexpr (!std::is_integral_v<T>) values[0] = -T{0}, values[1] = std::numeric_limits<T>::max();
    });
    lattice->endWrite(k);
  }
  ZxFileGeometry geometry{{-1.5, 0.1 + 0.2, 1e-3}, {0.0046, 4.0 / 3.0, 50.25}, "micron"};
  lattice->setBoundingBox(geometry.box(dims));
  McHandle<ZxField3> field(ZxField3::create(std::move(lattice)));
  geometry.store(field->parameters());
  return field;
}

inline std::string voxelsOf(const ZxSpatialData& data)
{
  std::string all;
  for (int k = 0; k < data.getLattice()->getDims().slices; ++k)
    all.append(static_cast<const char*>(data.getLattice()->sliceInMemory(k)),
               data.getLattice()->shape().sliceBytes());
  return all;
}

inline std::string voxelsOf(VolumeReader& reader)
{
  std::string all, slice(reader.info().shape.sliceBytes(), '\0');
  for (int k = 0; k < reader.info().shape.dims.slices; ++k) {
    reader.readSlice(k, slice.data());
    all += slice;
  }
  return all;
}

template <class T>
std::vector<T> valuesOf(VolumeReader& reader)
{
  EXPECT_EQ(reader.info().shape.primType, mcPrimTypeOf<T>);
  const std::string bytes = voxelsOf(reader);
  std::vector<T> values(bytes.size() / sizeof(T));
  std::memcpy(values.data(), bytes.data(), bytes.size());
  return values;
}

/// Writes the way the library does: with a prefix first, then under the final names.
inline void write(const Format& format, const ZxSpatialData& data, const std::string& path)
{
  namespace fs = std::filesystem;
  const fs::path folder = fs::path(path).parent_path();
  const std::string prefix = ".t-";
  format.write(data, path, (folder / (prefix + fs::path(path).filename().string())).string());
  std::vector<fs::path> written;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder))
    if (entry.path().filename().string().starts_with(prefix)) written.push_back(entry.path());
  for (const fs::path& from : written)
    fs::rename(from, folder / from.filename().string().substr(prefix.size()));
}

/// The sentence with which a file is refused, at the latest when its voxels are read; empty when it is not.
inline std::string refusal(const Format& format, const std::string& path)
{
  try {
    voxelsOf(*format.open(path));
    return {};
  } catch (const Error& error) {
    return error.what();
  }
}

inline void expectRefused(const Format& format, const std::string& path, const std::string& reason)
{
  const std::string sentence = refusal(format, path);
  EXPECT_NE(sentence.find(std::filesystem::path(path).filename().string()), std::string::npos) << sentence;
  EXPECT_NE(sentence.find(reason), std::string::npos) << sentence;
}

inline void expectExactGeometry(const ZxFileGeometry& a, const ZxFileGeometry& b)
{
  for (int axis = 0; axis < 3; ++axis) {
    EXPECT_EQ(a.voxelSize[axis], b.voxelSize[axis]) << axis;
    EXPECT_EQ(a.origin[axis], b.origin[axis]) << axis;
  }
  EXPECT_EQ(a.unit, b.unit);
}

/// Every type that a volume can have, colours included.
inline std::vector<McHandle<ZxField3>> volumesOfAllTypes()
{
  std::vector<McHandle<ZxField3>> volumes;
  for (const McPrimType type : {McPrimType::UInt8, McPrimType::Int16, McPrimType::UInt16, McPrimType::Int32,
                                McPrimType::Float, McPrimType::Double})
    volumes.push_back(makeVolume(type));
  volumes.push_back(makeVolume(McPrimType::UInt8, 4));
  return volumes;
}

} // namespace io::testing
