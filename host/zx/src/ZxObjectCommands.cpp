#include "ZxObjectCommands.h"

#include "zx/ZxObjectPool.h"

#include <tcl.h>

#include <exception>
#include <vector>

namespace {

ZxObjectCommands* theCommands = nullptr;

/// Objects are commands at global level, whatever namespace their label is made in.
std::string commandName(const std::string& label) { return "::" + label; }

/// Runs a command of an object. Nothing thrown crosses the interpreter.
int runObject(ClientData clientData, Tcl_Interp* interp, int argc, const char** argv)
{
  const McHandle<ZxObject> object(static_cast<ZxObject*>(clientData));
  std::vector<char*> words(const_cast<char**>(argv), const_cast<char**>(argv) + argc);
  if (argc < 2) return zxWrongArguments(interp, words, "COMMAND ?ARG ...?");
  words.push_back(nullptr);
  try {
    Tcl_ResetResult(interp);
    return object->parse(interp, argc, words.data());
  } catch (const std::exception& error) {
    return zxError(interp, error.what());
  }
}

} // namespace

ZxObjectCommands::ZxObjectCommands(Tcl_Interp* interp) : m_interp(interp)
{
  theCommands = this;
  for (const McHandle<ZxObject>& object : ZxObjectPool::getThePool().objects()) objectAdded(object.get());
}

ZxObjectCommands::~ZxObjectCommands() { theCommands = nullptr; }

bool ZxObjectCommands::isTaken(const std::string& label, const ZxObject& object)
{
  if (!theCommands) return false;
  const Tcl_Command command =
      Tcl_FindCommand(theCommands->m_interp, commandName(label).c_str(), nullptr, TCL_GLOBAL_ONLY);
  if (!command) return false;
  const auto own = theCommands->m_entries.find(&object);
  return own == theCommands->m_entries.end() || own->second.command != command;
}

void ZxObjectCommands::objectAdded(ZxObject* object)
{
  // Only an object that is older than the interpreter can have the name of a command.
  const std::string& label = object->getLabel().str();
  if (isTaken(label, *object)) object->setLabel(McString(label + " (2)"));
  make(object);
}

void ZxObjectCommands::make(ZxObject* object)
{
  Entry& entry = m_entries[object];
  entry.label = object->getLabel().str();
  entry.command =
      Tcl_CreateCommand(m_interp, commandName(entry.label).c_str(), runObject, object, commandDeleted);
}

void ZxObjectCommands::objectRemoved(ZxObject* object)
{
  const auto it = m_entries.find(object);
  if (it == m_entries.end()) return;
  const auto command = it->second.command;
  m_entries.erase(it);
  if (command) Tcl_DeleteCommandFromToken(m_interp, command);
}

void ZxObjectCommands::objectChanged(ZxObject* object)
{
  const auto it = m_entries.find(object);
  if (it == m_entries.end() || it->second.label == object->getLabel().str()) return;
  objectRemoved(object);
  make(object);
}

void ZxObjectCommands::commandDeleted(void* clientData)
{
  if (!theCommands) return;
  const auto it = theCommands->m_entries.find(static_cast<const ZxObject*>(clientData));
  if (it != theCommands->m_entries.end()) it->second.command = nullptr;
}
