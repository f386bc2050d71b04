#include "diagnosis/views/vary.h"

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "diagnosis/commands/command.h"
#include "diagnosis/execution/run_now.h"
#include "diagnosis/record/select.h"

namespace diagnosis {

namespace {

struct {
  std::vector<std::string> patterns;
  PoolOptions pool;
} options;

void RunVariations() {
  std::vector<Job> jobs;
  for (const std::size_t row : Select(options.patterns)) {
    const std::vector<Job> variations = VariationsOf(row);
    jobs.insert(jobs.end(), variations.begin(), variations.end());
  }
  Print(TableOfVariations(jobs, RunNow(jobs, options.pool)));
}

const Command command("vary",
                      "Run rows as they are, with other build options and with other local sizes",
                      [](CLI::App& app) {
                        app.add_option(
                               "ROW", options.patterns,
                               "Names of rows, or globs such as 'multiply_*' and '*_vector3_?'")
                            ->required();
                        AddPoolOptions(app, options.pool);
                        app.parse_complete_callback([] { Select(options.patterns); });
                        app.callback(RunVariations);
                      });

}  // namespace

}  // namespace diagnosis
