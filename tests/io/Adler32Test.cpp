#include "Adler32.h"

#include "support/Random.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <vector>

// Long enough for the sums to be reduced several times, of the highest bytes first; parts that fit no block.
TEST(Adler32, IsThatOfZlib)
{
  std::vector<std::byte> bytes(700'003, std::byte{255});
  Random random(11);
  for (std::size_t i = 400'000; i < bytes.size(); ++i) bytes[i] = static_cast<std::byte>(random.next());
  io::Adler32 sum;
  uLong expected = adler32(0, nullptr, 0);
  std::span<const std::byte> rest = bytes;
  for (const std::size_t size : {0, 1, 31, 32, 33, 300'000, 64, 399'842}) {
    sum.add(rest.first(size));
    expected = adler32(expected, reinterpret_cast<const Bytef*>(rest.data()), static_cast<uInt>(size));
    EXPECT_EQ(sum.value(), expected) << size;
    rest = rest.subspan(size);
  }
  EXPECT_TRUE(rest.empty());
}
