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
  RowsOptions pool;
};

void RunVariations(const Options& options) {
  std::vector<RowJob> jobs;
  for (const std::size_t row : Select(options.patterns)) {
    for (const Variation& variation : Variations())
      jobs.push_back({.row = row,
                      .buildOptions = variation.buildOptions,
                      .localSize = variation.localSize,
                      .passes = variation.passes,
                      .freshWorker = true});
  }
  command_line::Print(TableOfVariations(RunNow(jobs, options.pool)));
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
