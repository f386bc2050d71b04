#include "diagnosis/verdict/baseline.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "common/command_line/options.h"
#include "common/text/text.h"
#include "common/text/whole_file.h"
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

std::string TextIn(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void Update(const Options& options) {
  const bool isNew = !std::filesystem::exists(options.file);
  // Read once as every run reads it, for what there is to refuse.
  if (!isNew) ReadBaseline(options.file);
  const Run run = RunOf({}, options.folder, {});
  Expectations expectations;
  expectations.strict = options.strict;
  const Analysis analysis = AnalysisOf(run, expectations);
  const std::string before = isNew ? "test,status\n" : TextIn(options.file);
  const std::string after = Updated(before, analysis.rows);
  if (isNew || after != before) text::WriteWhole(options.file, after);
  command_line::Print(fmt::format("{}: {}\n", text::PrintableLine(options.file),
                                  after == before && !isNew ? "as it was" : "updated"));
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
