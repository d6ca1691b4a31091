#pragma once

#include "zx/ZxPoolObserver.h"

namespace orvel {

/// Says on the message console which plug-ins were not loaded, when the first alignment module has come:
/// until then scripts may list further ones.
class PlugInRemarks : public ZxPoolObserver {
public:
  void objectAdded(ZxObject* object) override;

private:
  bool m_done = false;
};

} // namespace orvel
