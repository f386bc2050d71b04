#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "diagnosis/commands/command.h"
#include "diagnosis/execution/run_now.h"
#include "diagnosis/localization/analysis.h"
#include "diagnosis/record/select.h"
#include "harness/rows.h"

namespace diagnosis {
namespace {

struct Options {
  std::vector<std::string> patterns;
  std::string folder;
  RowsOptions pool;
};

void TabulateRows(const Options& options) {
  const std::vector<std::size_t> selected = Select(options.patterns);
  const bool all = options.patterns.empty() && !options.folder.empty();
  const Run run = RunOf(all ? std::vector<std::size_t>() : selected, options.folder, options.pool);
  const Analysis analysis = AnalysisOf(run, ExpectationsOf(run.info));
  std::string text = "test,status,opinion,wrong,lanes,ulps,suspects\n";
  for (const std::size_t number : selected) {
    const RowResult* row = analysis.Find(rows[number].name);
    if (row == nullptr) continue;
    const Opinion& opinion = row->opinion;
    std::vector<std::string_view> suspects;
    for (const NamedSuspect& suspect : analysis.suspects.Of(row->record->row))
      suspects.emplace_back(suspect.name);
    fmt::format_to(std::back_inserter(text), "{},{},{},{},{},{},{}\n", row->record->row,
                   NameOf(row->verdict), NameOf(opinion.verdict), opinion.wrong.size(),
                   opinion.lanes, opinion.greatestUlps, fmt::join(suspects, " "));
  }
  command_line::Print(text);
}

void AddTo(CLI::App& app, command_line::Call& call) {
  const auto options = std::make_shared<Options>();
  AddRows(app, options->patterns);
  AddPoolOptions(app, call, options->pool);
  AddFrom(app, options->folder,
          "Folder that a run was written into; without it, the rows are run now");
  app.footer(
      "The columns: test, status, opinion (right, wrong or unseen), wrong lanes, lanes "
      "judged,\n"
      "the greatest distance in units in the last place, and suspects.");
  app.parse_complete_callback([options] { Select(options->patterns); });
  app.callback([options] { TabulateRows(*options); });
}

}  // namespace

const command_line::Command commands::table = {
    "table", "Print status, second opinion and suspects as comma-separated values, a row a line",
    AddTo, "triage table --from results"};

}  // namespace diagnosis
