#pragma once

#include "Format.h"

#include <cstdio>
#include <memory>
#include <string>

namespace io {

/// Reads a JPEG picture as one slice: grey, or colours as four values. CMYK is refused.
///
/// What libjpeg would make up for damaged or missing data is refused.
class JpegReader final : public VolumeReader {
public:
  explicit JpegReader(const std::string& path);
  ~JpegReader() override;
  void readSlice(int k, void* dst) override;

private:
  struct Decoder;
  [[noreturn]] void fail(const std::string& reason) const;

  std::string m_path;
  std::unique_ptr<Decoder> m_decoder;
};

} // namespace io
