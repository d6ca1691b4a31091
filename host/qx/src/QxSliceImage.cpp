#include "QxSliceImage.h"

#include "mc/McRound.h"
#include "qx/QxImageViewer.h"
#include "zx/ZxField3.h"

#include <QColor>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <new>

namespace {

constexpr std::size_t mostSamples = 200000;

/// A colour that no other label has nearby: the hues of successive labels lie a golden section apart.
QRgb colorOfLabel(qint64 label)
{
  if (label == 0) return qRgb(0, 0, 0);
  const double hue = std::fmod(static_cast<double>(label) * 0.618033988749895, 1.0);
  return QColor::fromHsvF(static_cast<float>(std::abs(hue)), label % 2 ? 0.75F : 0.55F, 0.95F).rgb();
}

/// Of several values a pixel the first: those that are no colours are shown as grey.
std::vector<unsigned char> firstComponents(const std::vector<unsigned char>& pixels,
                                           const ZxLatticeShape& shape)
{
  const std::size_t size = mcSizeOf(shape.primType), step = shape.voxelBytes();
  std::vector<unsigned char> first(shape.dims.slicePixels() * size);
  for (std::size_t i = 0; i < shape.dims.slicePixels(); ++i)
    std::memcpy(first.data() + i * size, pixels.data() + i * step, size);
  return first;
}

} // namespace

bool QxSliceImage::load(ZxSpatialData& data, int slice)
{
  clear();
  ZxLattice* lattice = data.getLattice();
  if (!lattice || !lattice->isValid()) return false;
  try {
    m_pixels.resize(lattice->shape().sliceBytes());
  } catch (const std::bad_alloc&) {
    return false;
  }
  if (!lattice->readSlice(slice, m_pixels.data())) {
    clear();
    return false;
  }
  m_shape = lattice->shape();
  m_isLabels = data.isOfType(ZxLabelLatticeInterface::getClassTypeId());
  return true;
}

void QxSliceImage::clear() { m_pixels.clear(); }

double QxSliceImage::component(std::size_t pixel, int c) const
{
  return mcVisit(m_shape.primType, [&](auto zero) {
    using T = decltype(zero);
    T value;
    const std::size_t index =
        pixel * static_cast<std::size_t>(m_shape.numDataVars) + static_cast<std::size_t>(c);
    std::memcpy(&value, m_pixels.data() + index * sizeof(T), sizeof(T));
    return static_cast<double>(value);
  });
}

void QxSliceImage::findGreyWindow(float& black, float& white) const
{
  black = 0.0F;
  white = 1.0F;
  if (m_pixels.empty()) return;
  const std::size_t pixels = m_shape.dims.slicePixels();
  const std::size_t step = std::max<std::size_t>(1, pixels / mostSamples);
  std::vector<double> values;
  for (std::size_t i = 0; i < pixels; i += step)
    if (const double value = component(i, 0); std::isfinite(value)) values.push_back(value);
  if (values.empty()) return;
  std::sort(values.begin(), values.end());
  black = static_cast<float>(values[values.size() / 200]);
  white = static_cast<float>(values[values.size() - 1 - values.size() / 200]);
  if (white <= black) white = black + 1.0F;
}

void QxSliceImage::show(QxImageViewer& viewer, float black, float white) const
{
  const int width = m_shape.dims.width, height = m_shape.dims.height;
  if (m_pixels.empty())
    viewer.clearImage();
  else if (m_isLabels)
    showLabels(viewer);
  else if (m_shape.numDataVars == 4 && m_shape.primType == McPrimType::UInt8)
    viewer.setColorImage(m_pixels.data(), width, height);
  else if (m_shape.numDataVars == 1)
    viewer.setGreyImage(m_pixels.data(), m_shape.primType, width, height, black, white);
  else
    viewer.setGreyImage(firstComponents(m_pixels, m_shape).data(), m_shape.primType, width, height, black,
                        white);
}

void QxSliceImage::showLabels(QxImageViewer& viewer) const
{
  const std::size_t pixels = m_shape.dims.slicePixels();
  std::vector<unsigned char> rgba(pixels * 4, 255);
  std::map<qint64, QRgb> colors;
  for (std::size_t i = 0; i < pixels; ++i) {
    const auto label = mc::truncToInt64(component(i, 0));
    const auto [color, isNew] = colors.try_emplace(label);
    if (isNew) color->second = colorOfLabel(label);
    rgba[4 * i] = static_cast<unsigned char>(qRed(color->second));
    rgba[4 * i + 1] = static_cast<unsigned char>(qGreen(color->second));
    rgba[4 * i + 2] = static_cast<unsigned char>(qBlue(color->second));
  }
  viewer.setColorImage(rgba.data(), m_shape.dims.width, m_shape.dims.height);
}

QString QxSliceImage::valueAt(int x, int y) const
{
  if (m_pixels.empty()) return {};
  const std::size_t pixel = static_cast<std::size_t>(y) * static_cast<std::size_t>(m_shape.dims.width) +
                            static_cast<std::size_t>(x);
  QStringList values;
  for (int c = 0; c < m_shape.numDataVars; ++c) values << QString::number(component(pixel, c), 'g', 9);
  return values.join(", ");
}
