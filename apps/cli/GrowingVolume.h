#pragma once

#include "mc/McHandable.h"

#include <string>

class ZxSpatialData;

namespace cli {

class Console;
class OutputFiles;
class PartialOutput;

/// Writes an announced volume slice by slice, as its slices are made. It grows in the folder `name` of the
/// partial output, where a stopped run's slices are taken over, or in a hidden folder where its target is on
/// another disk. Returns the seconds that the making of the slices took. Throws Failure, io::Error or
/// io::Interrupted.
double growVolume(OutputFiles& files, PartialOutput& partial, const char* name, const std::string& path,
                  const McHandle<ZxSpatialData>& data, Console& console);

} // namespace cli
