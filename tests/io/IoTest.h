#pragma once

#include "io/Volume.h"
#include "support/Random.h"
#include "support/TestData.h"
#include "zx/ZxMessage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

/// What tests of reading and writing share.
namespace iotest {

namespace fs = std::filesystem;

/// A folder of its own for each test, empty at its start, with the messages of the console kept.
class FolderTest : public ::testing::Test {
protected:
  void SetUp() override
  {
    std::string name = (fs::temp_directory_path() / "zx-io-XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    folder = name;
    m_previous =
        ZxMessage::getTheMsg()->setSink([this](const std::string& line) { messages += line + '\n'; });
  }
  void TearDown() override
  {
    ZxMessage::getTheMsg()->setSink(m_previous);
    if (!folder.empty()) fs::remove_all(folder);
  }
  std::string path(const std::string& name) const { return (folder / name).string(); }
  /// The names in the folder, in order.
  std::vector<std::string> names() const
  {
    std::vector<std::string> result;
    for (const auto& entry : fs::directory_iterator(folder))
      result.push_back(entry.path().filename().string());
    std::sort(result.begin(), result.end());
    return result;
  }

  fs::path folder;
  std::string messages;

private:
  ZxMessage::Sink m_previous;
};

inline void writeBytes(const std::string& path, const std::string& bytes)
{
  std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string readBytes(const std::string& path)
{
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

/// A volume of noise: every voxel differs, so that nothing can change places unseen. Floats are finite.
inline McHandle<ZxField3> makeVolume(const ZxLatticeShape& shape, std::uint32_t seed = 1)
{
  auto lattice = ZxLattice3::create(shape);
  Random random(seed);
  for (int k = 0; k < shape.dims.slices; ++k) {
    void* slice = lattice->beginWrite(k);
    const std::size_t values = shape.dims.slicePixels() * static_cast<std::size_t>(shape.numDataVars);
    mcVisit(shape.primType, [&](auto zero) {
      using T = decltype(zero);
      for (std::size_t i = 0; i < values; ++i) {
        if constexpr (std::is_floating_point_v<T>)
          static_cast<T*>(slice)[i] = static_cast<T>(random.real(-1e6, 1e6));
        else
          static_cast<T*>(slice)[i] = static_cast<T>(random.next());
      }
    });
    lattice->endWrite(k);
  }
  return ZxField3::create(std::move(lattice));
}

inline std::string sliceBytes(ZxSpatialData& data, int k)
{
  std::string bytes(data.getLattice()->shape().sliceBytes(), '\0');
  data.getLattice()->readSlice(k, bytes.data());
  return bytes;
}

inline std::string allBytes(ZxSpatialData& data)
{
  std::string bytes;
  for (int k = 0; k < data.getLattice()->getDims().slices; ++k) bytes += sliceBytes(data, k);
  return bytes;
}

/// The sentence that f throws.
template <class F>
std::string refusal(F f)
{
  try {
    f();
  } catch (const io::Error& error) {
    return error.what();
  }
  return {};
}

inline std::string refusalOf(const std::string& path)
{
  return refusal([&] { io::readVolume({path}); });
}

} // namespace iotest
