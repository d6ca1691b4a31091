#pragma once

#include <functional>
#include <string>

/// The message console: one line per message, for the person at the program.
///
/// The programs decide where lines go (a window, standard error, a recorder in tests) by setting a sink.
class ZxMessage {
public:
  using Sink = std::function<void(const std::string& line)>;

  static ZxMessage* getTheMsg();

  /// Prints one line; a line end at the end of the text is not doubled.
  [[gnu::format(printf, 2, 3)]] void printf(const char* format, ...);
  /// Says that so many bytes could not be allocated.
  void memError(std::size_t bytes);

  /// Replaces the sink and returns the one before. An empty sink means standard error.
  Sink setSink(Sink sink);

private:
  ZxMessage() = default;
  Sink m_sink;
};
