#pragma once

#include <QGuiApplication>
#include <array>
#include <memory>

namespace cli {

/// What painting text needs, without a display. Made for the time of one picture; does nothing where the
/// program has such an object already. Messages of the toolkit about its surroundings are held back while
/// it lives, and the C locale's numbers stay as they are.
class OffscreenGui {
public:
  OffscreenGui();
  ~OffscreenGui();
  OffscreenGui(const OffscreenGui&) = delete;
  OffscreenGui& operator=(const OffscreenGui&) = delete;

private:
  // The application object takes its own options out of these and refers to the rest.
  std::array<char*, 4> m_arguments;
  int m_argumentCount = 3;
  QtMessageHandler m_messagesBefore;
  std::unique_ptr<QGuiApplication> m_application;
};

} // namespace cli
