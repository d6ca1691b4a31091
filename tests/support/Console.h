#pragma once

#include "zx/ZxMessage.h"

#include <string>
#include <utility>
#include <vector>

using Lines = std::vector<std::string>;

/// Records the lines of the message console while it lives.
class Console {
public:
  Console()
    : m_before(ZxMessage::getTheMsg()->setSink([this](const std::string& l) { m_lines.push_back(l); }))
  {
  }
  ~Console() { ZxMessage::getTheMsg()->setSink(std::move(m_before)); }
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  /// The lines since the last call.
  Lines take() { return std::exchange(m_lines, {}); }

private:
  Lines m_lines;
  ZxMessage::Sink m_before;
};
