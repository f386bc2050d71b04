#include "diagnosis/views/compare.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "common/command_line/options.h"
#include "diagnosis/commands/command.h"
#include "diagnosis/views/as_json.h"

namespace diagnosis {
namespace {

struct Options {
  std::string before;
  std::string after;
  bool json = false;
};

int CompareRuns(const Options& options) {
  const std::vector<NamedRun> runs = ReadRuns({options.before, options.after});
  const std::vector<ComparedRow> compared = Compare(runs);
  command_line::Print(options.json ? JsonOf(runs, compared) : DifferencesOf(runs, compared));
  const bool isWorse =
      std::ranges::find(compared, Comparison::worse, &ComparedRow::comparison) != compared.end();
  return isWorse ? 1 : 0;
}

void AddTo(CLI::App& app, command_line::Call& call) {
  const auto options = std::make_shared<Options>();
  app.add_option("A", options->before, "Folder that the first run was written into")
      ->required()
      ->check(command_line::NotEmpty());
  app.add_option("B", options->after, "Folder that the second run was written into")
      ->required()
      ->check(command_line::NotEmpty());
  AddJson(app, options->json);
  app.callback([options, &call] { call.status = CompareRuns(*options); });
}

}  // namespace

const command_line::Command commands::compare = {
    "compare", "Say what differs between two runs; ends with 1 if a row is worse in the second",
    AddTo, "triage compare before after"};

}  // namespace diagnosis
