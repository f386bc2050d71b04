#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <utility>

#include "common/command_line/options.h"
#include "common/text/bad_use.h"
#include "diagnosis/commands/ask.h"
#include "diagnosis/commands/command.h"
#include "diagnosis/record/run_folder.h"
#include "diagnosis/views/experiments_of_run.h"
#include "diagnosis/views/opinion_of_run.h"
#include "diagnosis/views/results.h"

namespace diagnosis {
namespace {

struct Options {
  std::string folder;
  RowsOptions pool;
};

int Experiment(const Options& options) {
  // Before the folder is this command's own.
  Run run = OpenRun(options.folder);
  const std::unique_ptr<outputs::Folder> folder = FolderOfRun(options.folder);
  Analysis analysis = AnalysisOf(run, ExpectationsOf(run.info));
  std::size_t asked = 0;
  const workers::PoolEnd end =
      Ask(run, analysis, options.pool, [&folder, &asked](const Record& record) {
        folder->Append(ToJson(record));
        ++asked;
      });
  if (end.kind == workers::PoolEnd::Kind::noDevice) throw text::NothingToRunOn(end.reason);
  if (asked > 0) {
    folder->Sync();
    WriteResults(*folder, analysis);
  }
  const std::string told = ExperimentsOfRun(analysis.suspects);
  command_line::Print(told.empty() ? "There is nothing to ask: no experiment tells more.\n"
                                   : told + OpinionOnRun(analysis));
  if (end.kind == workers::PoolEnd::Kind::interrupted) return 128 + end.signal;
  return end.kind == workers::PoolEnd::Kind::finished ? 0 : 1;
}

void AddTo(CLI::App& app, command_line::Call& call) {
  const auto options = std::make_shared<Options>();
  AddPoolOptions(app, call, options->pool);
  // The data are the run's.
  app.remove_option(app.get_option("--seed"));
  app.add_option("--from", options->folder,
                 "Folder that a run was written into; it gets the answers")
      ->type_name("DIR")
      ->check(command_line::NotEmpty())
      ->required();
  app.footer(
      "A row is run once more with one thing changed, of which the suspects of the run predict\n"
      "different answers. 'triage run' does the same at its end.");
  app.callback([options, &call] { call.status = Experiment(*options); });
}

}  // namespace

const command_line::Command commands::experiment = {
    "experiment", "Ask the device what a run left open", AddTo, "triage experiment --from results"};

}  // namespace diagnosis
