#include "IoTest.h"

#include <QImage>
#include <zlib.h>

#include <cstring>

using namespace iotest;

namespace {

class PictureFormatTest : public FolderTest {};

std::string littleEndian(int value)
{
  std::string bytes(4, '\0');
  std::memcpy(bytes.data(), &value, 4);
  return bytes;
}

/// A BMP picture of 3 x 2 pixels whose rows are stored from the bottom (height > 0) or from the top.
std::string bmp(int bits, int height)
{
  const std::string rows = bits == 24 ? std::string("\x03\x02\x01\x06\x05\x04\x09\x08\x07\0\0\0"
                                                    "\x13\x12\x11\x16\x15\x14\x19\x18\x17\0\0\0",
                                                    24)
                                      : std::string("\x03\x02\x01\0\x06\x05\x04\0\x09\x08\x07\0"
                                                    "\x13\x12\x11\0\x16\x15\x14\0\x19\x18\x17\0",
                                                    24);
  std::string header = "BM" + littleEndian(78) + littleEndian(0) + littleEndian(54) + littleEndian(40) +
                       littleEndian(3) + littleEndian(height) + std::string("\1\0", 2) +
                       std::string{static_cast<char>(bits), '\0'};
  header.resize(54, '\0');
  return header + rows;
}

std::string bigEndian(std::uint32_t value)
{
  return {static_cast<char>(value >> 24), static_cast<char>(value >> 16), static_cast<char>(value >> 8),
          static_cast<char>(value)};
}

std::string chunk(const std::string& typeAndData)
{
  const auto* bytes = reinterpret_cast<const Bytef*>(typeAndData.data());
  const auto sum = static_cast<std::uint32_t>(crc32_z(0, bytes, typeAndData.size()));
  return bigEndian(static_cast<std::uint32_t>(typeAndData.size() - 4)) + typeAndData + bigEndian(sum);
}

/// A PNG picture of rows as they are packed, each with the byte of its filter before it. The pixels are in
/// several chunks of 5 bytes.
std::string png(int width, int height, int bits, int colour, bool interlaced, const std::string& rows,
                const std::string& further = {})
{
  std::string packed(compressBound(rows.size()), '\0');
  uLongf size = packed.size();
  compress(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(rows.data()),
           rows.size());
  packed.resize(size);
  std::string file = "\x89PNG\r\n\x1A\n";
  file += chunk(
      "IHDR" + bigEndian(static_cast<std::uint32_t>(width)) + bigEndian(static_cast<std::uint32_t>(height)) +
      std::string{static_cast<char>(bits), static_cast<char>(colour), 0, 0, static_cast<char>(interlaced)});
  file += further;
  for (std::size_t i = 0; i < packed.size(); i += 5) file += chunk("IDAT" + packed.substr(i, 5));
  return file + chunk("IEND");
}

} // namespace

TEST_F(PictureFormatTest, PngPassesComeTogether)
{
  // 5 x 4 pixels, each its row and its column.
  std::string expected;
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 5; ++x) expected += static_cast<char>(16 * y + x);
  }
  std::string passes("\0\x00\0\x04", 4);              // every 8th, then from column 4
  passes += std::string("\0\x02", 2);                 // columns 2, 6 of every 4th row
  passes += std::string("\0\x20\x22\x24", 4);         // rows 2, 6: every 2nd column
  passes += std::string("\0\x01\x03\0\x21\x23", 6);   // odd columns of even rows
  passes += std::string("\0\x10\x11\x12\x13\x14", 6); // odd rows
  passes += std::string("\0\x30\x31\x32\x33\x34", 6);
  writeBytes(path("p.png"), png(5, 4, 8, 0, true, passes));
  EXPECT_EQ(allBytes(*io::readVolume({path("p.png")})), expected) << refusalOf(path("p.png"));
}

TEST_F(PictureFormatTest, PngFiltersAndDepthsOfOtherPrograms)
{
  QImage image(37, 23, QImage::Format_RGB32);
  QImage grey(37, 23, QImage::Format_Grayscale16);
  for (int y = 0; y < 23; ++y) {
    for (int x = 0; x < 37; ++x) {
      image.setPixelColor(x, y, QColor(x * 6, y * 9, (x * y) % 256));
      reinterpret_cast<quint16*>(grey.scanLine(y))[x] = static_cast<quint16>(x * 1500 + y);
    }
  }
  const auto bytesOf = [&](const QImage& written) {
    EXPECT_TRUE(written.save(QString::fromStdString(path("q.png"))));
    return allBytes(*io::readVolume({path("q.png")}));
  };
  std::string colours;
  std::string greys;
  for (int y = 0; y < 23; ++y) {
    for (int x = 0; x < 37; ++x) {
      colours += {static_cast<char>(x * 6), static_cast<char>(y * 9), static_cast<char>(x * y), '\xFF'};
    }
    greys.append(reinterpret_cast<const char*>(grey.scanLine(y)), 37 * 2);
  }
  EXPECT_EQ(bytesOf(image), colours);
  EXPECT_EQ(bytesOf(grey), greys);
  QImage indexed(5, 2, QImage::Format_Indexed8);
  indexed.setColorTable({qRgb(1, 2, 3), qRgba(4, 5, 6, 7), qRgb(8, 9, 10)});
  for (int i = 0; i < 10; ++i) indexed.setPixel(i % 5, i / 5, i % 3);
  EXPECT_EQ(bytesOf(indexed).substr(0, 12), std::string("\1\2\3\xFF\4\5\6\7\x08\x09\x0A\xFF", 12));
  // Filters 1 to 4 on 16 bits: the guess is taken from the pixel, not from the byte, to the left.
  const std::string rows("\1\1\2\1\1\2\1\1\1\1\3\1\1\1\1\4\1\1\1\1", 20);
  writeBytes(path("f.png"), png(2, 4, 16, 0, false, rows));
  const std::string filtered = allBytes(*io::readVolume({path("f.png")}));
  EXPECT_EQ(filtered, std::string("\2\1\3\2\3\2\4\3\2\2\4\3\3\3\5\4", 16));
  for (const auto& [bits, colour] : {std::pair(8, 4), std::pair(16, 2), std::pair(16, 6)}) {
    writeBytes(path("x.png"), png(1, 1, bits, colour, false, std::string(9, '\0')));
    EXPECT_NE(refusalOf(path("x.png")).find("not supported"), std::string::npos);
  }
}

TEST_F(PictureFormatTest, JpegIsReadAndRefusedWhenCutOff)
{
  QImage image(40, 30, QImage::Format_RGB32);
  image.fill(QColor(200, 100, 50));
  if (!image.save(QString::fromStdString(path("p.jpg")), nullptr, 95)) GTEST_SKIP() << "no JPEG encoder here";
  const auto picture = io::readVolume({path("p.jpg")});
  const std::string bytes = sliceBytes(*picture, 0);
  EXPECT_EQ(picture->getLattice()->getDims(), (ZxDims{40, 30, 1}));
  const int expected[] = {200, 100, 50, 255};
  for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(static_cast<unsigned char>(bytes[i]), expected[i], 3);
  const std::string file = readBytes(path("p.jpg"));
  for (std::size_t i = 0; i < file.size(); i += 3) {
    writeBytes(path("cut.jpg"), file.substr(0, i));
    EXPECT_NE(refusalOf(path("cut.jpg")), "") << i;
    // A damaged byte may pass unseen, it must only do no harm.
    std::string damaged = file;
    damaged[i] = static_cast<char>(damaged[i] ^ 0x55);
    writeBytes(path("damaged.jpg"), damaged);
    refusalOf(path("damaged.jpg"));
  }
}

TEST_F(PictureFormatTest, DamagedPngIsRefusedWhereverItIsDamaged)
{
  for (const ZxLatticeShape& shape : {ZxLatticeShape{.dims = {31, 9, 1}, .primType = McPrimType::UInt16},
                                      ZxLatticeShape{.dims = {31, 9, 1}, .numDataVars = 4}}) {
    const auto picture = makeVolume(shape);
    io::writeVolume(*picture, path("p.png"));
    EXPECT_EQ(allBytes(*io::readVolume({path("p.png")})), allBytes(*picture));
    const std::string file = readBytes(path("p.png"));
    for (std::size_t i = 0; i < file.size(); i += 13) {
      std::string damaged = file;
      damaged[i] = static_cast<char>(damaged[i] ^ 0x20);
      writeBytes(path("damaged.png"), damaged);
      EXPECT_NE(refusalOf(path("damaged.png")), "") << i;
      writeBytes(path("damaged.png"), file.substr(0, i));
      EXPECT_NE(refusalOf(path("damaged.png")), "") << i;
    }
  }
}

TEST_F(PictureFormatTest, BmpRowsAndColoursComeInOrder)
{
  const std::string low("\1\2\3\xFF\4\5\6\xFF\7\x08\x09\xFF", 12);
  const std::string high("\x11\x12\x13\xFF\x14\x15\x16\xFF\x17\x18\x19\xFF", 12);
  for (const int bits : {24, 32}) {
    writeBytes(path("up.bmp"), bmp(bits, 2));
    EXPECT_EQ(allBytes(*io::readVolume({path("up.bmp")})), high + low) << bits;
    writeBytes(path("down.bmp"), bmp(bits, -2));
    EXPECT_EQ(allBytes(*io::readVolume({path("down.bmp")})), low + high) << bits;
    writeBytes(path("cut.bmp"), bmp(bits, 2).substr(0, 77));
    EXPECT_NE(refusalOf(path("cut.bmp")).find("cut off"), std::string::npos);
  }
  writeBytes(path("sixteen.bmp"), bmp(16, 2));
  EXPECT_NE(refusalOf(path("sixteen.bmp")).find("16 bits"), std::string::npos);
}

TEST_F(PictureFormatTest, ImpossibleSizesAreRefusedBeforeMemoryIsTaken)
{
  writeBytes(path("p.png"), png(0x7FFFFFFF, 0x7FFFFFFF, 8, 0, false, std::string(100, '\0')));
  EXPECT_NE(refusalOf(path("p.png")).find("fewer data"), std::string::npos);
  // A frame of 65,280 x 65,280 pixels, grey and CMYK, and the start of a scan.
  const auto jpeg = [](int components) {
    std::string frame;
    std::string scan;
    for (int c = 1; c <= components; ++c) {
      frame += std::string{static_cast<char>(c), 0x11, 0};
      scan += std::string{static_cast<char>(c), 0};
    }
    const auto n = static_cast<char>(components);
    return std::string("\xFF\xD8\xFF\xC0\0", 5) + std::string{static_cast<char>(8 + 3 * n)} +
           std::string("\x08\xFF\0\xFF\0", 5) + n + frame + std::string("\xFF\xDA\0", 3) +
           std::string{static_cast<char>(6 + 2 * n), n} + scan + std::string("\0\x3F\0", 3) + "\xFF\xD9";
  };
  writeBytes(path("large.jpg"), jpeg(1));
  EXPECT_NE(refusalOf(path("large.jpg")).find("fewer data"), std::string::npos)
      << refusalOf(path("large.jpg"));
  writeBytes(path("cmyk.jpg"), jpeg(4));
  EXPECT_NE(refusalOf(path("cmyk.jpg")).find("CMYK"), std::string::npos) << refusalOf(path("cmyk.jpg"));
}
