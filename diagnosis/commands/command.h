#pragma once

#include <string>
#include <vector>

#include "common/workers/pool.h"

namespace CLI {
class App;
}

namespace diagnosis {

/// A command of union_triage. Each is one file of commands/, which defines its options and what it
/// does, and makes one object of this class:
///
///   void Run(const std::string& folder);  // throws BadUse (2), any other exception is 1
///
///   const Command command("report", "Write a run as a page", [](CLI::App& app) {
///     static std::string folder;
///     app.add_option("DIR", folder, "Folder that a run was written into")->required();
///     app.callback([] { Run(folder); });
///   });
///
/// A callback that returns ends the program with 0; EndWith gives it another status. What can be
/// refused before a device is looked for belongs into app.parse_complete_callback.
class Command {
 public:
  Command(const char* name, const char* description, void (*addTo)(CLI::App& app));

  const char* name;
  const char* description;
  void (*addTo)(CLI::App& app);
};

/// The status with which the program ends once the command has returned.
void EndWith(int status);

/// `ROW...`, names or globs, for Select; refuses those that match nothing.
void AddRows(CLI::App& app, std::vector<std::string>& patterns);

/// -j, --timeout, --isolate, --launcher, --program and --seed, for whatever runs rows.
void AddPoolOptions(CLI::App& app, PoolOptions& options);

/// Writes on standard output. Throws std::runtime_error if it cannot be written.
void Print(const std::string& text);

/// How the program was called, as a line for a shell.
const std::string& CalledAs();

/// PoolOptions::folder for the caller that there is.
const std::string& WorkersFolder();

}  // namespace diagnosis
