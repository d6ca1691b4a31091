#pragma once

#include "Format.h"

#include <memory>
#include <string>
#include <vector>

namespace io {

/// Opens one file with the format that its contents say. Throws Error.
std::unique_ptr<VolumeReader> openFile(const std::string& path);
/// The format of a file, by its contents. Throws Error.
const Format& formatOfFile(const std::string& path);
/// The format to write by the ending of a name; null when no format has it.
const Format* formatOfName(const std::string& path);
/// All formats.
const std::vector<std::unique_ptr<Format>>& allFormats();
/// "use .tif, .nrrd, ...": the endings that can be written.
std::string writableEndings();

/// Where the parameters of a file are that it cannot hold itself.
inline std::string parametersBeside(const std::string& path) { return path + ".params.json"; }
/// What stands there for data: their parameters and their exact origin, voxel size and unit. Empty when all
/// of this is what data have that nothing is known of.
std::string parametersText(const ZxSpatialData& data);
/// The text of a file. Throws Error.
std::string readText(const std::string& path);
/// Writes a text. Throws Error that names target.
void writeText(const std::string& text, const std::string& target, const std::string& path);

/// Writes the parameters of data straight to a file, or removes the file where there are none.
void writeParameters(const ZxSpatialData& data, const std::string& path);

} // namespace io
