#pragma once

#include <string_view>

class QIODevice;

/// Writes bytes to a file that is open and Unbuffered. False when not all of them were stored; errorString()
/// of the file has the reason.
///
/// A disk that fills up takes a part of the bytes, which QIODevice::write() returns as if nothing had
/// happened; and what waits in a buffer is lost without a word when QSaveFile::commit() puts the file into
/// place.
bool zxWriteAll(QIODevice& file, std::string_view bytes);
