#include "RecoveryContent.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace {

constexpr const char* formatName = "zxalign recovery";
constexpr int formatVersion = 1;

/// JSON knows no NaN and no infinity.
double finite(float v) { return std::isfinite(v) ? static_cast<double>(v) : 0.0; }

QJsonArray encodeSlice(const SliceInfo& slice)
{
  QJsonArray landmarks;
  for (const QPoint& p : slice.landmarks) landmarks.append(QJsonArray{p.x(), p.y()});
  return {finite(slice.translationX), finite(slice.translationY), finite(slice.rotation), slice.flip,
          landmarks};
}

bool decodeSlice(const QJsonArray& array, SliceInfo& slice)
{
  if (array.size() != 5 || !array[3].isBool() || !array[4].isArray()) return false;
  for (int i = 0; i < 3; ++i)
    if (!array[i].isDouble()) return false;
  slice.setXForm(SliceXForm(static_cast<float>(array[0].toDouble()), static_cast<float>(array[1].toDouble()),
                            static_cast<float>(array[2].toDouble()), array[3].toBool()));
  const QJsonArray landmarks = array[4].toArray();
  for (const QJsonValue& landmark : landmarks) {
    const QJsonArray p = landmark.toArray();
    if (p.size() != 2) return false;
    slice.landmarks.append(QPoint(p[0].toInt(), p[1].toInt()));
  }
  return true;
}

bool decodeState(const QJsonObject& object, const ZxDims& dims, AlignState& state)
{
  const QJsonArray slices = object["alignment"].toArray();
  if (dims.slices < 2 || slices.size() != dims.slices) return false;
  state.slices.resize(static_cast<std::size_t>(dims.slices));
  for (int i = 0; i < dims.slices; ++i)
    if (!decodeSlice(slices[i].toArray(), state.slices[static_cast<std::size_t>(i)])) return false;
  state.currentSlice = object["currentSlice"].toInt(-1);
  state.side = object["side"].toInt();
  // The slice on the other side may be outside of the stack: with a fixed reference the side does not matter.
  return (state.side == 1 || state.side == -1) && state.currentSlice >= 0 && state.currentSlice < dims.slices;
}

} // namespace

std::string RecoveryKey::text() const
{
  return path + '\n' + std::to_string(dims.width) + ' ' + std::to_string(dims.height) + ' ' +
         std::to_string(dims.slices);
}

std::string encodeRecovery(const RecoveryContent& content)
{
  QJsonArray slices;
  for (const SliceInfo& slice : content.state.slices) slices.append(encodeSlice(slice));
  const ZxDims& dims = content.key.dims;
  // A path is bytes, which need not be text.
  const QString path =
      QString::fromLatin1(QByteArray::fromStdString(content.key.path).toPercentEncoding("/"));
  return QJsonDocument(QJsonObject{{"format", formatName},
                                   {"version", formatVersion},
                                   {"time", content.time},
                                   {"path", path},
                                   {"size", QJsonArray{dims.width, dims.height, dims.slices}},
                                   {"currentSlice", content.state.currentSlice},
                                   {"side", content.state.side},
                                   {"alignment", slices}})
      .toJson(QJsonDocument::Compact)
      .toStdString();
}

std::optional<RecoveryContent> decodeRecovery(const std::string& bytes)
{
  const QJsonObject object = QJsonDocument::fromJson(QByteArray::fromStdString(bytes)).object();
  if (object["format"].toString() != formatName || object["version"].toInt() != formatVersion)
    return std::nullopt;
  const QJsonArray size = object["size"].toArray();
  if (size.size() != 3) return std::nullopt;
  RecoveryContent content;
  content.key.path = QByteArray::fromPercentEncoding(object["path"].toString().toLatin1()).toStdString();
  content.key.dims = {size[0].toInt(), size[1].toInt(), size[2].toInt()};
  content.time = object["time"].toString();
  if (!decodeState(object, content.key.dims, content.state)) return std::nullopt;
  return content;
}
