#include "Console.h"

#include "Failure.h"

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
  std::string last = m_held.empty() ? otherwise : m_held.back();
  m_held.clear();
  return last;
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
