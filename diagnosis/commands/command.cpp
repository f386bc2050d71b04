#include "diagnosis/commands/command.h"

#include <wordexp.h>

#include <CLI/CLI.hpp>
#include <cstdint>
#include <limits>

#include "common/command_line/options.h"
#include "diagnosis/record/select.h"

namespace diagnosis {

namespace {

// The words of a launcher, by the shell's rules of quoting.
std::vector<std::string> WordsOf(const std::string& line) {
  wordexp_t expansion{};
  if (wordexp(line.c_str(), &expansion, WRDE_NOCMD) != 0)
    throw CLI::ValidationError("--launcher", "cannot be split into words: " + line);
  std::vector<std::string> words(expansion.we_wordv, expansion.we_wordv + expansion.we_wordc);
  wordfree(&expansion);
  if (words.empty()) throw CLI::ValidationError("--launcher", "names no command");
  return words;
}

}  // namespace

void AddRows(CLI::App& app, std::vector<std::string>& patterns) {
  app.add_option("ROW", patterns,
                 "Names of rows, or globs such as 'multiply_*' and '*_vector3_?'; all if none")
      ->each([](const std::string& pattern) { Select({pattern}); })
      ->type_name("");
}

void AddFrom(CLI::App& app, std::string& folder, const char* description) {
  CLI::Option* const from = app.add_option("--from", folder, description)
                                ->type_name("DIR")
                                ->check(command_line::NotEmpty());
  // They say how rows are run, and none is.
  for (const char* option :
       {"--jobs", "--timeout", "--isolate", "--launcher", "--program", "--seed"})
    from->excludes(app.get_option(option));
}

void AddPoolOptions(CLI::App& app, const command_line::Call& call, RowsOptions& options) {
  options.folder = call.workersFolder;
  app.add_option("-j,--jobs", options.workers, "Workers side by side")
      ->type_name("N")
      ->check(command_line::Whole(1, 256))
      ->capture_default_str();
  app.add_option("--timeout", options.timeoutSeconds, "Seconds that a row may take")
      ->type_name("S")
      ->check(command_line::Seconds(0.001, 1e6))
      ->capture_default_str();
  app.add_flag("--isolate", options.isolate, "A fresh worker for every row");
  app.add_option_function<std::string>(
         "--launcher", [&options](const std::string& line) { options.launcher = WordsOf(line); },
         "Words before the worker's command, for instance 'ssh board'")
      ->type_name("CMD");
  app.add_option("--program", options.program, "This program where the launcher finds it")
      ->type_name("PATH")
      ->check(command_line::NotEmpty());
  app.add_option("--seed", options.seed, "The rows' data; 1 is the suite's own")
      ->type_name("N")
      ->check(command_line::Whole(0, std::numeric_limits<std::uint32_t>::max()))
      ->capture_default_str();
}

}  // namespace diagnosis
