#include "TiffFile.h"

#include "ByteStream.h"
#include "FileError.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace io {
namespace {

/// One line without control characters or a full stop at its end.
std::string messageText(const char* module, const char* format, va_list arguments)
{
  char buffer[400];
  std::vsnprintf(buffer, sizeof buffer, format, arguments);
  std::string text = buffer;
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, ' ');
  while (!text.empty() && (text.back() == '.' || text.back() == ' ')) text.pop_back();
  // The module is a file's name or a function of libtiff; only the latter tells anything new.
  const bool isFunction = module && std::strpbrk(module, "/. ") == nullptr;
  return isFunction ? text + " (" + module + ")" : text;
}

/// Bytes that libtiff may allocate at once: what a sound file of that size needs, with room for small ones.
tmsize_t allocationLimit(const std::string& path, TiffFile::Mode mode)
{
  constexpr std::uint64_t least = std::uint64_t{1} << 26;
  if (mode != TiffFile::Mode::Read) return 0; // No limit.
  return static_cast<tmsize_t>(std::max(least, 2 * fileSize(path)));
}

const char* modeText(TiffFile::Mode mode)
{
  switch (mode) {
  case TiffFile::Mode::Read:
    return "rm"; // Not mapped: a file that shrinks must not end the program.
  case TiffFile::Mode::Write:
    return "w";
  case TiffFile::Mode::Append:
    return "a";
  default:
    return "w8";
  }
}

} // namespace

TiffFile::TiffFile(const std::string& path, Mode mode, std::string name)
  : m_name(std::move(name)), m_mode(mode), m_messages(std::make_unique<Messages>())
{
  const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                                 TIFFOpenOptionsFree);
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), onError, m_messages.get());
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), onWarning, m_messages.get());
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), allocationLimit(path, mode));
  m_tiff = TIFFOpenExt(path.c_str(), modeText(mode), options.get());
  if (!m_tiff) fail("it is no TIFF file");
}

TiffFile::~TiffFile()
{
  if (m_tiff) TIFFClose(m_tiff);
}

void TiffFile::forgetMessages() const noexcept { m_messages->error.clear(); }

void TiffFile::fail(const std::string& reason) const
{
  const int cause = errno;
  std::string text = m_messages->error.empty() ? reason : m_messages->error;
  // The library names the line that it could not write, but not why.
  if (m_mode != Mode::Read && (cause == ENOSPC || cause == EDQUOT || cause == EFBIG))
    text = std::strerror(cause);
  if (m_mode == Mode::Read) cannotRead(m_name, text);
  cannotWrite(m_name, text);
}

void TiffFile::close()
{
  TIFFClose(std::exchange(m_tiff, nullptr));
  if (hasFailed()) fail({});
}

int TiffFile::onError(TIFF*, void* messages, const char* module, const char* format, va_list arguments)
{
  std::string& error = static_cast<Messages*>(messages)->error;
  if (error.empty()) error = messageText(module, format, arguments);
  return 1;
}

int TiffFile::onWarning(TIFF* tiff, void* messages, const char* module, const char* format, va_list arguments)
{
  // Decoders that fill up missing data only warn: JPEG, and those of facsimile machines. So does that of
  // PackBits where it throws data away.
  const bool damaged = (module && std::strcmp(module, "JPEGLib") == 0) || std::strstr(format, "remature") ||
                       std::strstr(format, "Discarding");
  return damaged ? onError(tiff, messages, module, format, arguments) : 1;
}

} // namespace io
