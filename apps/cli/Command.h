#pragma once

namespace CLI {
class App;
}

namespace cli {

class Console;

/// One command of the program. It declares its options first; they hold their values when it runs.
class Command {
public:
  virtual ~Command() = default;
  virtual void declare(CLI::App& options) = 0;
  /// Does the work. Throws Failure or io::Error when it cannot, Stopped when the user stopped it.
  virtual void run(Console& console) = 0;
};

} // namespace cli
