#pragma once

#include <atomic>
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
  /// How often that has been said. Who runs what reports by messages alone compares it before and after.
  int numMemErrors() const noexcept { return m_memErrors; }

  /// Replaces the sink and returns the one before. An empty sink means standard error.
  Sink setSink(Sink sink);

private:
  ZxMessage() = default;
  Sink m_sink;
  std::atomic<int> m_memErrors{0};
};
