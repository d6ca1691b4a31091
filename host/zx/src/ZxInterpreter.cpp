#include "zx/ZxInterpreter.h"

#include "ZxHostCommands.h"
#include "ZxObjectCommands.h"
#include "ZxScriptChannels.h"
#include "ZxScriptRun.h"
#include "zx/ZxModule.h"
#include "zx/ZxObjectPool.h"
#include "zx/ZxWorkArea.h"

#include <tcl.h>

#include <algorithm>
#include <clocale>
#include <filesystem>
#include <set>

namespace {

struct TclFree {
  void operator()(void* memory) const { Tcl_Free(static_cast<char*>(memory)); }
};

struct Unreference {
  void operator()(Tcl_Obj* object) const { Tcl_DecrRefCount(object); }
};
using ObjectPtr = std::unique_ptr<Tcl_Obj, Unreference>;

ObjectPtr makeText(const std::string& text)
{
  Tcl_Obj* object = Tcl_NewStringObj(text.data(), static_cast<int>(text.size()));
  Tcl_IncrRefCount(object);
  return ObjectPtr(object);
}

/// Runs a command of the host. Nothing thrown crosses the interpreter.
int runHostCommand(ClientData clientData, Tcl_Interp* interp, int argc, const char** argv)
{
  const auto& command = *static_cast<const ZxCommand<ZxInterpreter>*>(clientData);
  const std::span<char* const> words(const_cast<char**>(argv), static_cast<std::size_t>(argc));
  const ZxArguments arguments = words.subspan(1);
  if (!command.accepts(arguments.size())) return zxWrongArguments(interp, words.first(1), command.arguments);
  try {
    Tcl_ResetResult(interp);
    return command.run(ZxInterpreter::getTheInterpreter(), interp, arguments);
  } catch (const std::exception& error) {
    return zxError(interp, error.what());
  }
}

/// Tcl's own commands that go by a name of ours: its load stays reachable, its exit does not.
void makeHostCommands(Tcl_Interp* interp)
{
  Tcl_Eval(interp, "rename ::load ::tcl::loadLibrary");
  Tcl_ResetResult(interp);
  for (const ZxCommand<ZxInterpreter>& command : zxHostCommands())
    Tcl_CreateCommand(interp, std::string(command.name).c_str(), runHostCommand,
                      const_cast<ZxCommand<ZxInterpreter>*>(&command), nullptr);
}

/// The part of a line that is the command being typed: what follows the last open bracket or separator.
std::string commandBeingTyped(const std::string& line)
{
  std::size_t begin = 0;
  int braces = 0;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '\\')
      ++i;
    else if (line[i] == '{')
      ++braces;
    else if (line[i] == '}')
      --braces;
    else if (line[i] == '[' || (braces <= 0 && (line[i] == ';' || line[i] == '\n')))
      begin = i + 1;
  }
  return line.substr(std::min(begin, line.size()));
}

/// The words of an unfinished command; the last one, maybe empty, is being typed.
std::vector<std::string> wordsOf(const std::string& command)
{
  for (const char* ending : {"", "}", "\""}) {
    auto words = ZxInterpreter::splitList((command + ending).c_str());
    if (!words) continue;
    const bool isNewWord = !*ending && (command.empty() || command.back() == ' ' || command.back() == '\t');
    if (isNewWord || words->empty()) words->emplace_back();
    return *words;
  }
  return {{}};
}

/// The words that objects have to offer behind these.
std::set<std::string> candidatesBehind(std::span<const std::string> words)
{
  const ZxObjectPool& pool = ZxObjectPool::getThePool();
  const ZxObject* const object = words.empty() ? nullptr : pool.find(words[0]);
  const auto* const module = dynamic_cast<const ZxModule*>(object);
  const ZxPort* const port = module && words.size() > 1 ? module->findPort(words[1]) : nullptr;
  const auto* const connection = dynamic_cast<const ZxConnection*>(port);
  std::set<std::string> candidates;
  const auto add = [&](const std::vector<ZxCommandHelp>& list) {
    for (const ZxCommandHelp& command : list)
      candidates.emplace(command.name.substr(0, command.name.find(' ')));
  };
  if (object && words.size() == 1) add(object->commands());
  if (port && words.size() == 2) add(port->commands());
  const bool connects = connection && words.size() == 3 && words[2] == "connect";
  if (connects) candidates.insert("none");
  // Arguments of other commands are names of objects mostly.
  for (const McHandle<ZxObject>& o : pool.objects())
    if (connects ? connection->accepts(*o) : !object) candidates.insert(o->getLabel().str());
  return candidates;
}

} // namespace

ZxInterpreter& ZxInterpreter::getTheInterpreter()
{
  static ZxInterpreter instance;
  return instance;
}

ZxInterpreter::ZxInterpreter()
{
  Tcl_FindExecutable(nullptr);
  Tcl_SetSystemEncoding(nullptr, "utf-8"); // File names and labels are UTF-8, whatever the locale says.
  m_interp.reset(Tcl_CreateInterp());
  // Without Tcl's script library only the commands that are written in Tcl are missing.
  if (Tcl_Init(m_interp.get()) != TCL_OK) Tcl_ResetResult(m_interp.get());
  makeHostCommands(m_interp.get());
  m_objectCommands = std::make_unique<ZxObjectCommands>(m_interp.get());
  // Tcl takes up the user's locale; reals would be read and printed with its comma.
  std::setlocale(LC_NUMERIC, "C");
}

ZxInterpreter::~ZxInterpreter()
{
  m_objectCommands.reset();
  m_channels.reset();
  flushOutput();
  // Without another holder the end of the interpreter would close these for the whole program.
  for (const int standard : {TCL_STDIN, TCL_STDOUT, TCL_STDERR})
    if (Tcl_Channel channel = Tcl_GetStdChannel(standard)) Tcl_RegisterChannel(nullptr, channel);
}

void ZxInterpreter::Delete::operator()(Tcl_Interp* interp) const { Tcl_DeleteInterp(interp); }

const char* ZxInterpreter::getVar(const char* name) const
{
  return Tcl_GetVar(m_interp.get(), name, TCL_GLOBAL_ONLY);
}

bool ZxInterpreter::setVar(const char* name, const char* value)
{
  return Tcl_SetVar(m_interp.get(), name, value, TCL_GLOBAL_ONLY) != nullptr;
}

ZxScriptResult ZxInterpreter::failure() const
{
  ZxScriptResult result{ZxScriptResult::State::Failed,
                        Tcl_GetStringResult(m_interp.get()),
                        Tcl_GetErrorLine(m_interp.get()),
                        {}};
  const char* const info = getVar("::errorInfo");
  const std::string stack = info ? info : "";
  if (stack.find("(procedure ") != std::string::npos && stack.starts_with(result.text + "\n"))
    result.trace = stack.substr(result.text.size() + 1);
  return result;
}

template <class Evaluate>
ZxScriptResult ZxInterpreter::run(Evaluate evaluate)
{
  std::optional<ZxScriptRun> outermost;
  if (m_depth++ == 0) {
    m_quitStatus.reset();
    outermost.emplace(m_interp.get());
  }
  const int status = evaluate(m_interp.get());
  ZxScriptResult result;
  // A script that ends with return or break outside of anything has ended well enough.
  if (status == TCL_ERROR)
    result = failure();
  else
    result.text = Tcl_GetStringResult(m_interp.get());
  Tcl_ResetResult(m_interp.get());
  --m_depth;
  if (m_quitStatus)
    result = {ZxScriptResult::State::Quit, {}, 0, {}};
  else if (outermost && outermost->wasStopped())
    result = {ZxScriptResult::State::Stopped, "stopped by the user", 0, {}};
  const bool quits = outermost && m_quitStatus;
  outermost.reset();
  if (quits && m_quitHandler) m_quitHandler(*m_quitStatus);
  return result;
}

ZxScriptResult ZxInterpreter::eval(const std::string& script)
{
  const ObjectPtr text = makeText(script);
  return run([&](Tcl_Interp* interp) { return Tcl_EvalObjEx(interp, text.get(), TCL_EVAL_GLOBAL); });
}

ZxScriptResult ZxInterpreter::runFile(const std::string& fileName)
{
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(fileName, ignored))
    return {ZxScriptResult::State::Failed, "there is no such file", 0, {}};
  const ObjectPtr path = makeText(fileName);
  // The bytes of a script are UTF-8 whatever the locale says.
  return run([&](Tcl_Interp* interp) { return Tcl_FSEvalFileEx(interp, path.get(), "utf-8"); });
}

std::string ZxInterpreter::evalFile(const std::string& fileName)
{
  ZxScriptResult result = runFile(fileName);
  if (result.state == ZxScriptResult::State::Done || result.state == ZxScriptResult::State::Quit) return {};
  if (result.line == 0 && result.state == ZxScriptResult::State::Failed)
    return "The start-up script " + fileName + " is no file.";
  std::string& reason = result.text;
  reason.resize(std::min(reason.size(), reason.find('\n')));
  const std::string place = result.line > 0 ? " failed in line " + std::to_string(result.line) : " failed";
  return "The start-up script " + fileName + place + ": " + reason + ".";
}

void ZxInterpreter::setArguments(const std::string& program, std::span<const std::string> arguments)
{
  setVar("argv0", program.c_str());
  setVar("argc", std::to_string(arguments.size()).c_str());
  setVar("argv", makeList(arguments).c_str());
}

void ZxInterpreter::handleEvents()
{
  // They wait for work that goes on, as what is typed at the prompt does: it may be about what they remove.
  if (m_depth > 0 || ZxWorkArea::getTheWorkArea()->isBusy()) return;
  constexpr int atATime = 100; // What asks for itself again at once must not keep everything else waiting.
  run([](Tcl_Interp*) {
    for (int i = 0; i < atATime && Tcl_DoOneEvent(TCL_ALL_EVENTS | TCL_DONT_WAIT); ++i) {
    }
    return TCL_OK;
  });
}

void ZxInterpreter::quit(int status)
{
  m_quitStatus = status;
  Tcl_CancelEval(m_interp.get(), nullptr, nullptr, TCL_CANCEL_UNWIND);
}

void ZxInterpreter::setOutput(std::function<void(const std::string&)> output)
{
  m_channels.reset();
  if (output) m_channels = std::make_unique<ZxScriptChannels>(m_interp.get(), std::move(output));
}

bool ZxInterpreter::flushOutput()
{
  Tcl_Channel channel = Tcl_GetStdChannel(TCL_STDOUT);
  return !channel || Tcl_Flush(channel) == TCL_OK;
}

bool ZxInterpreter::isComplete(const std::string& script) { return Tcl_CommandComplete(script.c_str()) != 0; }

std::vector<std::string> ZxInterpreter::completions(const std::string& line) const
{
  const std::vector<std::string> words = wordsOf(commandBeingTyped(line));
  std::set<std::string> candidates = candidatesBehind(std::span(words).first(words.size() - 1));
  if (words.size() == 1) {
    Tcl_Eval(m_interp.get(), "info commands");
    if (const auto names = splitList(Tcl_GetStringResult(m_interp.get())))
      candidates.insert(names->begin(), names->end());
    Tcl_ResetResult(m_interp.get());
  }
  std::vector<std::string> fitting;
  for (const std::string& candidate : candidates)
    if (candidate.starts_with(words.back())) fitting.push_back(makeList({&candidate, 1}));
  return fitting;
}

std::optional<std::vector<std::string>> ZxInterpreter::splitList(const char* list)
{
  int count = 0;
  const char** elements = nullptr;
  if (Tcl_SplitList(nullptr, list, &count, &elements) != TCL_OK) return std::nullopt;
  const std::unique_ptr<const char*, TclFree> owner(elements);
  return std::vector<std::string>(elements, elements + count);
}

std::string ZxInterpreter::makeList(std::span<const std::string> elements)
{
  std::vector<const char*> texts;
  for (const std::string& element : elements) texts.push_back(element.c_str());
  const std::unique_ptr<char, TclFree> list(Tcl_Merge(static_cast<int>(texts.size()), texts.data()));
  return list.get();
}
