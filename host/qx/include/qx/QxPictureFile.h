#pragma once

#include <string>

class QImage;

/// Writes a picture in the format that the ending of its name says. Empty when it is stored, else one
/// sentence with the name and the reason; a file that was not there before is not left behind half written
/// then.
std::string qxWritePicture(const QImage& picture, const std::string& fileName);
