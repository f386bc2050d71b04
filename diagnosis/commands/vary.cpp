#include "diagnosis/views/vary.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "diagnosis/commands/command.h"
#include "diagnosis/execution/run_now.h"
#include "diagnosis/record/select.h"

namespace diagnosis {
namespace {

struct Options {
  std::vector<std::string> patterns;
  PoolOptions pool;
};

void RunVariations(const Options& options) {
  std::vector<Job> jobs;
  for (const std::size_t row : Select(options.patterns)) {
    const std::vector<Job> variations = VariationsOf(row);
    jobs.insert(jobs.end(), variations.begin(), variations.end());
  }
  command_line::Print(TableOfVariations(jobs, RunNow(jobs, options.pool)));
}

void AddTo(CLI::App& app, command_line::Call& call) {
  const auto options = std::make_shared<Options>();
  app.add_option("ROW", options->patterns,
                 "Names of rows, or globs such as 'multiply_*' and '*_vector3_?'")
      ->required();
  AddPoolOptions(app, call, options->pool);
  app.parse_complete_callback([options] { Select(options->patterns); });
  app.callback([options] { RunVariations(*options); });
}

}  // namespace

const command_line::Command commands::vary = {
    "vary", "Run rows as they are, with other build options and with other local sizes", AddTo,
    "triage vary add_union_arrays_4"};

}  // namespace diagnosis
