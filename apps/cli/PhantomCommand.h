#pragma once

#include "samples/Phantom.h"

#include <string>

namespace cli {

/// What `zxalign phantom` is asked for.
struct PhantomCommand {
  std::string output; ///< name of the volume; its ending chooses the format
  std::string truth;  ///< name of the table of the true transforms; empty for none
  samples::PhantomOptions options;

  /// Makes the phantom and writes it, with the truth where it is asked for. Throws io::Error.
  void run() const;
};

} // namespace cli
