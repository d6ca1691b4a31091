#pragma once

#include "zx/ZxParamBundle.h"

#include <string>

/// Parameters as JSON, for the file <image>.params.json beside an image that cannot hold them itself.
///
/// A bundle is an object, a string a string, numbers are an array: of whole numbers for integers, of numbers
/// with a decimal point or an exponent for reals, each the shortest text that gives the same number back.
/// What JSON lacks is spelled out: "nan", "-nan", "inf" and "-inf" in an array of reals, ["int"] and ["real"]
/// for arrays without numbers, ["bytes", "..."] with percent-encoding for a string that is not UTF-8. In
/// names
/// '%' and bytes that are not UTF-8 are percent-encoded.
namespace io {

std::string toJson(const ZxParamBundle& parameters);

/// The parameters in a JSON text. Throws Error with a sentence that names the file it came from.
ZxParamBundle fromJson(const std::string& text, const std::string& fileName);

} // namespace io
