#pragma once

#include <string>

class QImage;

/// Writes a picture in the format that the file's name ends in. Empty, or why it could not be written; a file
/// that was not there before is removed then.
std::string qxWritePicture(const QImage& picture, const std::string& fileName);
