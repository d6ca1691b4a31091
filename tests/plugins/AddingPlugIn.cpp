// Two entries that register methods: one shifts by (3, -2), the other takes the name of a built-in method.
#include "zxalign/ZxAlignSlices.h"
#include "zxalign/ZxAutoAlignMethod.h"
#include "zxalign/ZxAutoAlignMethodFabrique.h"

namespace {

class Shift : public ZxAutoAlignMethod {
public:
  using ZxAutoAlignMethod::ZxAutoAlignMethod;
  int doLayout() override
  {
    m_module->translateAll(3.0f, -2.0f);
    return 1;
  }
};

ZxAutoAlignMethod* create(ZxAlignSlices* module) { return new Shift(module); }

} // namespace

extern "C" void addShift(ZxAutoAlignMethodFabrique* registry)
{
  registry->registerAutoAlignMethodPlugIn("Shift", &create);
}

extern "C" void addTwins(ZxAutoAlignMethodFabrique* registry)
{
  registry->registerAutoAlignMethodPlugIn("Shift", &create);
  registry->registerAutoAlignMethodPlugIn("OptimizeAlignMethod", &create);
}
