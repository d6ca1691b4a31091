#include "PlugInRemarks.h"

#include "zx/ZxMessage.h"
#include "zx/ZxObject.h"
#include "zxalign/ZxAlignControl.h"

namespace orvel {

void PlugInRemarks::objectAdded(ZxObject* object)
{
  auto* const control = m_done ? nullptr : dynamic_cast<ZxAlignControl*>(object);
  if (!control) return;
  m_done = true;
  for (const ZxAlignPlugIn& plugIn : control->plugIns())
    if (!plugIn.problem.empty())
      ZxMessage::getTheMsg()->printf("The plug-in %s was not loaded: %s.", plugIn.name.c_str(),
                                     plugIn.problem.c_str());
}

} // namespace orvel
