#include "QxObjectText.h"

#include "qx/ZxResource.h"
#include "zx/ZxField3.h"
#include "zx/ZxModule.h"

#include <QCoreApplication>

#include <charconv>

namespace {

QString translated(const char* text) { return QCoreApplication::translate("QxObjectText", text); }

const ZxLattice* latticeOf(const ZxObject& object)
{
  const auto* data = dynamic_cast<const ZxSpatialData*>(&object);
  return data ? data->getLattice() : nullptr;
}

QString kind(const ZxObject& object)
{
  if (dynamic_cast<const ZxModule*>(&object)) return translated("Module");
  if (object.isOfType(ZxLabelLatticeInterface::getClassTypeId())) return translated("Label field");
  const ZxLattice* lattice = latticeOf(object);
  if (!lattice) return translated("Data");
  return lattice->isColor() ? translated("Colour volume") : translated("Grey volume");
}

QString valueType(const ZxLattice& lattice)
{
  const QString type = mcNameOf(lattice.primType());
  return lattice.getNumDataVars() == 1
             ? type
             : QStringLiteral("%1 %2 %3").arg(lattice.getNumDataVars()).arg(QChar(0xd7)).arg(type);
}

QString voxelSize(const ZxSpatialData& data)
{
  const ZxFileGeometry geometry = ZxFileGeometry::of(data);
  QString text;
  for (int axis = 0; axis < 3; ++axis) {
    if (axis) text += QStringLiteral(" %1 ").arg(QChar(0xd7));
    text += QString::number(geometry.voxelSize[axis], 'g', 6);
  }
  const QString unit = QString::fromStdString(geometry.unit);
  return unit.isEmpty() ? text : text + ' ' + unit;
}

void addConnections(QStringList& lines, const ZxModule& module)
{
  for (const ZxPort* port : module.getPorts()) {
    const auto* connection = dynamic_cast<const ZxConnection*>(port);
    if (!connection) continue;
    const ZxData* source = connection->getSource();
    lines << QxObjectText::portLabel(*port) + ' ' +
                 (source ? QxObjectText::label(*source) : translated("not connected"));
  }
}

} // namespace

namespace QxObjectText {

QString label(const ZxObject& object) { return QString::fromStdString(object.getLabel().str()); }

QString size(const ZxObject& object)
{
  if (dynamic_cast<const ZxModule*>(&object)) {
    const std::string& type = object.getTypeId().name();
    return object.getLabel().str().rfind(type, 0) == 0 ? QString() : QString::fromStdString(type);
  }
  const ZxLattice* lattice = latticeOf(object);
  if (!lattice) return {};
  const ZxDims& d = lattice->getDims();
  const QChar times(0xd7);
  return QStringLiteral("%1 %4 %2 %4 %3, %5")
      .arg(d.width)
      .arg(d.height)
      .arg(d.slices)
      .arg(times)
      .arg(lattice->isColor() ? translated("colour") : valueType(*lattice));
}

QString toolTip(const ZxObject& object)
{
  const auto* module = dynamic_cast<const ZxModule*>(&object);
  QStringList lines{label(object),
                    kind(object) + ": " +
                        (module ? QString::fromStdString(object.getTypeId().name()) : size(object))};
  if (const auto* data = dynamic_cast<const ZxSpatialData*>(&object); data && data->getLattice()) {
    lines << translated("Voxel size: ") + voxelSize(*data);
    if (data->isUnsaved()) lines << translated("Has changes that are not saved");
  }
  if (module) addConnections(lines, *module);
  return lines.join('\n');
}

QIcon icon(const ZxObject& object)
{
  const char* name = "Volume.png";
  const ZxLattice* lattice = latticeOf(object);
  if (dynamic_cast<const ZxModule*>(&object))
    name = "Module.png";
  else if (object.isOfType(ZxLabelLatticeInterface::getClassTypeId()))
    name = "Labels.png";
  else if (lattice && lattice->isColor())
    name = "ColorVolume.png";
  return ZxResource::readIcon(name);
}

QString portLabel(const ZxPort& port)
{
  if (!port.getLabel().empty()) return QString::fromStdString(port.getLabel());
  QString text;
  for (const QChar c : QString::fromStdString(port.getName())) {
    if (text.isEmpty())
      text += c.toUpper();
    else if (c.isUpper())
      text += ' ' + QString(c.toLower());
    else
      text += c;
  }
  return text + ':';
}

QString number(float value)
{
  char text[32];
  const auto [end, error] = std::to_chars(text, text + sizeof text, value);
  return error == std::errc() ? QString::fromLatin1(text, end - text) : QString();
}

} // namespace QxObjectText
