#include "Console.h"

#include "Failure.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace cli {
namespace {

// What the package says of every slice of a result that is made with most-frequent backgrounds.
constexpr std::string_view kOfEverySlice = "Background color slice ";

/// A sentence on what cannot be done gives the cause of what is said after it.
bool isCause(const std::string& line) { return line.starts_with("Cannot "); }

/// Each line once, at the place of the first of its kind. Lines of a kind are equal ones, and those that are
/// about every slice.
std::vector<std::string> condensed(const std::vector<std::string>& lines)
{
  std::vector<std::string> shown;
  std::unordered_map<std::string_view, std::pair<std::size_t, int>> kinds; // place and number
  for (const std::string& line : lines) {
    const std::string_view kind = line.starts_with(kOfEverySlice) ? kOfEverySlice : std::string_view(line);
    const auto [found, isFirst] = kinds.try_emplace(kind, shown.size(), 0);
    if (isFirst) shown.push_back(line);
    ++found->second.second;
  }
  for (const auto& [kind, places] : kinds) {
    const auto& [place, number] = places;
    if (number == 1) continue;
    shown[place] += kind == kOfEverySlice ? " (and so on, " + std::to_string(number) + " slices)"
                                          : " (" + std::to_string(number) + " times)";
  }
  return shown;
}

} // namespace

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
    for (const std::string& line : condensed(m_held)) std::fprintf(stderr, "%s\n", line.c_str());
  m_held.clear();
}

bool Console::holdsCause() const { return std::any_of(m_held.begin(), m_held.end(), isCause); }

std::string Console::reason(const std::string& otherwise)
{
  const auto cause = std::find_if(m_held.rbegin(), m_held.rend(), isCause);
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
