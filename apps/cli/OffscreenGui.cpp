#include "OffscreenGui.h"

#include <clocale>
#include <cstdio>

namespace cli {
namespace {

/// Remarks of the toolkit about its surroundings help nobody here; what ends the program is shown.
void showFatalOnly(QtMsgType type, const QMessageLogContext&, const QString& text)
{
  if (type == QtFatalMsg) std::fprintf(stderr, "%s\n", qPrintable(text));
}

char programName[] = "zxalign";
char platformOption[] = "-platform";
char platformName[] = "offscreen";

} // namespace

OffscreenGui::OffscreenGui()
  : m_arguments{programName, platformOption, platformName, nullptr},
    m_messagesBefore(qInstallMessageHandler(showFatalOnly))
{
  if (!QCoreApplication::instance())
    m_application = std::make_unique<QGuiApplication>(m_argumentCount, m_arguments.data());
  // The application object takes over the locale of the environment, and with it its decimal comma.
  std::setlocale(LC_NUMERIC, "C");
}

OffscreenGui::~OffscreenGui()
{
  m_application.reset();
  qInstallMessageHandler(m_messagesBefore);
}

} // namespace cli
