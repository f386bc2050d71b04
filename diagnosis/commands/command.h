#pragma once

#include <string>
#include <vector>

#include "common/workers/pool.h"

namespace CLI {
class App;
}

namespace diagnosis {

/// One call of the program, as main hands it to the command that was asked for.
struct Call {
  std::string line;           // how the program was called, for a shell
  std::string workersFolder;  // PoolOptions::folder for that caller
  int status = 0;             // with which the program ends once the command has returned
};

/// A command of union_triage. Each is the file of its name in this folder, which says what its
/// options are and what it does:
///
///   void AddTo(CLI::App& app, Call& call) {
///     struct Options {
///       std::string folder;
///     };
///     const auto options = std::make_shared<Options>();
///     app.add_option("DIR", options->folder, "Folder that a run was written into")->required();
///     app.callback([options, &call] { call.status = Report(options->folder); });
///   }
///
///   const Command report = {"report", "Write a run as a page", AddTo};
///
/// What the callback throws is told in one line: BadUse ends with 2, NothingToRunOn with 3, any
/// other exception with 1. What can be refused before a device is looked for belongs into
/// app.parse_complete_callback.
struct Command {
  const char* name;
  const char* description;
  void (*addTo)(CLI::App& app, Call& call);
};

/// COMMANDS(DO) does DO(name) for each, in the order in which help tells of them.
#define COMMANDS(DO) \
  DO(compare)        \
  DO(explain)        \
  DO(list)           \
  DO(report)         \
  DO(reproduce)      \
  DO(run)            \
  DO(source)         \
  DO(table)          \
  DO(vary)

#define DECLARE(name) extern const Command name;
namespace commands {
COMMANDS(DECLARE)
}
#undef DECLARE

/// `ROW...`, names or globs, for Select; refuses those that match nothing.
void AddRows(CLI::App& app, std::vector<std::string>& patterns);

/// -j, --timeout, --isolate, --launcher, --program and --seed, for whatever runs rows.
void AddPoolOptions(CLI::App& app, const Call& call, PoolOptions& options);

/// Writes on standard output. Throws std::runtime_error if it cannot be written.
void Print(const std::string& text);

}  // namespace diagnosis
