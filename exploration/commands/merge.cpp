#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "common/command_line/options.h"
#include "common/text/bad_use.h"
#include "common/text/whole_file.h"
#include "exploration/commands/command.h"
#include "exploration/record/run_record.h"
#include "exploration/views/results.h"

namespace exploration {
namespace {

namespace fs = std::filesystem;

struct MergeOptions {
  std::vector<std::string> folders;
  std::string out;
  bool replace = false;
};

std::string TextOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw text::BadUse("cannot read " + path);
  return {std::istreambuf_iterator<char>(file), {}};
}

int Merge(const MergeOptions& options) {
  std::vector<RunRecord> runs;
  for (const std::string& folder : options.folders) {
    std::error_code ignored;
    if (fs::equivalent(folder, options.out, ignored))
      throw text::BadUse(folder + " cannot be merged into itself");
    runs.push_back(RunFromFile(folder + "/run.json"));
  }
  const RunRecord merged = Merged(runs);
  Results results(options.out, options.replace);
  for (const std::string& folder : options.folders) {
    std::ifstream findings(folder + "/findings.jsonl");
    for (std::string line; std::getline(findings, line);) results.Append(line);
  }
  for (const FaultRecord& fault : merged.faults) {
    // Those of the run that has found it first.
    for (std::size_t i = 0; i < runs.size(); ++i) {
      const std::string from = options.folders[i] + "/faults/" + fault.name + "/";
      std::error_code ignored;
      if (!fs::exists(from, ignored)) continue;
      const std::string to = results.FolderOf(fault.name) + "/";
      for (const char* file : filesOfFault) text::WriteWhole(to + file, TextOf(from + file));
      break;
    }
  }
  results.Finish(merged);
  command_line::Print(TotalsOf(merged) + "\n");
  return merged.wrong > 0 || merged.notRun > 0 ? 1 : 0;
}

void AddTo(CLI::App& app, command_line::Call& call) {
  const auto options = std::make_shared<MergeOptions>();
  app.add_option("DIR", options->folders, "Folders that runs were written into")
      ->required()
      ->type_name("");
  app.add_option("-o,--out", options->out, "Folder for all of them")
      ->required()
      ->type_name("DIR")
      ->check(command_line::NotEmpty());
  app.add_flag("--force", options->replace, "Replace results that are there");
  app.parse_complete_callback([options] { RefuseOldResults(options->out, options->replace); });
  app.callback([options, &call] { call.status = Merge(*options); });
}

}  // namespace

const command_line::Command commands::merge = {
    "merge", "Make one of several runs, of other seeds or shards, with their faults told apart",
    AddTo, "explore merge monday tuesday -o week"};

}  // namespace exploration
