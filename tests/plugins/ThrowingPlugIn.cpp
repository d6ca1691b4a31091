// Throws wherever the package calls a plug-in, or has no memory for the work.
#include "zx/ZxMessage.h"
#include "zxalign/ZxAlignSlices.h"
#include "zxalign/ZxAutoAlignMethod.h"
#include "zxalign/ZxAutoAlignMethodFabrique.h"

#include <stdexcept>

namespace {

class Thrower : public ZxAutoAlignMethod {
public:
  using ZxAutoAlignMethod::ZxAutoAlignMethod;
  int doLayout() override
  {
    m_module->translateAll(100.0f, 100.0f);
    throw std::runtime_error("no room for a spectrum");
  }
};

/// Leaves every slice as it is, slice 3 for lack of memory.
class Hungry : public ZxAutoAlignMethod {
public:
  using ZxAutoAlignMethod::ZxAutoAlignMethod;
  int doLayout() override
  {
    if (m_module->getEditableSlice() == 3) ZxMessage::getTheMsg()->memError(123456789);
    return 0;
  }
};

ZxAutoAlignMethod* create(ZxAlignSlices* module) { return new Thrower(module); }
ZxAutoAlignMethod* createHungry(ZxAlignSlices* module) { return new Hungry(module); }
ZxAutoAlignMethod* createNothing(ZxAlignSlices*) { throw 42; }

} // namespace

extern "C" void addThrower(ZxAutoAlignMethodFabrique* registry)
{
  registry->registerAutoAlignMethodPlugIn("Thrower", &create);
  registry->registerAutoAlignMethodPlugIn("Unmakeable", &createNothing);
}

extern "C" void addHungry(ZxAutoAlignMethodFabrique* registry)
{
  registry->registerAutoAlignMethodPlugIn("Hungry", &createHungry);
}

extern "C" void throwHalfWay(ZxAutoAlignMethodFabrique* registry)
{
  registry->registerAutoAlignMethodPlugIn("Half", &create);
  throw std::runtime_error("the licence has run out");
}
