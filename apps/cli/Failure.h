#pragma once

#include <stdexcept>

namespace cli {

/// Why a command cannot do what it was asked for: one sentence for the user.
class Failure : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// The user stopped the command: one sentence that says how far it came.
class Stopped : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

} // namespace cli
