#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include "common/text/bad_use.h"
#include "common/text/text.h"
#include "common/workers/worker.h"
#include "diagnosis/commands/command.h"
#include "diagnosis/execution/run_now.h"

namespace diagnosis {

namespace {

constexpr char version[] = "union_triage " SUITE_VERSION;

#define TAKE(name) &commands::name,
constexpr const Command* allCommands[] = {COMMANDS(TAKE)};
#undef TAKE

// Rows without a command in front of them are to be run.
std::vector<std::string> WithCommand(std::vector<std::string> arguments) {
  const auto isCommand = [](const std::string& word) {
    return word == "-h" || word == "--help" || word == "--version" ||
           std::ranges::any_of(allCommands,
                               [&word](const Command* command) { return word == command->name; });
  };
  if (arguments.empty() || !isCommand(arguments.front()))
    arguments.insert(arguments.begin(), "run");
  return arguments;
}

void Run(std::vector<std::string> arguments, Call& call) {
  CLI::App app(
      "Runs the rows of the union conformance suite and says what became of each.\n"
      "Without a command, 'run' is meant: 'triage ROW...' is 'triage run ROW...'.",
      "triage");
  app.set_version_flag("--version", version);
  app.require_subcommand(1);
  app.get_formatter()->column_width(28);
  for (const Command* command : allCommands) {
    CLI::App& added = *app.add_subcommand(command->name, command->description);
    command->addTo(added, call);
    // A command in front of this one wants to know of bad use before it looks for a device.
    if (std::getenv("TRIAGE_ONLY_CHECK") != nullptr) added.callback([] {});
  }

  arguments = WithCommand(std::move(arguments));
  // The library takes them from the back.
  std::ranges::reverse(arguments);
  try {
    app.parse(std::move(arguments));
  } catch (const CLI::CallForHelp&) {
    Print(app.help());
  } catch (const CLI::CallForVersion&) {
    Print(fmt::format("{}\n", version));
  } catch (const CLI::ParseError& error) {
    throw text::BadUse(error.what());
  }
}

int Main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (argc == 2 && arguments.front() == "worker") return WorkerMain();
  try {
    Call call;
    // ./triage stands in the project's root, from where the layers are named, and so must the
    // workers.
    if (const char* folder = std::getenv("TRIAGE_CALLED_FROM")) {
      call.workersFolder = std::filesystem::current_path();
      std::filesystem::current_path(folder);
    }
    call.line = text::ShellWords(std::vector<std::string>(argv, argv + argc));
    if (const char* outer = std::getenv("TRIAGE_CALLED_AS")) call.line = outer;
    Run(arguments, call);
    return call.status;
  } catch (const text::BadUse& refusal) {
    fmt::print(stderr, "triage: {}\n", text::PrintableLine(refusal.what(), 1000));
    return 2;
  } catch (const NothingToRunOn& refusal) {
    fmt::print(stderr, "triage: {}\n", text::PrintableLine(refusal.what(), 1000));
    return 3;
  } catch (const std::exception& error) {
    fmt::print(stderr, "triage: {}\n", text::PrintableLine(error.what(), 1000));
    return 1;
  }
}

}  // namespace

}  // namespace diagnosis

int main(int argc, char** argv) {
  try {
    return diagnosis::Main(argc, argv);
  } catch (...) {
    // There was no memory left for a line on what went wrong.
    return 1;
  }
}
