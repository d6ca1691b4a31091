#pragma once

#include "mc/McDArray.h"
#include "zx/ZxBox3.h"
#include "zx/ZxParamBundle.h"
#include "zxalign/SliceInfo.h"

#include <string>

/// The stored form of an alignment in the parameters of a volume.
///
/// Bundle "AlignTransform": per slice "slice%04d" = translation x, translation y upwards, rotation in
/// degrees, flip as 1 or -1; "ImageSize" = width and height that the pixels refer to. Bundle "AlignPoints":
/// per slice a bundle "slice%04d" of points x, y.
namespace storage {

/// The first bundle's name under which a plain value stands, so that nothing can be stored; null for none.
const char* takenName(const ZxParamBundle& target);

/// False when a plain value stands under the bundle's name.
bool writeTransforms(ZxParamBundle& target, const McDArray<SliceInfo>& slices, const ZxDims& dims);
bool writePoints(ZxParamBundle& target, const McDArray<SliceInfo>& slices);

/// What to do with a slice that has no entry.
enum class Missing { Tell, PassOver };

/// Reads transforms stored for slices of any size, pixels scaled to dims. Entries of five and three values
/// are understood as well as those of four; a reference is read with four only. False without a bundle.
bool readTransforms(const ZxParamBundle& source, McDArray<SliceInfo>& slices, const ZxDims& dims,
                    Missing missing);

/// Reads landmarks, scaled by the "ImageSize" of the named bundle; false without landmarks.
bool readPoints(const ZxParamBundle& source, McDArray<SliceInfo>& slices, const ZxDims& dims,
                const char* sizeBundle, Missing missing);

/// The name of a slice's entry in either bundle: "slice0007".
std::string sliceName(std::size_t slice);

inline constexpr const char* transformBundle = "AlignTransform";
inline constexpr const char* pointBundle = "AlignPoints";

} // namespace storage
