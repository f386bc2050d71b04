#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "common/command_line/options.h"
#include "common/text/bad_use.h"
#include "common/text/text.h"
#include "common/text/whole_file.h"
#include "exploration/commands/command.h"
#include "exploration/record/run_record.h"
#include "exploration/record/share.h"
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

// A run's folder, of which nothing is missing.
struct Part {
  std::string folder;
  RunRecord run;
  std::vector<Share> shares;
  std::vector<std::string> findings;
};

Part PartIn(const std::string& folder) {
  Part part;
  part.folder = folder;
  const std::string path = folder + "/run.json";
  part.run = RunFromFile(path);
  if (!part.run.IsFinished())
    throw text::BadUse(fmt::format("{} is of a run that did not finish: {}", path,
                                   text::PrintableLine(part.run.ending, 200)));
  try {
    part.shares = SharesOf(part.run);
  } catch (const text::BadUse& error) {
    throw text::BadUse(fmt::format("{} is not a run's: {}", path, error.what()));
  }
  part.findings = FindingLinesOf(part.run, folder + "/findings.jsonl");
  return part;
}

// A program that is in both would be counted twice, and its name would mean two.
void RefuseOverlap(const Part& one, const Part& other) {
  std::error_code ignored;
  if (fs::equivalent(one.folder, other.folder, ignored))
    throw text::BadUse(fmt::format("{} and {} are the same folder", one.folder, other.folder));
  for (const Share& share : one.shares)
    for (const Share& same : other.shares)
      if (Overlap(share, same))
        throw text::BadUse(fmt::format("{} and {} have programs in common: {} and {}", one.folder,
                                       other.folder, Told(share), Told(same)));
}

int Merge(const MergeOptions& options, const command_line::Call& call) {
  std::vector<Part> parts;
  std::vector<RunRecord> runs;
  for (const std::string& folder : options.folders) {
    std::error_code ignored;
    if (fs::equivalent(folder, options.out, ignored))
      throw text::BadUse(folder + " cannot be merged into itself");
    Part part = PartIn(folder);
    for (const Part& former : parts) RefuseOverlap(former, part);
    runs.push_back(part.run);
    parts.push_back(std::move(part));
  }
  RunRecord merged = Merged(runs);
  merged.command = call.line;
  Results results(options.out, options.replace);
  for (const Part& part : parts)
    for (const std::string& line : part.findings) results.Append(line);
  for (const FaultRecord& fault : merged.faults) {
    // Those of the run that has found it first.
    for (std::size_t i = 0; i < runs.size(); ++i) {
      const std::string from = options.folders[i] + "/faults/" + fault.name + "/";
      std::error_code ignored;
      if (!fs::exists(from, ignored)) continue;
      const std::string to = results.FolderOf(fault.name) + "/";
      for (const char* file : filesOfFault)
        if (fs::exists(from + file, ignored)) text::WriteWhole(to + file, TextOf(from + file));
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
  app.callback([options, &call] { call.status = Merge(*options, call); });
}

}  // namespace

const command_line::Command commands::merge = {
    "merge", "Make one of several runs, of other seeds or shards, with their faults told apart",
    AddTo, "explore merge monday tuesday -o week"};

}  // namespace exploration
