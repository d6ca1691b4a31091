#pragma once

#include <tiffio.h>

#include <memory>
#include <string>

namespace io {

/// An open TIFF file. What libtiff has to say of it is kept here instead of being printed.
class TiffFile {
public:
  enum class Mode { Read, Write, WriteBig, Append };

  /// Opens a file; messages name the file as name. Throws Error.
  TiffFile(const std::string& path, Mode mode, std::string name);
  ~TiffFile();
  TiffFile(const TiffFile&) = delete;
  TiffFile& operator=(const TiffFile&) = delete;

  TIFF* get() const noexcept { return m_tiff; }
  const std::string& name() const noexcept { return m_name; }

  void forgetMessages() const noexcept;
  /// True when libtiff said since then that it could not do what was asked, or that data were missing and it
  /// made them up.
  bool hasFailed() const noexcept { return !m_messages->error.empty(); }
  /// Throws Error with what libtiff said first, else with the given reason.
  [[noreturn]] void fail(const std::string& reason) const;
  /// Closes a file that was written. Throws Error when something could not be stored.
  void close();

private:
  struct Messages {
    std::string error;
  };
  static int onError(TIFF* tiff, void* messages, const char* module, const char* format, va_list arguments);
  static int onWarning(TIFF* tiff, void* messages, const char* module, const char* format, va_list arguments);

  std::string m_name;
  Mode m_mode;
  std::unique_ptr<Messages> m_messages;
  TIFF* m_tiff = nullptr;
};

} // namespace io
