#include "zx/ZxObject.h"

#include "zx/ZxObjectPool.h"

const McTypeInfo& ZxObject::getClassTypeId()
{
  static const McTypeInfo type("ZxObject", {});
  return type;
}

namespace {

int getLabel(ZxObject& object, Tcl_Interp* interp, ZxArguments)
{
  return zxResult(interp, object.getLabel().str());
}

int setLabel(ZxObject& object, Tcl_Interp* interp, ZxArguments arguments)
{
  if (!*arguments[0]) return zxError(interp, "a label cannot be empty");
  object.setLabel(McString(arguments[0]));
  return zxResult(interp, object.getLabel().str());
}

int getTypeId(ZxObject& object, Tcl_Interp* interp, ZxArguments)
{
  return zxResult(interp, object.getTypeId().name());
}

int help(ZxObject& object, Tcl_Interp* interp, ZxArguments)
{
  return zxResult(interp, zxHelpText(object.commands()));
}

constexpr ZxCommand<ZxObject> objectCommands[] = {
    {{"getLabel", "", "The label, which is the name of this command."}, getLabel},
    {{"setLabel", "LABEL", "Renames the object. Returns the label, with a number when it was taken."},
     setLabel},
    {{"getTypeId", "", "The name of the class of the object."}, getTypeId},
    {{"help", "", "The commands of the object."}, help},
};
static_assert(zxNamesUnique(objectCommands));

} // namespace

int ZxObject::parse(Tcl_Interp* interp, int argc, char** argv)
{
  const std::span<char* const> words(argv, static_cast<std::size_t>(argc));
  const auto done = zxRunCommand<ZxObject>(objectCommands, *this, interp, words, 1);
  return done ? *done : zxUnknown(interp, "unknown command", argv[1], commands());
}

std::vector<ZxCommandHelp> ZxObject::commands() const
{
  return {std::begin(objectCommands), std::end(objectCommands)};
}

void ZxObject::setLabel(McString label)
{
  if (label == m_label) return;
  m_label = m_inPool ? McString(ZxObjectPool::getThePool().freeLabel(label.str(), *this)) : std::move(label);
  changed();
}

void ZxObject::changed()
{
  if (m_inPool) ZxObjectPool::getThePool().tellChanged(this);
}
