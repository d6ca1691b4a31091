#include "Session.h"

#include "common/PlugIns.h"
#include "io/FileAccess.h"
#include "qx/QxMainWindow.h"
#include "zx/ZxObjectPool.h"
#include "zx/ZxPackage.h"

#include <clocale>

namespace orvel {

Session::Session()
{
  // The application object takes over the locale of the environment, and with it its decimal comma.
  std::setlocale(LC_NUMERIC, "C");
  io::installFileAccess();
  note(ZxPackage::load("zxalign"));
  m_window = std::make_unique<QxMainWindow>();
  note(apps::announcePlugIns());
}

Session::~Session()
{
  // Modules own pages of the window, and take them along.
  ZxObjectPool::getThePool().clear();
}

void Session::note(const std::string& problem)
{
  if (!problem.empty()) m_problems.push_back(problem);
}

} // namespace orvel
