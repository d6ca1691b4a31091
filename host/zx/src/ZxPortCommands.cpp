#include "zx/ZxModule.h"
#include "zx/ZxObjectPool.h"
#include "zx/ZxPort.h"
#include "zx/ZxWorkArea.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace {

/// Changes a port at once, or after the pass that its module is in.
void edit(ZxPort& port, const std::function<void()>& change)
{
  if (port.getOwner()->isInPass())
    port.getOwner()->change(change);
  else
    change();
}

template <class Port, class Table>
int run(const Table& table, Port& port, Tcl_Interp* interp, std::span<char* const> words)
{
  if (words.size() < 3) return zxWrongArguments(interp, words, "COMMAND ?ARG ...?");
  const auto done = zxRunCommand<Port>(table, port, interp, words, 2);
  return done ? *done : zxUnknown(interp, "unknown command", words[2], port.commands());
}

template <class Table>
std::vector<ZxCommandHelp> helpOf(const Table& table)
{
  std::vector<ZxCommandHelp> list;
  zxAppendHelp(list, table);
  return list;
}

/// The shortest text that says the number in single precision: 0.1, not 0.10000000149011612.
std::string textOf(float value)
{
  std::array<char, 64> text{};
  const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value);
  std::string number(text.data(), end);
  // As the interpreter prints reals, so that 5 / 2 of two such numbers is no integer division.
  if (number.find_first_not_of("-0123456789") == std::string::npos) number += ".0";
  return number;
}

// Connections

int connect(ZxConnection& port, Tcl_Interp* interp, ZxArguments arguments)
{
  const std::string name = arguments[0];
  if (name == "none") {
    edit(port, [&port] { port.disconnect(); });
    return kZxOk;
  }
  ZxObject* const object = ZxObjectPool::getThePool().find(name);
  if (!object) return zxError(interp, "there is no object \"" + name + "\"");
  auto* const data = dynamic_cast<ZxData*>(object);
  if (!data || !port.accepts(*data))
    return zxError(interp, port.getName() + " does not accept \"" + name + "\", which is a " +
                               object->getTypeId().name());
  edit(port, [&port, source = McHandle<ZxData>(data)] { port.connect(source.get()); });
  return kZxOk;
}

int getSource(ZxConnection& port, Tcl_Interp* interp, ZxArguments)
{
  return zxResult(interp, port.isConnected() ? port.getSource()->getLabel().str() : std::string());
}

constexpr ZxCommand<ZxConnection> connectionCommands[] = {
    {{"connect", "OBJECT|none", "Connects to a data object, or to nothing. Takes effect with fire."},
     connect},
    {{"getValue", "", "The name of the connected object, empty when there is none."}, getSource},
};

// Float fields

int getFields(ZxPortFloatTextN& port, Tcl_Interp* interp, ZxArguments arguments)
{
  if (!arguments.empty()) {
    const auto i = zxGetIndex(interp, arguments[0], port.getNum(), "field");
    return i ? zxResult(interp, textOf(port.getValue(*i))) : kZxError;
  }
  std::vector<std::string> values;
  for (int i = 0; i < port.getNum(); ++i) values.push_back(textOf(port.getValue(i)));
  return zxListResult(interp, values);
}

int setField(ZxPortFloatTextN& port, Tcl_Interp* interp, ZxArguments arguments)
{
  const auto i = arguments.size() > 1 ? zxGetIndex(interp, arguments[0], port.getNum(), "field") : 0;
  const auto value = i ? zxGetFloat(interp, arguments.back()) : std::nullopt;
  if (!value) return kZxError;
  edit(port, [&port, i = *i, value = *value] { port.setValue(i, value); });
  return kZxOk;
}

constexpr ZxCommand<ZxPortFloatTextN> fieldCommands[] = {
    {{"getValue", "?INDEX?", "The value of a field, or a list of all."}, getFields},
    {{"setValue", "?INDEX? VALUE", "Sets a field, the first when there is no index. Takes effect with fire."},
     setField},
};

// Menus

int getEntry(ZxPortMultiMenu& port, Tcl_Interp* interp, ZxArguments arguments)
{
  if (!arguments.empty() && !zxGetIndex(interp, arguments[0], 1, "menu")) return kZxError;
  return zxResult(interp, std::to_string(port.getValue()));
}

int setEntry(ZxPortMultiMenu& port, Tcl_Interp* interp, ZxArguments arguments)
{
  if (arguments.size() > 1 && !zxGetIndex(interp, arguments[0], 1, "menu")) return kZxError;
  const std::vector<std::string>& entries = port.getEntries();
  const auto named = std::find(entries.begin(), entries.end(), arguments.back());
  const auto index = named != entries.end()
                         ? std::optional<int>(static_cast<int>(named - entries.begin()))
                         : zxGetIndex(interp, arguments.back(), static_cast<int>(entries.size()), "entry");
  if (!index) return kZxError;
  edit(port, [&port, index = *index] { port.setValue(index); });
  return kZxOk;
}

int getEntries(ZxPortMultiMenu& port, Tcl_Interp* interp, ZxArguments)
{
  return zxListResult(interp, port.getEntries());
}

constexpr ZxCommand<ZxPortMultiMenu> menuCommands[] = {
    {{"getValue", "?INDEX?", "The index of the chosen entry, counted from 0."}, getEntry},
    {{"setValue", "?INDEX? VALUE", "Chooses an entry by its index or its text. Takes effect with fire."},
     setEntry},
    {{"getEntries", "", "The texts of the entries."}, getEntries},
};

// Buttons

int hitButton(ZxPortButtonList& port, Tcl_Interp* interp, ZxArguments arguments)
{
  const auto i = zxGetIndex(interp, arguments[0], port.getNum(), "button");
  if (!i) return kZxError;
  if (!port.isButtonSensitive(*i) || !port.isSensitive())
    return zxError(interp, "the button \"" + port.getButtonLabel(*i) + "\" cannot be pressed now");
  const ZxWorkArea* const area = ZxWorkArea::getTheWorkArea();
  const std::int64_t before = area->numInterruptions();
  port.getOwner()->change([&port, i = *i] { port.hit(i); });
  if (area->numInterruptions() != before) return zxError(interp, "stopped by the user");
  return kZxOk;
}

int getButtons(ZxPortButtonList& port, Tcl_Interp* interp, ZxArguments)
{
  std::vector<std::string> labels;
  for (int i = 0; i < port.getNum(); ++i) labels.push_back(port.getButtonLabel(i));
  return zxListResult(interp, labels);
}

constexpr ZxCommand<ZxPortButtonList> buttonCommands[] = {
    {{"hit", "INDEX", "Presses a button, counted from 0, and runs the module."}, hitButton},
    {{"getEntries", "", "The labels of the buttons."}, getButtons},
};

static_assert(zxNamesUnique(connectionCommands) && zxNamesUnique(fieldCommands) &&
              zxNamesUnique(menuCommands) && zxNamesUnique(buttonCommands));

} // namespace

int ZxConnection::parse(Tcl_Interp* interp, std::span<char* const> words)
{
  return run(connectionCommands, *this, interp, words);
}

int ZxPortFloatTextN::parse(Tcl_Interp* interp, std::span<char* const> words)
{
  return run(fieldCommands, *this, interp, words);
}

int ZxPortMultiMenu::parse(Tcl_Interp* interp, std::span<char* const> words)
{
  return run(menuCommands, *this, interp, words);
}

int ZxPortButtonList::parse(Tcl_Interp* interp, std::span<char* const> words)
{
  return run(buttonCommands, *this, interp, words);
}

std::vector<ZxCommandHelp> ZxConnection::commands() const { return helpOf(connectionCommands); }
std::vector<ZxCommandHelp> ZxPortFloatTextN::commands() const { return helpOf(fieldCommands); }
std::vector<ZxCommandHelp> ZxPortMultiMenu::commands() const { return helpOf(menuCommands); }
std::vector<ZxCommandHelp> ZxPortButtonList::commands() const { return helpOf(buttonCommands); }
