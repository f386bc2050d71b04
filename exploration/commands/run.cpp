#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <limits>
#include <memory>
#include <string>

#include "common/command_line/options.h"
#include "common/text/bad_use.h"
#include "exploration/commands/exploration_run.h"
#include "exploration/views/results.h"

namespace exploration {
namespace {

// "2/8": the second of eight.
void ReadShard(const std::string& text, RunOptions& options) {
  const std::size_t slash = text.find('/');
  const auto whole = command_line::Whole(1, 1'000'000);
  std::string part = text.substr(0, slash);
  std::string parts = slash == std::string::npos ? "" : text.substr(slash + 1);
  if (!whole(part).empty() || !whole(parts).empty() || std::stoull(part) > std::stoull(parts))
    throw CLI::ValidationError("--shard", fmt::format("'{:.40}' is no part of a whole: 2/8 is the "
                                                      "second of eight",
                                                      text));
  options.shard = std::stoull(part);
  options.shards = std::stoull(parts);
}

void AddTo(CLI::App& app, command_line::Call& call) {
  const auto options = std::make_shared<RunOptions>();
  constexpr auto most = std::numeric_limits<std::uint64_t>::max();
  CLI::Option* const programs = app.add_option("--programs", options->programs, "How many programs")
                                    ->type_name("N")
                                    ->check(command_line::Whole(0, most));
  app.add_option("--seconds", options->seconds, "For how long programs are begun")
      ->type_name("S")
      ->check(command_line::Seconds(0, 1e9))
      ->capture_default_str()
      ->excludes(programs);
  app.add_option("--seed", options->seed, "Which programs: a seed's are the same everywhere")
      ->type_name("N")
      ->check(command_line::Whole(0, most))
      ->capture_default_str();
  app.add_option_function<std::string>(
         "--shard", [options](const std::string& text) { ReadShard(text, *options); },
         "Of a seed's programs the Kth and every Nth behind it: runs with 1/4 to 4/4 share them")
      ->type_name("K/N");
  app.add_option("--faults", options->faults, "End with the Nth fault")
      ->type_name("N")
      ->check(command_line::Whole(1, most));
  AddDrawing(app, options->drawing);
  AddWork(app, call, options->work);
  app.add_flag("--customary", options->customary,
               "Show differences in bytes that every compiler keeps and no standard promises; "
               "they are not counted");
  app.add_option("--out", options->folder, "Folder for the results")
      ->type_name("DIR")
      ->check(command_line::NotEmpty());
  CLI::Option* const force =
      app.add_flag("--force", options->replace, "Replace results that are there");
  force->needs(app.get_option("--out"));
  app.footer(
      "What goes wrong is run again, made smaller, and held against the faults that are known: a\n"
      "fault is told as soon as it is told apart. What is under way when the time is over is\n"
      "looked into to its end.\n"
      "\n"
      "Programs that need double or half are left out where the device has none.\n"
      "\n"
      "The results are findings.jsonl, run.json, junit.xml, report.html and, in faults/NAME,\n"
      "program.cl, original.cl, reproducer.c and report.md.");
  app.parse_complete_callback([options] {
    Draw(1, 1, options->drawing);
    if (!options->folder.empty()) RefuseOldResults(options->folder, options->replace);
  });
  app.callback([options, &call] { call.status = Run(*options, call); });
}

}  // namespace

const command_line::Command commands::run = {
    "run", "Run programs, and say which faults the device has", AddTo,
    "explore --programs 1000\n"
    "explore --seconds 600 --seed 7 --out results -j 2\n"
    "explore --only whole-unions,nested-unions --space global\n"
    "explore --compiler 'clang -x cl -cl-std=CL1.2 --target=amdgcn-amd-amdhsa -O2 -c'"};

}  // namespace exploration
