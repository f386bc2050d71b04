#include <CLI/CLI.hpp>
#include <cstdint>
#include <limits>
#include <memory>

#include "common/command_line/options.h"
#include "diagnosis/commands/command.h"
#include "diagnosis/commands/triage_run.h"
#include "diagnosis/verdict/baseline_update.h"
#include "diagnosis/views/results.h"

namespace diagnosis {
namespace {

void AddTo(CLI::App& app, command_line::Call& call) {
  const auto options = std::make_shared<RunOptions>();
  AddRows(app, options->patterns);
  AddPoolOptions(app, call, options->pool);
  app.add_option("--build-options", options->buildOptions,
                 "For clBuildProgram; the suite gives none")
      ->type_name("TEXT");
  app.add_option("--local-size", options->localSize,
                 "For clEnqueueNDRangeKernel; the suite leaves it to the driver")
      ->type_name("N")
      ->check(command_line::Whole(1, std::numeric_limits<std::uint64_t>::max()));
  options->pool.shareContext = true;
  app.add_flag("--share-context,!--no-share-context", options->pool.shareContext,
               "The rows of a worker share one context; a row that is not right there is run again "
               "in one of its own; on unless it is --no-share-context");
  app.add_option("--repeat", options->repeat, "Runs of each row; one that differs is a flake")
      ->type_name("N")
      ->check(command_line::Whole(1, 100'000));
  app.add_option("--shuffle", options->shuffle, "Runs the rows in a random order, by this seed")
      ->type_name("SEED")
      ->check(command_line::Whole(0, std::numeric_limits<std::uint32_t>::max()));
  app.add_option("--stop-after", options->stopAfter, "Ends the run after so many failures")
      ->type_name("N")
      ->check(command_line::Whole(1, 100'000));
  app.add_option("--shard", options->shard, "Part K of N parts of the rows, all of about a size")
      ->type_name("K/N")
      ->check(command_line::NotEmpty());
  app.add_option("--skips", options->skipsFile, "Rows not to be run, a name or glob a line")
      ->type_name("FILE")
      ->check(command_line::NotEmpty());
  app.add_option("--baseline", options->baselineFile, "Expected results, 'test,status' a line")
      ->type_name("FILE")
      ->check(command_line::NotEmpty());
  CLI::Option* const update =
      app.add_flag("--update-baseline", options->updateBaseline,
                   "Changes the baseline, as little as can be, so that the run ended as it says");
  update->needs(app.get_option("--baseline"));
  app.add_flag("--strict", options->strict,
               "The second opinion counts: a row that passed is a failure if it is wrong by "
               "OpenCL's rules, and one that failed is none if it is right");
  app.add_flag("--strict-flakes", options->flakesFail, "A flake is a failure");
  app.add_option("--out", options->folder, "Folder for the results")
      ->type_name("DIR")
      ->check(command_line::NotEmpty());
  app.add_flag("--force", options->replace, "Replace results that are there");
  CLI::Option* const resume =
      app.add_option(
             "--resume", options->resumed,
             "Goes on with the run in this folder: rows without a record are run, as it says")
          ->type_name("DIR")
          ->check(command_line::NotEmpty());
  CLI::Option* const rerun =
      app.add_option("--rerun", options->rerun,
                     "Runs what did not pass in the run of this folder, on the same data")
          ->type_name("DIR")
          ->check(command_line::NotEmpty());
  // What the earlier run has decided.
  for (const char* option : {"--seed", "--build-options", "--local-size"}) {
    resume->excludes(app.get_option(option));
    rerun->excludes(app.get_option(option));
  }
  for (const char* option :
       {"ROW", "--repeat", "--shuffle", "--shard", "--skips", "--baseline", "--update-baseline",
        "--strict", "--strict-flakes", "--out", "--force", "--rerun"})
    resume->excludes(app.get_option(option));
  app.add_flag("!--no-experiments", options->experiments,
               "Does not run rows once more with one thing changed where the run leaves open which "
               "of several suspects it is");
  app.add_flag("--ktap", options->ktap, "KTAP on standard output");
  app.footer(
      "With a baseline, what is not as expected is run once more on the same data, and is a flake\n"
      "if it then ends otherwise. Rows that the baseline does not name are expected to pass.\n"
      "With --update-baseline too the run is judged by the baseline as it was; a run that is\n"
      "interrupted changes nothing.\n"
      "\n"
      "The results are results.csv, failures.csv (a baseline for later runs), junit.xml,\n"
      "records.jsonl, run.json and report.html. While a run goes only records.jsonl grows; the\n"
      "others are made at its end, and by 'triage report DIR'.");
  app.parse_complete_callback([options] {
    if (!options->shard.empty()) CheckShard(options->shard);
    if (!options->skipsFile.empty()) options->skips = ReadSkips(options->skipsFile);
    // One that is to be made need not be there.
    if (!options->baselineFile.empty() &&
        (!options->updateBaseline || IsBaselineThere(options->baselineFile)))
      options->baseline = ReadBaseline(options->baselineFile);
    if (!options->folder.empty())
      outputs::RefuseOld(options->folder, FilesOfRun(), options->replace);
  });
  app.callback([options, &call] { call.status = RunTriage(*options, call); });
}

}  // namespace

const command_line::Command commands::run = {
    "run", "Run rows and say what became of each", AddTo,
    "triage 'multiply_*'\n"
    "triage --out results --baseline baselines/rusticl-llvmpipe.csv -j 2\n"
    "triage --launcher 'ssh board' --program /opt/union_triage --timeout 20"};

}  // namespace diagnosis
