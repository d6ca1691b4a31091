#pragma once

#include "PlugInRemarks.h"

#include <memory>
#include <string>
#include <vector>

class QxMainWindow;

namespace orvel {

struct Arguments;

/// What both ways of running have in common: file access, the package with its plug-ins, and the main window,
/// shown or not. Needs an application object. Objects of the pool end with it, before the window does.
class Session {
public:
  Session();
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// What went wrong at the start: one sentence each. The session is usable all the same.
  const std::vector<std::string>& problems() const noexcept { return m_problems; }
  QxMainWindow& window() noexcept { return *m_window; }

private:
  void note(const std::string& problem);

  std::vector<std::string> m_problems;
  PlugInRemarks m_remarks;
  std::unique_ptr<QxMainWindow> m_window;
};

} // namespace orvel
