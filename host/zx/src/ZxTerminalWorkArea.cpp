#include "zx/ZxTerminalWorkArea.h"

#include "mc/McRound.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

namespace {

volatile std::sig_atomic_t interrupted = 0;

// Ctrl+C, a batch system's end of time, a closed terminal: all ask for the same.
constexpr int stopSignals[] = {SIGINT, SIGTERM, SIGHUP};

void onInterrupt(int signal)
{
  interrupted = 1;
  // The next one ends the program, whatever it is doing.
  std::signal(signal, SIG_DFL);
}

std::string clock(double seconds)
{
  const int s = mc::truncToInt(seconds);
  char text[32];
  std::snprintf(text, sizeof text, "%d:%02d", s / 60, s % 60);
  return text;
}

std::size_t terminalWidth()
{
  winsize size{};
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

} // namespace

ZxTerminalWorkArea::ZxTerminalWorkArea(Display display)
  : m_visible(display == Display::WhenTerminal && isatty(STDERR_FILENO))
{
  for (const int signal : stopSignals)
    if (std::signal(signal, onInterrupt) == SIG_IGN) std::signal(signal, SIG_IGN); // as nohup has it
  setTheWorkArea(this);
}

ZxTerminalWorkArea::~ZxTerminalWorkArea()
{
  clearLine();
  setTheWorkArea(nullptr);
  // The handlers stay: a signal that comes when the work is done makes no failure of it.
}

bool ZxTerminalWorkArea::wasInterruptedEver() noexcept { return interrupted != 0; }

void ZxTerminalWorkArea::interrupt() noexcept { interrupted = 1; }

bool ZxTerminalWorkArea::interruptRequested() { return wasInterruptedEver(); }

void ZxTerminalWorkArea::workingChanged()
{
  m_start = Clock::now();
  m_lastShown = {};
  if (isWorking())
    show();
  else
    clearLine();
}

void ZxTerminalWorkArea::show()
{
  if (!m_visible || !isWorking()) return;
  const Clock::time_point now = Clock::now();
  if (now - m_lastShown < std::chrono::milliseconds(100)) return;
  m_lastShown = now;
  const double elapsed = std::chrono::duration<double>(now - m_start).count();
  const double fraction = static_cast<double>(getProgressFraction());
  std::string line = std::to_string(mc::truncToInt(fraction * 100.0)) + " %  " + clock(elapsed);
  if (fraction > 0.01) line += ", about " + clock(elapsed / fraction * (1.0 - fraction)) + " left";
  line += "  " + getProgressText();
  // A line that wraps could not be overwritten.
  line.resize(std::min(line.size(), terminalWidth() - 1));
  std::fprintf(stderr, "\r\033[K%s", line.c_str());
  std::fflush(stderr);
  m_lineShown = true;
}

void ZxTerminalWorkArea::clearLine()
{
  if (m_lineShown) std::fprintf(stderr, "\r\033[K");
  m_lineShown = false;
}
