#pragma once

#include "zx/ZxParamBundle.h"
#include "zxalign/ZxAlignControl.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace cli {

/// Something that decides about the result of a run, as text: an input, the method, a setting, an option.
struct RunFact {
  std::string name;
  std::string value;
  std::string shown{}; ///< what sentences call it where that is not its name; decides nothing
  friend bool operator==(const RunFact& a, const RunFact& b)
  {
    return a.name == b.name && a.value == b.value;
  }
};
/// Two runs of equal facts give the same files.
using RunFacts = std::vector<RunFact>;

/// Adds what tells each file from any other: where it really is, size and time of change. Nothing for what is
/// no file.
void addFileFacts(const std::vector<std::string>& files, RunFacts& facts);
/// The value of an option that is a path: the same from every folder. Empty where it is not given.
std::string pathFact(const std::string& path);

/// Empty when the facts are equal and in the same order, else what differs: "iterations is 20 there and 10
/// here".
std::string differenceOf(const RunFacts& there, const RunFacts& here);

/// How far an alignment run has come: what it takes to go on.
struct RunState {
  RunFacts facts;
  std::vector<ZxAlignPairResult> pairs;     ///< that are finished, in their order
  std::vector<ZxAlignTransform> transforms; ///< of all slices, after the last of the pairs
  ZxParamBundle parameters;                 ///< of the input, as the method has left them
  bool changesParameters = false;           ///< the method has changed them
  bool pairsAlone = true;                   ///< no pair has moved slices that were finished before it
};

/// The state as JSON text; numbers read back exactly.
std::string stateText(const RunState& state);
/// The state in a text; nothing when it is damaged or something else.
std::optional<RunState> stateOf(const std::string& text);

} // namespace cli
