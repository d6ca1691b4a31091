#pragma once

#include <stdexcept>
#include <string>

namespace io {

/// What reading and writing throw: one sentence for the user that names the file and the reason. Nothing else
/// leaves this library, and nothing partial is left behind.
class Error : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// The user asked the work to stop.
class Interrupted : public Error {
public:
  Interrupted() : Error("Stopped by the user.") {}
};

} // namespace io
