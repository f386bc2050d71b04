#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
}

// A program with commands, as main hands it over: arguments, help, manual, statuses.

namespace command_line {

/// One call of the program, as the command that was asked for gets it.
struct Call {
  std::string line;                     // how the program was called, for a shell
  std::vector<std::string> invocation;  // the words with which another call of it begins
  std::string workersFolder;            // where workers start; empty for the caller's own
  int status = 0;                       // with which the program ends once the command has returned
};

/// A command is a file that says what its options are and what it does:
///
///   void AddTo(CLI::App& app, Call& call) {
///     const auto folder = std::make_shared<std::string>();
///     app.add_option("DIR", *folder, "Folder that a run was written into")->required();
///     app.callback([folder, &call] { call.status = Report(*folder); });
///   }
///
///   const Command report = {"report", "Write a run as a page", AddTo, "triage report results"};
///
/// What the callback throws is told in one line: text::BadUse ends with 2,
/// text::NothingToRunOn with 3, text::CannotWrite with 4, any other exception with 1. What can be
/// refused before a device is looked for belongs into app.parse_complete_callback.
struct Command {
  const char* name;
  const char* description;
  void (*addTo)(CLI::App& app, Call& call);
  const char* examples = "";  // a line each, for help and manual
};

/// A part of the manual beside the commands.
struct Section {
  const char* title;      // "EXIT STATUS"
  std::string text;       // paragraphs with an empty line between; what is indented stays as it is
  bool isInHelp = false;  // in the help of the program and of its usual command too
};

/// The word that, alone, makes the program a worker, and what it then does.
struct WorkerWord {
  const char* word;
  int (*main)();
};

struct Program {
  const char* name;         // in front of its lines on standard error: "triage"
  const char* binary;       // "union_triage"
  const char* version;      // "1.0.0"
  const char* purpose;      // one line without an end, for the manual's head
  const char* description;  // for help
  std::span<const Command* const> commands;
  const char* usualCommand;  // that is meant where none is named
  std::span<const WorkerWord> workers;
  std::span<const Section> sections;
};

/// The whole life of the program. Returns its status.
///
/// The command in front of it says in the environment, with the name in capitals before each: in
/// TRIAGE_CALLED_FROM from which folder it was called (it runs in the one that workers start in),
/// in TRIAGE_CALLED_AS how, in TRIAGE_INVOCATION with which words a call of the same kind begins,
/// each on a line of its own, in TRIAGE_HELP what its help has beside this program's, and with
/// TRIAGE_ONLY_CHECK that arguments are to be checked and nothing done.
int Main(const Program& program, int argc, char** argv) noexcept;

/// Writes on standard output. Throws text::CannotWrite.
void Print(std::string_view text);

}  // namespace command_line
