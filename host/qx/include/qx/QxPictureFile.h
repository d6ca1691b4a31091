#pragma once

#include <string>

class QImage;

/// Writes a picture in the format that the file's name ends in. A file that stands there is replaced when the
/// new one is whole. Empty, or one sentence with the name and the reason.
std::string qxWritePicture(const QImage& picture, const std::string& fileName);
