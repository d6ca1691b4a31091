// Before everything of Qt, whose macro "emit" the scheduler's headers cannot stand.
#include <oneapi/tbb/global_control.h>

#include "Program.h"

#include "AlignCommand.h"
#include "Console.h"
#include "Failure.h"
#include "HelpFormatter.h"
#include "InfoCommand.h"
#include "MethodsCommand.h"
#include "PhantomCommand.h"
#include "QualityCommand.h"
#include "ResampleCommand.h"
#include "TransformsCommand.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>
#include <new>
#include <optional>

namespace cli {
namespace {

/// What every command has.
struct CommonOptions {
  int threads = 0; ///< 0: all cores
  bool quiet = false;
};

struct Entry {
  const char* name;
  const char* help;
  std::unique_ptr<Command> command;
};

std::vector<Entry> makeCommands()
{
  std::vector<Entry> commands;
  commands.push_back({"align", "Align every slice to its neighbour and write the aligned volume",
                      std::make_unique<AlignCommand>()});
  commands.push_back(
      {"resample", "Make the aligned volume from a stored alignment", std::make_unique<ResampleCommand>()});
  commands.push_back(
      {"quality", "Print how well neighbouring slices match", std::make_unique<QualityCommand>()});
  commands.push_back({"info", "Print what a volume file holds", std::make_unique<InfoCommand>()});
  commands.push_back({"transforms", "Print the alignment stored in a volume, or write it as a table",
                      std::make_unique<TransformsCommand>()});
  commands.push_back(
      {"methods", "List the automatic methods, plug-ins included", std::make_unique<MethodsCommand>()});
  commands.push_back(
      {"phantom", "Make a stack of slices with known displacement", std::make_unique<PhantomCommand>()});
  return commands;
}

void declareCommon(CLI::App& options, CommonOptions& common)
{
  options
      .add_option("--threads", common.threads,
                  "Number of threads (default: one for every core); the result does not depend on it")
      ->check(CLI::Range(1, 1024).description(""))
      ->type_name("N");
  options.add_flag("--quiet", common.quiet, "Print results and errors only");
}

void say(const std::string& sentence) { std::fprintf(stderr, "zxalign: %s\n", sentence.c_str()); }

/// Runs a command at the boundary of the program: nothing thrown passes it.
int runGuarded(Command& command, const CommonOptions& common)
{
  std::optional<oneapi::tbb::global_control> limit;
  if (common.threads > 0)
    limit.emplace(oneapi::tbb::global_control::max_allowed_parallelism,
                  static_cast<std::size_t>(common.threads));
  try {
    Console console(common.quiet ? Console::Verbosity::Quiet : Console::Verbosity::Normal);
    command.run(console);
    console.remarks();
    return Success;
  } catch (const Stopped& stopped) {
    say(stopped.what());
    return Interrupted;
  } catch (const io::Interrupted&) {
    const std::string doing = ZxWorkArea::getTheWorkArea()->getProgressText();
    say(doing.empty() ? "Stopped; nothing was written." : "Stopped (" + doing + "); nothing was written.");
    return Interrupted;
  } catch (const std::bad_alloc&) {
    say("There is not enough memory.");
  } catch (const std::exception& error) {
    say(error.what());
  }
  return Failed;
}

/// Help and version go to standard output; anything else that the parser throws is a wrong argument.
int endParsing(const CLI::App& program, const CLI::ParseError& error)
{
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success))
    return program.exit(error) == 0 && std::fflush(stdout) == 0 ? Success : Failed;
  const auto used = program.get_subcommands();
  say(std::string(error.what()) + " (see zxalign " + (used.empty() ? "" : used.front()->get_name() + " ") +
      "--help)");
  return Failed;
}

/// The name of an option or argument with an empty value, which is more often a script's unset variable than
/// what somebody means; empty when there is none.
std::string emptyOption(const CLI::App& command)
{
  for (const CLI::Option* option : command.get_options())
    for (const std::string& value : option->results())
      if (value.empty()) return option->get_name();
  return {};
}

} // namespace

int runProgram(int argc, char** argv)
{
  CLI::App program("Aligns the slices of an image stack.", "zxalign");
  program.set_version_flag("--version", std::string("zxalign ") + ZXALIGN_VERSION);
  program.formatter(std::make_shared<HelpFormatter>());
  program.require_subcommand(1);
  CommonOptions common;
  const std::vector<Entry> commands = makeCommands();
  for (const Entry& entry : commands) {
    CLI::App* options = program.add_subcommand(entry.name, entry.help);
    entry.command->declare(*options);
    declareCommon(*options, common);
  }
  program.footer("zxalign COMMAND --help describes a command with its options, units and defaults.");
  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return endParsing(program, error);
  }
  for (const Entry& entry : commands) {
    if (!program.got_subcommand(entry.name)) continue;
    const std::string empty = emptyOption(*program.get_subcommand(entry.name));
    if (empty.empty()) return runGuarded(*entry.command, common);
    say("The value of " + empty + " is empty.");
  }
  return Failed;
}

} // namespace cli
