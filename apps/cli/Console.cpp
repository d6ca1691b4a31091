#include "Console.h"

#include "Failure.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace cli {

Console::Console(Verbosity verbosity)
  : m_verbosity(verbosity),
    m_workArea(verbosity == Verbosity::Quiet ? ZxTerminalWorkArea::Display::Never
                                             : ZxTerminalWorkArea::Display::WhenTerminal),
    m_sinkBefore(ZxMessage::getTheMsg()->setSink([this](const std::string& line) { m_held.push_back(line); }))
{
}

Console::~Console() { ZxMessage::getTheMsg()->setSink(std::move(m_sinkBefore)); }

void Console::remarks()
{
  m_workArea.clearLine();
  if (m_verbosity == Verbosity::Normal)
    for (const std::string& line : m_held) std::fprintf(stderr, "%s\n", line.c_str());
  m_held.clear();
}

std::string Console::reason(const std::string& otherwise)
{
  // A sentence on what cannot be done gives the cause of what is said after it.
  const auto cause = std::find_if(m_held.rbegin(), m_held.rend(),
                                  [](const std::string& line) { return line.starts_with("Cannot "); });
  std::string reason = m_held.empty() ? otherwise : cause != m_held.rend() ? *cause : m_held.back();
  m_held.clear();
  return reason;
}

void Console::result(const std::string& line)
{
  m_workArea.clearLine();
  if (std::fprintf(stdout, "%s\n", line.c_str()) < 0 || std::fflush(stdout) != 0)
    throw Failure(std::string("Standard output could not be written: ") + std::strerror(errno) + ".");
}

void Console::summary(const std::string& line)
{
  if (m_verbosity == Verbosity::Normal) result(line);
}

} // namespace cli
