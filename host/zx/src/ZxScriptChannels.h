#pragma once

#include <functional>
#include <string>

struct Tcl_Interp;
struct Tcl_Channel_;

/// Standard output and standard error of scripts, sent line by line to a function while this lives.
class ZxScriptChannels {
public:
  using Output = std::function<void(const std::string& line)>;
  ZxScriptChannels(Tcl_Interp* interp, Output output);
  ~ZxScriptChannels();
  ZxScriptChannels(const ZxScriptChannels&) = delete;
  ZxScriptChannels& operator=(const ZxScriptChannels&) = delete;

  /// Takes up what a script has printed.
  void write(const char* text, std::size_t length);

private:
  struct Standard {
    int number;
    Tcl_Channel_* before;
    Tcl_Channel_* own;
  };

  Tcl_Interp* m_interp;
  Output m_output;
  std::string m_line;
  Standard m_standards[2];
};
