#include "ZxHostCommands.h"

#include "zx/ZxFileAccess.h"
#include "zx/ZxInterpreter.h"
#include "zx/ZxModule.h"
#include "zx/ZxObjectPool.h"
#include "zx/ZxWorkArea.h"

#include <tcl.h>

namespace {

ZxObjectPool& pool() { return ZxObjectPool::getThePool(); }

constexpr std::string_view loadArguments = "?-labels|-field? ?-pad? FILE ?FILE ...?";

/// Takes the options from the front of the arguments. False at one that is unknown.
bool takeLoadOptions(ZxArguments& arguments, ZxReadRequest& request)
{
  for (; !arguments.empty() && arguments[0][0] == '-'; arguments = arguments.subspan(1)) {
    const std::string_view option = arguments[0];
    if (option == "-labels")
      request.as = ZxReadAs::Labels;
    else if (option == "-field")
      request.as = ZxReadAs::Field;
    else if (option == "-pad")
      request.unequalSlices = ZxUnequalSlices::PadToLargest;
    else if (option == "--") {
      arguments = arguments.subspan(1);
      return true;
    } else
      return false;
  }
  return true;
}

/// Tcl's own load, for libraries: scripts of Tcl packages use it.
int loadLibrary(Tcl_Interp* interp, ZxArguments arguments)
{
  std::vector<std::string> words{"::tcl::loadLibrary"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  return Tcl_Eval(interp, ZxInterpreter::makeList(words).c_str());
}

int load(ZxInterpreter&, Tcl_Interp* interp, ZxArguments arguments)
{
  if (std::string_view(arguments[0]).ends_with(".so")) return loadLibrary(interp, arguments);
  ZxReadRequest request;
  if (!takeLoadOptions(arguments, request))
    return zxError(interp, std::string("unknown option \"") + arguments[0] +
                               "\": should be -labels, -field, -pad or --");
  char name[] = "load";
  char* const words[] = {name};
  if (arguments.empty()) return zxWrongArguments(interp, words, loadArguments);
  request.inputs.assign(arguments.begin(), arguments.end());
  const ZxWorkingPhase phase(("Reading " + request.inputs.front()).c_str());
  const ZxFileOutcome outcome = ZxFileAccess::getTheFileAccess()->read(request);
  if (outcome.state != ZxFileOutcome::State::Done) return zxError(interp, outcome.problem);
  pool().add(outcome.data.get());
  return zxResult(interp, outcome.data->getLabel().str());
}

int create(ZxInterpreter&, Tcl_Interp* interp, ZxArguments arguments)
{
  if (arguments.size() > 1 && !*arguments[1]) return zxError(interp, "a label cannot be empty");
  const McHandle<ZxObject> object(pool().create(arguments[0]));
  if (!object) {
    std::vector<ZxCommandHelp> known;
    for (const McTypeInfo* type : McTypeInfo::all())
      if (type->canCreate()) known.push_back({type->name(), "", ""});
    return zxUnknown(interp, "unknown class", arguments[0], known);
  }
  if (arguments.size() > 1) object->setLabel(McString(arguments[1]));
  if (auto* module = dynamic_cast<ZxModule*>(object.get())) module->fire();
  return zxResult(interp, object->getLabel().str());
}

int removeObjects(ZxInterpreter&, Tcl_Interp* interp, ZxArguments arguments)
{
  std::vector<McHandle<ZxObject>> objects;
  for (const char* name : arguments) {
    objects.emplace_back(pool().find(name));
    if (!objects.back()) return zxError(interp, std::string("there is no object \"") + name + "\"");
  }
  for (const McHandle<ZxObject>& object : objects)
    if (!pool().remove(object.get()))
      return zxError(interp, "\"" + object->getLabel().str() + "\" is in use and cannot be removed now");
  return kZxOk;
}

int objects(ZxInterpreter&, Tcl_Interp* interp, ZxArguments arguments)
{
  const McTypeInfo* const type =
      arguments.empty() ? &ZxObject::getClassTypeId() : McTypeInfo::find(arguments[0]);
  if (!type) return zxError(interp, std::string("there is no class \"") + arguments[0] + "\"");
  std::vector<std::string> names;
  for (const McHandle<ZxObject>& object : pool().objects())
    if (object->isOfType(*type)) names.push_back(object->getLabel().str());
  return zxListResult(interp, names);
}

int echo(ZxInterpreter&, Tcl_Interp* interp, ZxArguments arguments)
{
  std::string line;
  for (const char* word : arguments) line += (line.empty() ? "" : " ") + std::string(word);
  line += '\n';
  Tcl_Channel channel = Tcl_GetStdChannel(TCL_STDOUT);
  if (channel && Tcl_WriteChars(channel, line.c_str(), static_cast<int>(line.size())) >= 0 &&
      Tcl_Flush(channel) == TCL_OK)
    return kZxOk;
  return zxError(interp, std::string("the output cannot be written: ") + Tcl_PosixError(interp));
}

int quit(ZxInterpreter& interpreter, Tcl_Interp* interp, ZxArguments arguments)
{
  const auto status = arguments.empty() ? 0 : zxGetInt(interp, arguments[0]);
  if (!status) return kZxError;
  interpreter.quit(*status);
  return kZxError; // Unwinds; there is no way back into the script.
}

int help(ZxInterpreter&, Tcl_Interp* interp, ZxArguments arguments)
{
  if (!arguments.empty()) {
    const ZxObject* const object = pool().find(arguments[0]);
    if (!object) return zxError(interp, std::string("there is no object \"") + arguments[0] + "\"");
    return zxResult(interp, zxHelpText(object->commands()));
  }
  std::vector<ZxCommandHelp> list;
  zxAppendHelp(list, zxHostCommands());
  list.push_back({"NAME help", "", "The commands of an object of the pool."});
  return zxResult(interp, zxHelpText(list));
}

constexpr ZxCommand<ZxInterpreter> hostCommands[] = {
    {{"load", loadArguments,
      "Reads a volume: a file, a folder of slices, or slices. Returns the name of the object. -labels: as "
      "labels; -field: as values; -pad: slices may differ in size."},
     load},
    {{"create", "CLASS ?NAME?", "Makes an object of a class. Returns its name."}, create},
    {{"remove", "NAME ?NAME ...?", "Removes objects."}, removeObjects},
    {{"objects", "?CLASS?", "The names of all objects, or of those of a class."}, objects},
    {{"echo", "?TEXT ...?", "Prints a line."}, echo},
    {{"quit", "?STATUS?", "Ends the program."}, quit},
    {{"exit", "?STATUS?", "The same."}, quit},
    {{"help", "?NAME?", "These commands, or those of an object."}, help},
};
static_assert(zxNamesUnique(hostCommands));

} // namespace

std::span<const ZxCommand<ZxInterpreter>> zxHostCommands() { return hostCommands; }
