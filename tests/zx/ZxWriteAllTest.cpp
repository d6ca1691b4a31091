#include "zx/ZxWriteAll.h"

#include <gtest/gtest.h>

#include <QIODevice>

#include <algorithm>
#include <string>

namespace {

/// A disk with room for so many bytes: it takes a part of what does not fit.
class SmallDisk : public QIODevice {
public:
  explicit SmallDisk(std::size_t room) : m_room(room) { open(QIODevice::WriteOnly | QIODevice::Unbuffered); }
  std::string held;

protected:
  qint64 readData(char*, qint64) override { return -1; }
  qint64 writeData(const char* data, qint64 size) override
  {
    const std::size_t n = std::min({static_cast<std::size_t>(size), m_room - held.size(), std::size_t{4}});
    held.append(data, n);
    if (n == 0) setErrorString("full");
    return n == 0 ? -1 : static_cast<qint64>(n);
  }

private:
  std::size_t m_room;
};

} // namespace

TEST(ZxWriteAll, GoesOnAfterAPartAndTellsWhereThereIsNoRoom)
{
  SmallDisk large(11), small(10);
  EXPECT_TRUE(zxWriteAll(large, "eleven byte"));
  EXPECT_EQ(large.held, "eleven byte");
  EXPECT_FALSE(zxWriteAll(small, "eleven byte"));
  EXPECT_EQ(small.errorString(), "full");
  EXPECT_TRUE(zxWriteAll(small, ""));
}
