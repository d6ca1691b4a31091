#include "Picture.h"

#include "OffscreenGui.h"
#include "PictureCut.h"
#include "QualityPlot.h"
#include "io/Error.h"
#include "zx/ZxWriteAll.h"

#include <QBuffer>
#include <QFile>
#include <QFontMetrics>
#include <QImage>
#include <QPainter>
#include <QSaveFile>
#include <algorithm>

namespace cli {
namespace {

constexpr int kWidth = 1400;
constexpr int kHeight = 920;
constexpr int kMargin = 24;
constexpr int kGap = 16;
constexpr int kCutHeight = 210;
const QColor kPaper(250, 250, 250);
const QColor kInk(30, 30, 30);
const QColor kNothing(205, 212, 220); // where a cut has no voxel

QFont font(int pixels, bool bold = false)
{
  QFont font("DejaVu Sans");
  font.setPixelSize(pixels);
  font.setBold(bold);
  return font;
}

double meanOf(const std::vector<PairQuality>& pairs, double PairQuality::*quality)
{
  double sum = 0.0;
  for (const auto& pair : pairs) sum += pair.*quality;
  return sum / static_cast<double>(pairs.size());
}

/// "512 x 512 x 64     mean quality 81.23 % before, 94.15 % after".
QString summary(const ZxDims& dims, const std::vector<PairQuality>& pairs)
{
  const QString size = QString("%1 x %2 x %3").arg(dims.width).arg(dims.height).arg(dims.slices);
  if (pairs.empty()) return size;
  return size + QString("     mean quality %1 % before, %2 % after")
                    .arg(meanOf(pairs, &PairQuality::before), 0, 'f', 2)
                    .arg(meanOf(pairs, &PairQuality::after), 0, 'f', 2);
}

void paintTitle(QPainter& painter, const QRect& area, const QString& name, const QString& facts)
{
  painter.setPen(kInk);
  painter.setFont(font(16));
  const int factsWidth = painter.fontMetrics().horizontalAdvance(facts);
  painter.drawText(area, Qt::AlignRight | Qt::AlignVCenter, facts);
  painter.setFont(font(20, true));
  const QRect nameArea = area.adjusted(0, 0, -factsWidth - 40, 0);
  painter.drawText(nameArea, Qt::AlignLeft | Qt::AlignVCenter,
                   painter.fontMetrics().elidedText(name, Qt::ElideMiddle, nameArea.width()));
}

/// A line of text with the cut below it. Slices are stretched to the height; pixels are averaged where they
/// are more than the picture has.
void paintCut(QPainter& painter, const QRect& area, const QString& text, const QImage& cut)
{
  painter.setFont(font(15));
  painter.setPen(kInk);
  const int line = painter.fontMetrics().height() + 4;
  painter.drawText(QRect(area.left(), area.top(), area.width(), line), Qt::AlignLeft | Qt::AlignVCenter,
                   text);
  const QRect panel = area.adjusted(0, line, 0, 0);
  painter.fillRect(panel, kNothing);
  const QImage stretched =
      cut.scaled(cut.width(), panel.height(), Qt::IgnoreAspectRatio, Qt::FastTransformation);
  const auto mode = cut.width() > panel.width() ? Qt::SmoothTransformation : Qt::FastTransformation;
  painter.drawImage(panel.topLeft(),
                    stretched.scaled(panel.width(), panel.height(), Qt::IgnoreAspectRatio, mode));
}

/// Two rows (along x, along y) of two cuts (before, after). Returns the height used.
int paintCuts(QPainter& painter, const QPoint& topLeft, const PictureCuts& before, const PictureCuts& after,
              const GreyWindow& window)
{
  painter.setFont(font(15));
  const int height = kCutHeight + painter.fontMetrics().height() + 4;
  const int width = (kWidth - 2 * kMargin - kGap) / 2;
  const struct {
    const char* text;
    const PictureCut& cut;
    int column, row;
  } panels[] = {{"Before: x (right) and slice (down), middle row", before.alongX, 0, 0},
                {"After", after.alongX, 1, 0},
                {"Before: y (right) and slice (down), middle column", before.alongY, 0, 1},
                {"After", after.alongY, 1, 1}};
  for (const auto& panel : panels) {
    const QPoint corner = topLeft + QPoint(panel.column * (width + kGap), panel.row * (height + kGap));
    paintCut(painter, QRect(corner, QSize(width, height)), panel.text, cutImage(panel.cut, window));
  }
  return 2 * (height + kGap);
}

QImage paint(const PictureInput& input)
{
  const PictureCuts before = cutStack(*input.before);
  const PictureCuts after =
      input.after ? cutStack(*input.after) : cutThroughTransforms(*input.before, input.transforms);
  const GreyWindow window =
      input.windowMin < input.windowMax ? GreyWindow{input.windowMin, input.windowMax} : chooseWindow(before);
  const std::vector<PairQuality> pairs = inSliceOrder(input.pairs);

  QImage picture(kWidth, kHeight, QImage::Format_RGB32);
  picture.fill(kPaper);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::TextAntialiasing);
  paintTitle(painter, QRect(kMargin, 12, kWidth - 2 * kMargin, 32), QString::fromStdString(input.title),
             summary(input.before->getDims(), pairs));
  const int top = 54 + paintCuts(painter, QPoint(kMargin, 54), before, after, window);
  painter.setFont(font(15));
  paintQualityPlot(painter, QRect(QPoint(kMargin, top), QPoint(kWidth - kMargin, kHeight - 14)), pairs);
  return picture;
}

} // namespace

void writePicture(const PictureInput& input, const std::string& path)
{
  const OffscreenGui gui;
  const QImage picture = paint(input);
  // In memory first: the encoder prints words of its own where it cannot write.
  QByteArray encoded;
  QBuffer buffer(&encoded);
  if (!picture.save(&buffer, "PNG"))
    throw io::Error("The picture " + path + " could not be written: it could not be encoded.");
  QSaveFile file(QFile::decodeName(path.c_str()));
  if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) ||
      !zxWriteAll(file, {encoded.constData(), static_cast<std::size_t>(encoded.size())}) || !file.commit())
    throw io::Error("The picture " + path + " could not be written: " + file.errorString().toStdString() +
                    ".");
}

} // namespace cli
