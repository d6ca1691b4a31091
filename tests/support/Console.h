#pragma once

#include "zx/ZxMessage.h"

#include <string>
#include <utility>
#include <vector>

/// Records the lines of the message console while it lives.
class Console {
public:
  Console()
    : m_before(ZxMessage::getTheMsg()->setSink([this](const std::string& line) { lines.push_back(line); }))
  {
  }
  ~Console() { ZxMessage::getTheMsg()->setSink(std::move(m_before)); }
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  /// The lines since the last call.
  std::vector<std::string> take() { return std::exchange(lines, {}); }

  std::vector<std::string> lines;

private:
  ZxMessage::Sink m_before;
};

using Lines = std::vector<std::string>;
