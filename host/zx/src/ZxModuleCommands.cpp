#include "zx/ZxModule.h"

namespace {

int fire(ZxModule& module, Tcl_Interp*, ZxArguments)
{
  module.fire();
  return kZxOk;
}

int ports(ZxModule& module, Tcl_Interp* interp, ZxArguments)
{
  std::vector<std::string> names;
  for (const ZxPort* port : module.getPorts()) names.push_back(port->getName());
  return zxListResult(interp, names);
}

constexpr ZxCommand<ZxModule> moduleCommands[] = {
    {{"fire", "", "Lets the module react to the ports that were changed."}, fire},
    {{"ports", "", "The names of the ports; MODULE PORT COMMAND talks to one."}, ports},
};
static_assert(zxNamesUnique(moduleCommands));

int result(ZxCompModule& module, Tcl_Interp* interp, ZxArguments arguments)
{
  const auto slot = arguments.empty() ? 0 : zxGetInt(interp, arguments[0]);
  if (!slot) return kZxError;
  if (*slot < 0) return zxError(interp, "there is no result " + std::string(arguments[0]));
  const ZxData* data = module.getResult(*slot);
  return zxResult(interp, data ? data->getLabel().str() : std::string());
}

constexpr ZxCommand<ZxCompModule> compModuleCommands[] = {
    {{"result", "?SLOT?", "The name of a result of the module, empty when it has none."}, result},
};

} // namespace

int ZxModule::parse(Tcl_Interp* interp, int argc, char** argv)
{
  const std::span<char* const> words(argv, static_cast<std::size_t>(argc));
  const McHandle<ZxModule> alive(this);
  if (const auto done = zxRunCommand<ZxModule>(moduleCommands, *this, interp, words, 1)) return *done;
  if (ZxPort* port = findPort(words[1])) return port->parse(interp, words);
  return ZxObject::parse(interp, argc, argv);
}

std::vector<ZxCommandHelp> ZxModule::commands() const
{
  std::vector<ZxCommandHelp> list = ZxObject::commands();
  zxAppendHelp(list, moduleCommands);
  for (const ZxPort* port : m_ports) list.push_back({port->getName(), "COMMAND ?ARG ...?", "A port."});
  return list;
}

int ZxCompModule::parse(Tcl_Interp* interp, int argc, char** argv)
{
  const std::span<char* const> words(argv, static_cast<std::size_t>(argc));
  const auto done = zxRunCommand<ZxCompModule>(compModuleCommands, *this, interp, words, 1);
  return done ? *done : ZxModule::parse(interp, argc, argv);
}

std::vector<ZxCommandHelp> ZxCompModule::commands() const
{
  std::vector<ZxCommandHelp> list = ZxModule::commands();
  zxAppendHelp(list, compModuleCommands);
  return list;
}
