#pragma once

#include "zx/ZxParamBundle.h"

#include <string>
#include <utility>
#include <vector>

/// Parameters as pairs of plain text, for headers of files that hold key/value pairs.
///
/// A value stands under its path, "AlignTransform/slice0000", as its type and its contents: "int 1 2",
/// "real 3 -4.25", "string some text", and "bundle" for a bundle that is empty. Reals are the shortest text
/// that gives the same number back. In names and strings everything but plain ASCII is percent-encoded
/// ("%0A"), in names also '/', ':', '=', '%' and the space; so keys and values are one line of printable
/// ASCII without a backslash, and neither begins or ends with a space. Values can be of any length.
///
/// What other programs wrote comes back as a string under its whole key, and is written that way again where
/// it needs no encoding.
namespace io {

using TextPairs = std::vector<std::pair<std::string, std::string>>;

/// The pairs of a bundle in its order. The file geometry (bundle "File" at the top) is left out: formats
/// write it to fields of their own.
TextPairs flatten(const ZxParamBundle& parameters);

/// Adds what the pairs say to a bundle. A pair that is not ours, or that is damaged, becomes a string under
/// its key.
void unflatten(const TextPairs& pairs, ZxParamBundle& parameters);

} // namespace io
