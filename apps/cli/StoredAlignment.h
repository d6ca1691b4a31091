#pragma once

#include "io/Volume.h"

namespace cli {

/// True when the parameters of a volume hold an alignment.
bool hasAlignment(const ZxParamBundle& parameters);
/// True when the volume is the result of a resampling: its voxels have been moved by that alignment already.
bool isAligned(const ZxParamBundle& parameters);

/// A field with the alignment of a volume and the size of the slices that it belongs to, for reading the
/// alignment without reading the volume: all voxels are 0 and take no memory. An alignment that has been
/// applied counts as one yet to be applied here, and belongs to the slices as they were before.
McHandle<ZxField3> alignmentCarrier(const io::VolumeInfo& info);

} // namespace cli
