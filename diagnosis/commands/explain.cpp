#include "diagnosis/views/explain.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "diagnosis/commands/command.h"
#include "diagnosis/commands/not_run.h"
#include "diagnosis/execution/run_now.h"
#include "diagnosis/localization/analysis.h"
#include "diagnosis/record/select.h"
#include "diagnosis/verdict/account.h"
#include "diagnosis/views/as_json.h"
#include "harness/rows.h"

namespace diagnosis {
namespace {

struct Options {
  std::vector<std::string> patterns;
  std::string folder;
  bool allLanes = false;
  bool json = false;
  RowsOptions pool;
};

// What the row came to in the run, in the ledger's words.
std::string VerdictOn(const RowResult& row) {
  const bool isOverruled = row.detail.empty() && row.verdict != row.status;
  const std::string& words = isOverruled ? row.remark : row.detail;
  return std::string(NameOf(row.verdict)) + (words.empty() ? "" : ": " + words);
}

void ExplainRows(const Options& options) {
  const std::vector<std::size_t> selected = Select(options.patterns);
  const bool named = !options.patterns.empty();
  const bool fromFolder = !options.folder.empty();
  const Run run = RunOf(named || !fromFolder ? selected : std::vector<std::size_t>(),
                        options.folder, options.pool);
  const Suspects suspects = AnalysisOf(run, {}).suspects;
  const Analysis analysis = AnalysisOf(run, ExpectationsOf(run.info));
  const std::size_t mostOthers = options.allLanes ? std::numeric_limits<std::size_t>::max() : 40;
  std::string text;
  std::vector<Explanation> explanations;
  const Record* notRun = nullptr;
  for (const std::size_t row : selected) {
    const auto record = std::ranges::find(run.records, rows[row].name, &Record::row);
    if (record == run.records.end()) continue;
    if ((named || !fromFolder) && !WasRun(*record)) {
      notRun = &*record;
      continue;
    }
    Explanation explanation = Explain(*record, run.info.device, suspects);
    const RowResult& result = *analysis.Find(record->row);
    const bool isFlake = result.verdict == Status::flake;
    if (!named && !isFlake && explanation.category == Category::passedRight) continue;
    explanation.status = VerdictOn(result);
    if (options.json) {
      explanations.push_back(std::move(explanation));
      continue;
    }
    if (!text.empty()) text += '\n';
    text += TextOf(explanation, mostOthers);
  }
  if (text.empty() && notRun == nullptr) {
    const std::string incomplete = Incomplete(analysis.totals);
    text = "All rows passed and are right" +
           (incomplete.empty() ? "" : "; incomplete: " + incomplete) + ".\n";
  }
  command_line::Print(options.json ? JsonOf(explanations) : text);
  if (notRun != nullptr) RefuseRowNotRun(*notRun, options.folder);
}

void AddTo(CLI::App& app, command_line::Call& call) {
  const auto options = std::make_shared<Options>();
  AddRows(app, options->patterns);
  app.add_flag("--all", options->allLanes, "Every wrong lane, not the first ones of a row");
  AddJson(app, options->json);
  AddPoolOptions(app, call, options->pool);
  AddFrom(app, options->folder,
          "Folder that a run was written into; without it, the rows are run now");
  app.footer("Without a row, every row that is not passed and right is explained.");
  app.parse_complete_callback([options] { Select(options->patterns); });
  app.callback([options] { ExplainRows(*options); });
}

}  // namespace

const command_line::Command commands::explain = {
    "explain", "Say how wrong answers came about", AddTo,
    "triage explain --from results multiply_union_arrays_4\n"
    "triage explain --simulated 'copy_*_3'"};

}  // namespace diagnosis
