#include "diagnosis/views/report.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

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
    Print(page);
  } else {
    WriteReport(options.file, page);
  }
}

void AddTo(CLI::App& app, Call&) {
  const auto options = std::make_shared<Options>();
  app.add_option("DIR", options->folders,
                 "Folder that a run was written into; the first is compared to")
      ->required();
  app.add_option("-o,--output", options->file, "The page; standard output if none is given")
      ->type_name("FILE");
  app.callback([options] { Report(*options); });
}

}  // namespace

const Command commands::report = {"report", "Write a run as a page, or several side by side",
                                  AddTo};

}  // namespace diagnosis
