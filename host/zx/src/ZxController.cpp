#include "zx/ZxController.h"

namespace {

class NoViewers : public ZxController {
public:
  ZxViewer* viewer(int, int) override { return nullptr; }
};

NoViewers noViewers;
ZxController* theController = &noViewers;

} // namespace

ZxController* ZxController::getTheController() { return theController; }

void ZxController::setTheController(ZxController* controller)
{
  theController = controller ? controller : &noViewers;
}
