#include "diagnosis/views/report.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "common/command_line/options.h"
#include "common/text/bad_use.h"
#include "common/text/whole_file.h"
#include "diagnosis/commands/command.h"
#include "diagnosis/verdict/account.h"
#include "diagnosis/views/results.h"

namespace diagnosis {
namespace {

struct Options {
  std::vector<std::string> folders;
  std::string file;
};

// All that follows from a run, beside it.
void MakeAgain(const std::string& path) {
  const std::unique_ptr<outputs::Folder> folder = FolderOfRun(path);
  const std::vector<NamedRun> runs = ReadRuns({path}, InUse::isOurs);
  const Run& run = runs.front().run;
  const Analysis analysis = AnalysisOf(run, ExpectationsOf(run.info));
  WriteResults(*folder, analysis);
  command_line::Print(SentenceOf(analysis.totals) + "\n");
}

void Report(const Options& options) {
  if (options.folders.size() == 1 && options.file.empty())
    return MakeAgain(options.folders.front());
  const std::string page = ReportOf(ReadRuns(options.folders));
  if (options.file.empty() || options.file == "-") return command_line::Print(page);
  text::WriteWhole(options.file, page);
}

void AddTo(CLI::App& app, command_line::Call&) {
  const auto options = std::make_shared<Options>();
  app.add_option("DIR", options->folders,
                 "Folder that a run was written into; the first is compared to")
      ->required()
      ->check(command_line::NotEmpty());
  app.add_option("-o,--output", options->file, "The page; standard output if it is -")
      ->type_name("FILE")
      ->check(command_line::NotEmpty());
  app.footer(
      "Of one folder, and without -o, all is made again that follows from its records, also of a\n"
      "run that was cut off: results.csv, failures.csv, junit.xml and report.html. Of several\n"
      "folders the page goes to standard output.");
  app.callback([options] { Report(*options); });
}

}  // namespace

const command_line::Command commands::report = {
    "report", "Write a run as a page, or several side by side", AddTo,
    "triage report results\n"
    "triage report results -o page.html\n"
    "triage report before after -o compared.html"};

}  // namespace diagnosis
