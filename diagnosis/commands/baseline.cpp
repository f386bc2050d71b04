#include "diagnosis/verdict/baseline.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "common/command_line/options.h"
#include "common/text/text.h"
#include "diagnosis/commands/command.h"
#include "diagnosis/execution/run_now.h"
#include "diagnosis/localization/analysis.h"
#include "diagnosis/verdict/baseline_update.h"

namespace diagnosis {
namespace {

struct Options {
  std::string file;
  std::string folder;
  bool strict = false;
};

void Update(const Options& options) {
  // What there is to refuse in it comes before what there is in the run.
  if (IsBaselineThere(options.file)) ReadBaseline(options.file);
  const Run run = RunOf({}, options.folder, {});
  Expectations expectations;
  expectations.strict = options.strict;
  const bool isUpdated = UpdateBaseline(options.file, AnalysisOf(run, expectations).rows);
  command_line::Print(fmt::format("{}: {}\n", text::PrintableLine(options.file),
                                  isUpdated ? "updated" : "as it was"));
}

void AddTo(CLI::App& app, command_line::Call&) {
  const auto options = std::make_shared<Options>();
  app.add_option("FILE", options->file, "The baseline; made if it is not there")
      ->required()
      ->check(command_line::NotEmpty());
  app.add_option("--from", options->folder, "Folder that a run was written into")
      ->type_name("DIR")
      ->required()
      ->check(command_line::NotEmpty());
  app.add_flag("--strict", options->strict,
               "As --strict has it: the second opinion's verdict where it has one");
  app.footer(
      "As few lines change as can be: the status on a row's own line, a line that is needed no\n"
      "longer unless it has a comment, and new lines at the end. A line is 'test,status', where "
      "the\n"
      "test is a name or a glob, or '!GLOB', which takes rows out again; the last line that names "
      "a\n"
      "row counts.");
  app.callback([options] { Update(*options); });
}

}  // namespace

const command_line::Command commands::baseline = {
    "baseline", "Change a baseline, as little as can be, so that a run ended as it says", AddTo,
    "triage baseline ours.csv --from results"};

}  // namespace diagnosis
