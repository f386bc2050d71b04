#pragma once

#include <string>
#include <vector>

#include "common/command_line/program.h"
#include "diagnosis/execution/run_rows.h"

namespace CLI {
class Option;
}

namespace diagnosis {

/// COMMANDS(DO) does DO(name) for each, in the order in which help tells of them. A command is the
/// file of its name in this folder.
#define COMMANDS(DO) \
  DO(baseline)       \
  DO(compare)        \
  DO(experiment)     \
  DO(explain)        \
  DO(list)           \
  DO(merge)          \
  DO(report)         \
  DO(reproduce)      \
  DO(run)            \
  DO(source)         \
  DO(suspects)       \
  DO(table)          \
  DO(vary)

#define DECLARE(name) extern const command_line::Command name;
namespace commands {
COMMANDS(DECLARE)
}
#undef DECLARE

/// `ROW...`, names or globs, for Select; refuses those that match nothing.
void AddRows(CLI::App& app, std::vector<std::string>& patterns);

/// -j, --timeout, --isolate, --launcher, --program and --seed, for whatever runs rows.
void AddPoolOptions(CLI::App& app, command_line::Call& call, RowsOptions& options);

/// --from, for what reads a run that was written; behind AddPoolOptions, which it excludes.
void AddFrom(CLI::App& app, std::string& folder, const char* description);

/// --json, for what scripts read too. Returns the option.
CLI::Option* AddJson(CLI::App& app, bool& json);

}  // namespace diagnosis
