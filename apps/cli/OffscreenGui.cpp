#include "OffscreenGui.h"

#include <clocale>

namespace cli {
namespace {

void dropMessage(QtMsgType, const QMessageLogContext&, const QString&) {}

// The application object keeps references to its arguments.
char programName[] = "zxalign";
char platformOption[] = "-platform";
char platformName[] = "offscreen";
char* arguments[] = {programName, platformOption, platformName, nullptr};
int argumentCount = 3;

} // namespace

OffscreenGui::OffscreenGui() : m_messagesBefore(qInstallMessageHandler(dropMessage))
{
  if (!QCoreApplication::instance()) {
    argumentCount = 3;
    m_application = std::make_unique<QGuiApplication>(argumentCount, arguments);
  }
  // The application object takes over the locale of the environment, and with it its decimal comma.
  std::setlocale(LC_NUMERIC, "C");
}

OffscreenGui::~OffscreenGui()
{
  m_application.reset();
  qInstallMessageHandler(m_messagesBefore);
}

} // namespace cli
