#include "diagnosis/views/report.h"

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "diagnosis/commands/command.h"

namespace diagnosis {

namespace {

std::vector<std::string> folders;
std::string file;

void Report() {
  const std::string page = ReportOf(ReadRuns(folders));
  if (file.empty()) {
    Print(page);
  } else {
    WriteReport(file, page);
  }
}

const Command command(
    "report", "Write a run as a page, or several side by side", [](CLI::App& app) {
      app.add_option("DIR", folders, "Folder that a run was written into; the first is compared to")
          ->required();
      app.add_option("-o,--output", file, "The page; standard output if none is given")
          ->type_name("FILE");
      app.callback(Report);
    });

}  // namespace

}  // namespace diagnosis
