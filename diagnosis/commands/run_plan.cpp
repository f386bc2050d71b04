#include "diagnosis/commands/run_plan.h"

#include <fmt/format.h>
#include <sys/utsname.h>

#include <algorithm>
#include <charconv>
#include <ctime>
#include <random>
#include <utility>

#include "common/text/bad_use.h"
#include "common/text/text.h"
#include "diagnosis/localization/analysis.h"
#include "diagnosis/record/run_folder.h"
#include "harness/rows.h"

namespace diagnosis {
namespace {

std::string Host() {
  utsname name{};
  uname(&name);
  return fmt::format("{} {} {}", name.sysname, name.release, name.machine);
}

std::string YesOrNo(bool is) { return is ? "yes" : "no"; }

/// The rows that did not pass there, or were not reached.
std::vector<std::string> DidNotPass(const Run& run) {
  std::vector<std::string> rows;
  const Expectations expectations = ExpectationsOf(run.info);
  for (const Record& record : run.records) {
    const Status verdict = ResultOf(record, run.info.device, expectations).verdict;
    if (verdict != Status::pass && verdict != Status::skip) rows.push_back(record.row);
  }
  return rows;
}

std::string OptionOf(const RunInfo& info, const char* name) {
  const auto found = info.options.find(name);
  return found == info.options.end() ? std::string() : found->second;
}

/// What stands there, or `otherwise` if that is no number.
template <class Number>
Number NumberOf(const RunInfo& info, const char* name, Number otherwise) {
  const std::string text = OptionOf(info, name);
  std::from_chars(text.data(), text.data() + text.size(), otherwise);
  return otherwise;
}

/// The options of an earlier run that decide on the data, in place of the caller's.
void TakeData(const RunInfo& info, RunOptions& options) {
  options.pool.seed = NumberOf(info, "seed", options.pool.seed);
  options.localSize = NumberOf(info, "local size", options.localSize);
  options.buildOptions = OptionOf(info, "build options");
}

/// And those that decide on what is run and expected.
void TakeRest(const RunInfo& info, RunOptions& options) {
  const Expectations expectations = ExpectationsOf(info);
  options.baseline = expectations.baseline;
  options.strict = expectations.strict;
  options.flakesFail = expectations.flakesFail;
  options.baselineFile = OptionOf(info, "baseline");
  options.repeat = static_cast<int>(RunsOfEach(info));
  if (!OptionOf(info, "shuffle").empty())
    options.shuffle = NumberOf(info, "shuffle", std::uint64_t{0});
}

/// A row that the earlier run never had has not passed there.
void RefuseRowsNotIn(const Run& run, const RunOptions& options,
                     const std::vector<std::string>& selected) {
  const auto isIn = [&run](const std::string& row) {
    return std::ranges::find(run.records, row, &Record::row) != run.records.end();
  };
  for (const std::string& row : options.patterns)
    if (std::ranges::find(selected, row) != selected.end() && !isIn(row))
      throw text::BadUse(options.rerun + " has no record of " + row);
  if (std::ranges::none_of(selected, isIn))
    throw text::BadUse(options.rerun + " has no record of any of these rows");
}

std::vector<std::string> SelectedBy(const RunOptions& options, const Run* failed) {
  std::vector<std::string> selected;
  for (const std::size_t row : Select(options.patterns)) selected.emplace_back(rows[row].name);
  if (failed != nullptr) {
    RefuseRowsNotIn(*failed, options, selected);
    const std::vector<std::string> wanted = DidNotPass(*failed);
    std::erase_if(selected, [&wanted](const std::string& row) {
      return std::ranges::find(wanted, row) == wanted.end();
    });
    if (selected.empty())
      throw text::BadUse(fmt::format("there is nothing to run: all passed in {}", options.rerun));
  }
  if (options.shard.empty()) return selected;
  // Neighbours take about the same time, so each part gets some of all.
  const auto [number, count] = ShardOf(options.shard);
  std::vector<std::string> part;
  for (std::size_t i = number - 1; i < selected.size(); i += count) part.push_back(selected[i]);
  if (part.empty())
    throw text::BadUse(fmt::format("shard {} of {} is empty", options.shard,
                                   text::Counted(selected.size(), "row")));
  return part;
}

/// What may be otherwise where a run is gone on with.
void SetHow(const RowsOptions& pool, RunInfo& info) {
  info.options["isolate"] = YesOrNo(pool.isolate);
  info.options["jobs"] = std::to_string(pool.workers);
  info.options["launcher"] = text::ShellWords(pool.launcher);
  info.options["share context"] = YesOrNo(pool.shareContext);
  info.options["program"] = pool.program;
  info.options["timeout"] = fmt::format("{}", pool.timeoutSeconds);
}

RunInfo InfoOf(const RunOptions& options, const command_line::Call& call,
               std::vector<std::string> selected) {
  RunInfo info;
  info.host = Host();
  info.version = SUITE_VERSION;
  info.command = call.line;
  info.invocation = call.invocation;
  info.options = {{"baseline", options.baselineFile},
                  {"build options", options.buildOptions},
                  {"local size", std::to_string(options.localSize)},
                  {"repeat", std::to_string(options.repeat)},
                  {"rerun of", options.rerun},
                  {"seed", std::to_string(options.pool.seed)},
                  {"shard", options.shard},
                  {"shuffle", options.shuffle ? std::to_string(*options.shuffle) : ""},
                  {"skips", options.skipsFile},
                  {"strict", YesOrNo(options.strict)},
                  {"strict flakes", YesOrNo(options.flakesFail)}};
  SetHow(options.pool, info);
  for (const auto& [row, status] : options.baseline) info.expected[row] = NameOf(status);
  info.start = Now();
  info.selected = std::move(selected);
  return info;
}

Record NotRun(const std::string& row) {
  Record record;
  record.row = row;
  record.ending.reason = "nothing became known of it";
  return record;
}

/// The runs of the rows that are still to be made, pass by pass or in an order that the seed alone
/// decides.
std::vector<RowJob> JobsOf(const Run& run, const RunOptions& options) {
  std::vector<RowJob> jobs;
  for (std::size_t pass = 0; pass < static_cast<std::size_t>(options.repeat); ++pass) {
    for (const Record& record : run.records) {
      if (record.ending.kind == Ending::Kind::skipped) continue;
      if (pass < RunsOf(record)) continue;
      RowJob& job = jobs.emplace_back();
      job.row = RowCalled(record.row);
      job.buildOptions = options.buildOptions;
      job.localSize = options.localSize;
    }
  }
  if (!options.shuffle) return jobs;
  // The library's own shuffle is another one in every library.
  std::mt19937_64 random(*options.shuffle);
  for (std::size_t left = jobs.size(); left > 1; --left)
    std::swap(jobs[left - 1], jobs[random() % left]);
  return jobs;
}

}  // namespace

RunPlan PlanOf(const RunOptions& given, const command_line::Call& call) {
  RunOptions options = given;
  RunPlan plan;
  if (!options.resumed.empty()) {
    plan.run = OpenRun(options.resumed, InUse::isOurs);
    TakeData(plan.run.info, options);
    TakeRest(plan.run.info, options);
    for (Record& record : plan.run.records)
      if (record.ending.kind == Ending::Kind::notRun) record = NotRun(record.row);
    SetHow(options.pool, plan.run.info);
    plan.run.info.options["resumed"] = "yes";
    plan.run.info.end.clear();
  } else {
    std::optional<Run> failed;
    if (!options.rerun.empty()) {
      failed = OpenRun(options.rerun, InUse::refused);
      TakeData(failed->info, options);
      // What failed by the second opinion is judged by it again.
      options.strict = options.strict || ExpectationsOf(failed->info).strict;
    }
    plan.run.info = InfoOf(options, call, SelectedBy(options, failed ? &*failed : nullptr));
    for (const std::string& row : plan.run.info.selected) {
      Record& record = plan.run.records.emplace_back(NotRun(row));
      const auto skip = options.skips.find(row);
      if (skip == options.skips.end()) continue;
      record.seed = options.pool.seed;
      record.ending = {Ending::Kind::skipped, 0, "skipped by " + skip->second};
    }
  }
  plan.expectations = ExpectationsOf(plan.run.info);
  plan.isAgainstBaseline = !options.baselineFile.empty() && options.repeat == 1;
  plan.pool = options.pool;
  plan.runsOfEach = options.repeat;
  plan.jobs = JobsOf(plan.run, options);
  return plan;
}

Shard ShardOf(const std::string& text) {
  // More parts than there will ever be rows are a slip, and take a place each where they are
  // merged.
  constexpr std::size_t most = 100'000;
  Shard shard;
  const char* const end = text.data() + text.size();
  const auto [slash, error] = std::from_chars(text.data(), end, shard.number);
  if (error != std::errc() || slash == end || *slash != '/') return {};
  const auto [rest, otherError] = std::from_chars(slash + 1, end, shard.count);
  const bool isNumber = otherError == std::errc() && rest == end;
  return isNumber && shard.number <= shard.count && shard.count <= most ? shard : Shard();
}

void CheckShard(const std::string& shard) {
  if (ShardOf(shard).number == 0)
    throw text::BadUse(fmt::format("--shard: '{}' is not K/N, part K of N", shard));
}

std::string Now() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  gmtime_r(&now, &parts);
  char text[sizeof "2000-01-01T00:00:00Z"];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
  return text;
}

}  // namespace diagnosis
