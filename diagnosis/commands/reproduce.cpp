#include "diagnosis/views/reproduce.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string>

#include "common/command_line/options.h"
#include "common/text/bad_use.h"
#include "common/text/whole_file.h"
#include "diagnosis/commands/command.h"
#include "diagnosis/commands/not_run.h"
#include "diagnosis/execution/run_now.h"
#include "diagnosis/localization/analysis.h"
#include "diagnosis/record/select.h"
#include "harness/rows.h"

namespace diagnosis {
namespace {

struct Options {
  std::string row;
  std::string folder;
  std::string file;
  bool anyway = false;
  RowsOptions pool;
};

void WriteReproducer(const Options& options) {
  const std::size_t row = RowCalled(options.row);
  const Run run = RunOf({row}, options.folder, options.pool);
  const auto record = std::ranges::find(run.records, options.row, &Record::row);
  if (!WasRun(*record)) RefuseRowNotRun(*record, options.folder);
  const Analysis analysis = AnalysisOf(run, {});
  const Category category = analysis.Find(options.row)->category;
  if (!options.anyway && (category == Category::passedRight || category == Category::passedUnseen))
    throw text::BadUse(fmt::format("{}: {}, so there is nothing to reproduce; --anyway writes it",
                                   options.row, TraitsOf(category).name));
  const bool isPrinted = options.file.empty() || options.file == "-";
  const std::string program = ReproducerOf(*record, run.info.device, analysis.suspects,
                                           isPrinted ? std::string() : options.file);
  if (isPrinted) return command_line::Print(program);
  text::WriteWhole(options.file, program);
}

void AddTo(CLI::App& app, command_line::Call& call) {
  const auto options = std::make_shared<Options>();
  app.add_option("ROW", options->row, "Name of a row")->required();
  app.add_option("-o", options->file, "File to write; standard output if none is given")
      ->type_name("FILE")
      ->check(command_line::NotEmpty());
  app.add_flag("--anyway", options->anyway, "Of a row that passed and is right, too");
  AddPoolOptions(app, call, options->pool);
  AddFrom(app, options->folder,
          "Folder that a run was written into; without it, the row is run now");
  app.footer(
      "The program needs CL/cl.h and -lOpenCL, and ends with 0 if the device is right, 1 if "
      "not,\n2 if a call fails or the device is of another kind than the answers are for.");
  app.parse_complete_callback([options] { RowCalled(options->row); });
  app.callback([options] { WriteReproducer(*options); });
}

}  // namespace

const command_line::Command commands::reproduce = {
    "reproduce", "Write a C program that shows by itself what was seen in a row", AddTo,
    "triage reproduce multiply_union_arrays_4 --from results -o fault.c"};

}  // namespace diagnosis
