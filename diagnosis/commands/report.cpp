#include "diagnosis/views/report.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "common/command_line/options.h"
#include "diagnosis/commands/command.h"

namespace diagnosis {
namespace {

struct Options {
  std::vector<std::string> folders;
  std::string file;
};

void Report(const Options& options) {
  const std::string page = ReportOf(ReadRuns(options.folders));
  if (options.file.empty()) {
    command_line::Print(page);
  } else {
    WriteReport(options.file, page);
  }
}

void AddTo(CLI::App& app, command_line::Call&) {
  const auto options = std::make_shared<Options>();
  app.add_option("DIR", options->folders,
                 "Folder that a run was written into; the first is compared to")
      ->required()
      ->check(command_line::NotEmpty());
  app.add_option("-o,--output", options->file, "The page; standard output if none is given")
      ->type_name("FILE")
      ->check(command_line::NotEmpty());
  app.callback([options] { Report(*options); });
}

}  // namespace

const command_line::Command commands::report = {
    "report", "Write a run as a page, or several side by side", AddTo,
    "triage report results -o page.html\n"
    "triage report before after -o compared.html"};

}  // namespace diagnosis
