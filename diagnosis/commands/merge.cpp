#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "common/command_line/options.h"
#include "common/text/bad_use.h"
#include "common/text/complaint.h"
#include "common/text/list.h"
#include "common/text/text.h"
#include "diagnosis/commands/command.h"
#include "diagnosis/commands/run_plan.h"
#include "diagnosis/localization/analysis.h"
#include "diagnosis/record/select.h"
#include "diagnosis/views/compare.h"
#include "diagnosis/views/end_of_run.h"
#include "diagnosis/views/results.h"
#include "harness/rows.h"

namespace diagnosis {
namespace {

struct Options {
  std::vector<std::string> folders;
  std::string out;
  bool replace = false;
};

// What must be the same wherever the parts of one run were run.
std::map<std::string, std::string> ConditionsOf(const RunInfo& info) {
  std::map<std::string, std::string> conditions = {
      {"platform", info.device.platform},
      {"device", info.device.name},
      {"driver version", info.device.driverVersion},
      {"floats", std::to_string(info.device.singleFpConfig)},
      {"version of the suite", info.version}};
  for (const char* option :
       {"seed", "build options", "local size", "repeat", "strict", "strict flakes"}) {
    const auto found = info.options.find(option);
    conditions[option] = found == info.options.end() ? "" : found->second;
  }
  return conditions;
}

// What a baseline does not name is expected to pass.
std::string ExpectedOf(const std::string& row, const std::map<std::string, std::string>& expected) {
  const auto found = expected.find(row);
  return found == expected.end() ? std::string(NameOf(Status::pass)) : found->second;
}

// A part that is replaced by the whole is lost if the whole cannot be written.
void RefuseAPartAsTheWhole(const Options& options) {
  for (const std::string& part : options.folders) {
    std::error_code none;  // there is no such folder yet
    if (std::filesystem::equivalent(part, options.out, none))
      throw text::BadUse(fmt::format("--output: {} is one of the parts", options.out));
  }
}

/// Puts runs together, and keeps what speaks against it.
class Merger {
 public:
  void Add(const NamedRun& part) {
    const RunInfo& info = part.run.info;
    if (first_.empty()) {
      first_ = part.name;
      merged_.info = info;
      merged_.info.selected.clear();
      merged_.info.seconds = 0;
      merged_.info.options.erase("shard");
    }
    const auto conditions = ConditionsOf(merged_.info);
    for (const auto& [name, value] : ConditionsOf(info)) {
      const std::string& other = conditions.at(name);
      if (value != other)
        Conflict(fmt::format("the {} is '{}' in {} and '{}' in {}", name, other, first_, value,
                             part.name));
    }
    for (const ProvenanceDifference& difference :
         DifferencesBetween(merged_.info.provenance, info.provenance)) {
      if (!difference.mayDiffer)
        Conflict(fmt::format("{} is of {} than {}: {} in place of {}", part.name, difference.what,
                             first_, difference.other, difference.one));
    }
    CompareExpected(part);
    TakeShard(part);
    for (const Record& record : part.run.records) Take(record, part.name);
    merged_.info.seconds += info.seconds;
    merged_.info.start = std::min(merged_.info.start, info.start);
    // Of a run that was cut off the end is not known.
    const bool isCutOff = merged_.info.end.empty() || info.end.empty();
    merged_.info.end = isCutOff ? "" : std::max(merged_.info.end, info.end);
    TakePlace(info);
  }

  Run Merged(const std::string& command, const std::vector<std::string>& folders) {
    for (std::size_t number = 1; number <= shards_.size(); ++number)
      if (shards_[number - 1].empty())
        Conflict(fmt::format("none is shard {}/{}", number, shards_.size()));
    if (!conflicts_.empty()) {
      for (std::size_t i = 0; i + 1 < conflicts_.size(); ++i)
        text::Complain("triage", conflicts_[i]);
      throw text::BadUse(conflicts_.back());
    }
    merged_.info.command = command;
    merged_.info.options["merged from"] = text::ShellWords(folders);
    for (auto& [row, record] : records_) {
      merged_.info.selected.push_back(record.row);
      merged_.records.push_back(std::move(record));
    }
    return std::move(merged_);
  }

 private:
  void Conflict(std::string what) {
    // The whole matrix can be in conflict, and says no more than its beginning.
    constexpr std::size_t most = 20;
    if (conflicts_.size() < most) conflicts_.push_back(std::move(what));
  }

  // Where the parts were run is kept of all, each once.
  void TakePlace(const RunInfo& info) {
    Provenance& whole = merged_.info.provenance;
    const Provenance& part = info.provenance;
    text::AddToList(merged_.info.host, info.host);
    if (part.system.empty()) return;
    if (whole.system.empty()) whole = part;
    text::AddToList(whole.system, part.system);
    text::AddToList(whole.processor, part.processor);
    text::AddToList(whole.build, part.build);
    for (const auto& [name, value] : part.environment)
      text::AddToList(whole.environment[name], value);
  }

  void CompareExpected(const NamedRun& part) {
    const std::map<std::string, std::string>& here = part.run.info.expected;
    const std::map<std::string, std::string>& before = merged_.info.expected;
    for (const NamedRunner& row : rows) {
      const std::string name(row.name);
      const std::string one = ExpectedOf(name, before);
      const std::string other = ExpectedOf(name, here);
      if (one != other)
        Conflict(fmt::format("{} is expected to be {} in {} and {} in {}", name, one, first_, other,
                             part.name));
    }
  }

  void TakeShard(const NamedRun& part) {
    const auto shard = part.run.info.options.find("shard");
    if (shard == part.run.info.options.end() || shard->second.empty()) return;
    const auto [number, count] = ShardOf(shard->second);
    if (number == 0)
      return Conflict(fmt::format("{} is of no shard: '{}'", part.name, shard->second));
    if (shards_.empty()) shards_.resize(count);
    if (shards_.size() != count)
      return Conflict(fmt::format("{} is shard {}, and others are of {}", part.name, shard->second,
                                  shards_.size()));
    if (!shards_[number - 1].empty())
      return Conflict(fmt::format("{} and {} are both shard {}", shards_[number - 1], part.name,
                                  shard->second));
    shards_[number - 1] = part.name;
  }

  void Take(const Record& record, const std::string& folder) {
    const std::size_t place = RowCalled(record.row);
    const auto [known, isNew] = records_.emplace(place, record);
    std::string& from = from_[place];
    if (isNew || known->second.ending.kind == Ending::Kind::notRun) {
      known->second = record;
      from = folder;
    } else if (record.ending.kind != Ending::Kind::notRun) {
      Conflict(fmt::format("{} was run in {} and in {}", record.row, from, folder));
    }
  }

  Run merged_;
  std::string first_;
  std::map<std::size_t, Record> records_;    // by the row's place in the matrix
  std::map<std::size_t, std::string> from_;  // the folder of each
  std::vector<std::string> shards_;          // the folder of each
  std::vector<std::string> conflicts_;
};

int Merge(const Options& options, const std::string& command) {
  RefuseAPartAsTheWhole(options);
  Merger merger;
  for (const NamedRun& part : ReadRuns(options.folders, InUse::refused)) merger.Add(part);
  const Run run = merger.Merged(command, options.folders);
  outputs::Folder folder(
      options.out, FilesOfRun(),
      options.replace ? outputs::Folder::Old::replaced : outputs::Folder::Old::refused);
  std::string lines;
  for (const Record& record : run.records) lines += LinesOf(record);
  folder.Write(FilesOfRun().journal, lines);
  folder.Write("run.json", ToJson(run.info));
  const Analysis analysis = AnalysisOf(run, ExpectationsOf(run.info));
  WriteResults(folder, analysis);
  const outputs::Summary summary = EndOfRun(analysis);
  command_line::Print(fmt::format("{}\n{}\n{}", summary.table, summary.result, summary.remarks));
  return summary.isGood ? 0 : 1;
}

void AddTo(CLI::App& app, command_line::Call& call) {
  const auto options = std::make_shared<Options>();
  app.add_option("DIR", options->folders, "Folders that the parts of a run were written into")
      ->required()
      ->check(command_line::NotEmpty());
  app.add_option("-o,--output", options->out, "Folder for the whole")
      ->type_name("DIR")
      ->required()
      ->check(command_line::NotEmpty());
  app.add_flag("--force", options->replace, "Replace results that are there");
  app.footer(
      "The parts are of one device, on the same data and by the same rules, and no row was run in\n"
      "two of them. Where that is not so, or a shard is missing, each conflict is named and "
      "nothing\n"
      "is written. The status is that of the whole.");
  app.callback([options, &call] { call.status = Merge(*options, call.line); });
}

}  // namespace

const command_line::Command commands::merge = {"merge", "Put the parts of a run together", AddTo,
                                               "triage merge part1 part2 part3 -o results"};

}  // namespace diagnosis
