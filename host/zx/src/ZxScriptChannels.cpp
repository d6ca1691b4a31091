#include "ZxScriptChannels.h"

#include <tcl.h>

#include <utility>

namespace {

int closeChannel(ClientData, Tcl_Interp*, int) { return 0; }

int writeChannel(ClientData clientData, const char* text, int length, int*)
{
  static_cast<ZxScriptChannels*>(clientData)->write(text, static_cast<std::size_t>(length));
  return length;
}

void watchChannel(ClientData, int) {}

int noHandle(ClientData, int, ClientData*) { return TCL_ERROR; }

Tcl_ChannelType channelType()
{
  Tcl_ChannelType type{};
  type.typeName = "console";
  type.version = TCL_CHANNEL_VERSION_5;
  type.closeProc = TCL_CLOSE2PROC;
  type.close2Proc = closeChannel;
  type.outputProc = writeChannel;
  type.watchProc = watchChannel;
  type.getHandleProc = noHandle;
  return type;
}

} // namespace

ZxScriptChannels::ZxScriptChannels(Tcl_Interp* interp, Output output)
  : m_interp(interp),
    m_output(std::move(output)), m_standards{{TCL_STDOUT, nullptr, nullptr}, {TCL_STDERR, nullptr, nullptr}}
{
  static const Tcl_ChannelType type = channelType();
  for (Standard& standard : m_standards) {
    standard.before = Tcl_GetStdChannel(standard.number);
    if (standard.before) Tcl_RegisterChannel(nullptr, standard.before); // Stays open meanwhile.
    const char* const name = standard.number == TCL_STDOUT ? "consoleOut" : "consoleError";
    standard.own = Tcl_CreateChannel(&type, name, this, TCL_WRITABLE);
    Tcl_SetChannelOption(nullptr, standard.own, "-translation", "lf");
    Tcl_SetChannelOption(nullptr, standard.own, "-encoding", "utf-8");
    Tcl_SetChannelOption(nullptr, standard.own, "-buffering", "none");
    Tcl_SetStdChannel(standard.own, standard.number);
    Tcl_RegisterChannel(m_interp, standard.own);
  }
}

ZxScriptChannels::~ZxScriptChannels()
{
  for (const Standard& standard : m_standards) {
    Tcl_SetStdChannel(standard.before, standard.number);
    Tcl_UnregisterChannel(m_interp, standard.own);
    if (!standard.before) continue;
    // The interpreter may have met these channels only now.
    if (!Tcl_IsChannelRegistered(m_interp, standard.before)) Tcl_RegisterChannel(m_interp, standard.before);
    Tcl_UnregisterChannel(nullptr, standard.before);
  }
  if (!m_line.empty()) m_output(m_line);
}

void ZxScriptChannels::write(const char* text, std::size_t length)
{
  m_line.append(text, length);
  for (std::size_t end = m_line.find('\n'); end != std::string::npos; end = m_line.find('\n')) {
    const std::string line = m_line.substr(0, end);
    m_line.erase(0, end + 1);
    m_output(line);
  }
}
