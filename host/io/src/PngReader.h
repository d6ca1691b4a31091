#pragma once

#include "Format.h"

#include <memory>
#include <string>

namespace io {

/// Reads a PNG picture as one slice: grey of 1 to 16 bits with its stored values, colours of 8 bits and
/// palettes as four values. A colour that the file declares transparent is read like any other.
class PngReader final : public VolumeReader {
public:
  explicit PngReader(const std::string& path);
  ~PngReader() override;
  void readSlice(int k, void* dst) override;

private:
  struct Decoder;
  [[noreturn]] void fail(const std::string& reason) const;
  void findType();
  void checkSize() const;

  std::string m_path;
  std::unique_ptr<Decoder> m_decoder;
};

} // namespace io
