#pragma once

#include <QIcon>
#include <QString>

class ZxConnection;
class ZxObject;
class ZxPort;

/// What the window says about objects and ports.
namespace QxObjectText {

/// The label, for widgets that show plain text.
QString label(const ZxObject& object);
/// "512 x 512 x 30, uint8" with multiplication signs; of modules their class where the label does not
/// say it.
QString size(const ZxObject& object);
/// Several lines: label, kind, size, voxel size, file; of modules their connections.
QString toolTip(const ZxObject& object);
QIcon icon(const ZxObject& object);
/// The label of a port, or a readable form of its name: "LabelField" gives "Label field:".
QString portLabel(const ZxPort& port);
/// The shortest text that gives back exactly this value.
QString number(float value);

} // namespace QxObjectText
