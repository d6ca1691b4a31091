// Throws wherever the package calls a plug-in.
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

ZxAutoAlignMethod* create(ZxAlignSlices* module) { return new Thrower(module); }
ZxAutoAlignMethod* createNothing(ZxAlignSlices*) { throw 42; }

} // namespace

extern "C" void addThrower(ZxAutoAlignMethodFabrique* registry)
{
  registry->registerAutoAlignMethodPlugIn("Thrower", &create);
  registry->registerAutoAlignMethodPlugIn("Unmakeable", &createNothing);
}

extern "C" void throwHalfWay(ZxAutoAlignMethodFabrique* registry)
{
  registry->registerAutoAlignMethodPlugIn("Half", &create);
  throw std::runtime_error("the licence has run out");
}
