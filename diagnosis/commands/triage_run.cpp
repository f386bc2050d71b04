#include "diagnosis/commands/triage_run.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "common/outputs/reporter.h"
#include "common/text/bad_use.h"
#include "common/text/complaint.h"
#include "common/text/text.h"
#include "diagnosis/commands/ask.h"
#include "diagnosis/localization/analysis.h"
#include "diagnosis/record/record.h"
#include "diagnosis/verdict/account.h"
#include "diagnosis/verdict/baseline_update.h"
#include "diagnosis/views/cases.h"
#include "diagnosis/views/end_of_run.h"
#include "diagnosis/views/results.h"
#include "harness/rows.h"

namespace diagnosis {
namespace {

using Clock = std::chrono::steady_clock;

outputs::Console StandardOutput() {
  outputs::Console console;
  console.write = command_line::Print;
  console.clock = [] {
    return std::chrono::duration<double>(Clock::now().time_since_epoch()).count();
  };
  const char* terminal = std::getenv("TERM");
  const char* noColour = std::getenv("NO_COLOR");
  console.isTerminal =
      isatty(STDOUT_FILENO) != 0 && terminal != nullptr && std::string_view(terminal) != "dumb";
  console.colour = console.isTerminal && (noColour == nullptr || *noColour == '\0');
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
    console.columns = size.ws_col;
  return console;
}

std::string HeadingOf(const Device& device) {
  if (device.platform.empty() && device.name.empty()) return "";  // none was seen
  return fmt::format("{} on {}, driver version {}", text::PrintableLine(device.name),
                     text::PrintableLine(device.platform),
                     text::PrintableLine(device.driverVersion));
}

std::string TellApart(const Device& device) {
  return fmt::format("{}, floats {:#x}", HeadingOf(device), device.singleFpConfig);
}

void Complain(std::string_view line) { text::Complain("triage", line); }

/// Something that the run goes on without once it fails, which is said then and shows in the
/// status.
class Dispensable {
 public:
  template <class Function>
  void Try(Function function) {
    if (failed_) return;
    try {
      function();
    } catch (const std::exception& error) {
      failed_ = true;
      Complain(error.what());
    }
  }
  bool Failed() const { return failed_; }

 private:
  bool failed_ = false;
};

/// Enough rows have not ended as expected.
class Enough : public std::exception {};

/// A row of the run.
struct Slot {
  std::optional<RowResult> result;  // once it has ended
  bool isOver = false;              // what became of it is final, and told
};

/// A run from its plan to the status. What stands behind it must not move: the pool calls back.
class TriageRun {
 public:
  TriageRun(const RunOptions& options, std::unique_ptr<outputs::Folder> folder, RunPlan plan)
      : options_(options),
        plan_(std::move(plan)),
        run_(plan_.run),
        slots_(run_.records.size()),
        reporter_(options.ktap ? outputs::KtapReporter(StandardOutput())
                               : outputs::ProgressReporter(StandardOutput())),
        folder_(std::move(folder)) {
    if (folder_ == nullptr) return;
    if (!options.resumed.empty()) KeepWhatIsGood();
    folder_->Write("run.json", ToJson(run_.info));
  }
  TriageRun(const TriageRun&) = delete;
  TriageRun& operator=(const TriageRun&) = delete;

  int Run() {
    workers::PoolEnd end;
    try {
      end = Do(plan_.jobs);
      isSilent_ = end.kind == workers::PoolEnd::Kind::noDevice;
      if (!hasBegun_) Begin(run_.info.device, run_.info.provenance);
      if (end.kind == workers::PoolEnd::Kind::finished && !again_.empty()) {
        std::vector<RowJob> jobs;
        for (const std::size_t place : again_) jobs.push_back(JobAgain(place));
        end = Do(jobs);
      }
    } catch (const Enough&) {
      const std::string reason =
          "stopped after " +
          text::Counted(static_cast<std::uint64_t>(options_.stopAfter), "failure");
      for (Record& record : run_.records)
        if (record.ending.kind == Ending::Kind::notRun) record.ending.reason = reason;
    }
    return Finish(end);
  }

 private:
  // Of the journal of a run that is gone on with.
  void KeepWhatIsGood() {
    std::string lines;
    for (const Record& record : run_.records)
      if (record.ending.kind != Ending::Kind::notRun) lines += LinesOf(record);
    folder_->Write(FilesOfRun().journal, lines);
  }

  RowJob JobAgain(std::size_t place) const {
    const Record& record = run_.records[place];
    RowJob job;
    job.row = RowCalled(record.row);
    job.buildOptions = record.buildOptions;
    job.localSize = record.localSize;
    job.freshWorker = true;
    return job;
  }

  workers::PoolEnd Do(const std::vector<RowJob>& jobs) {
    RowsListener listener;
    listener.device = [this](const Device& device, const Provenance& provenance) {
      Begin(device, provenance);
    };
    listener.started = [this](const RowJob& job) {
      const std::string row(rows[job.row].name);
      Report([&row](outputs::Reporter& reporter) { reporter.Started(row); });
    };
    listener.ended = [this](const RowJob&, Record record) { Ended(std::move(record)); };
    listener.isRight = [this](const Record& record) {
      const RowResult result = ResultOf(record, run_.info.device, plan_.expectations);
      return result.status == Status::pass && result.opinion.verdict == Opinion::Verdict::right;
    };
    listener.tick = [this] { Report([](outputs::Reporter& reporter) { reporter.Tick(); }); };
    return jobs.empty() ? workers::PoolEnd() : RunRows(jobs, plan_.pool, listener);
  }

  template <class Function>
  void Write(Function function) {
    if (folder_ != nullptr) writing_.Try([this, &function] { function(*folder_); });
  }

  template <class Function>
  void Report(Function function) {
    if (hasBegun_ && !isSilent_) reporting_.Try([this, &function] { function(*reporter_); });
  }

  // A run that is gone on with is the same run only by the same driver, behind the same layers.
  void TakeProvenance(const Provenance& provenance) {
    Provenance& known = run_.info.provenance;
    for (const ProvenanceDifference& difference : DifferencesBetween(known, provenance)) {
      const std::string line =
          fmt::format("this is {} than in {}: {} in place of {}", difference.what, options_.resumed,
                      difference.other, difference.one);
      if (!difference.mayDiffer) throw text::BadUse(line);
      Complain(line);
    }
    known = provenance;
  }

  // Until the device is known, or that there is none, nothing is said.
  void Begin(const Device& device, const Provenance& provenance) {
    if (std::exchange(hasBegun_, true)) return;
    Device& known = run_.info.device;
    if (!options_.resumed.empty() && !known.name.empty() && !IsSame(known, device))
      throw text::BadUse(fmt::format("the run in {} was on another device: {} in place of {}",
                                     options_.resumed, TellApart(known), TellApart(device)));
    known = device;
    TakeProvenance(provenance);
    Write([this](outputs::Folder& folder) { folder.Write("run.json", ToJson(run_.info)); });
    std::vector<std::size_t> ended;
    for (std::size_t place = 0; place < slots_.size(); ++place)
      if (run_.records[place].ending.kind != Ending::Kind::notRun) ended.push_back(place);
    Report([this, &ended](outputs::Reporter& reporter) {
      reporter.Begin({.heading = HeadingOf(run_.info.device),
                      .cases = slots_.size(),
                      .runs = plan_.runsOfEach > 1 ? plan_.jobs.size() + ended.size() : 0});
    });
    for (const std::size_t place : ended) {
      const Record& record = run_.records[place];
      if (record.ending.kind == Ending::Kind::skipped && options_.resumed.empty())
        Write([&record](outputs::Folder& folder) { folder.Append(ToJson(record)); });
      slots_[place].result = ResultOf(record, device, plan_.expectations);
      Judge(place);
    }
  }

  void Ended(Record record) {
    const auto place = static_cast<std::size_t>(std::ranges::find(run_.info.selected, record.row) -
                                                run_.info.selected.begin());
    std::optional<RowResult>& result = slots_.at(place).result;
    Record& first = run_.records[place];
    if (!hasBegun_) {
      first.ending.reason = record.ending.reason;  // why there is no device, or no worker
      return;
    }
    // Another run that was not reached tells nothing.
    if (!result || record.ending.kind != Ending::Kind::notRun)
      Write([&record](outputs::Folder& folder) { folder.Append(ToJson(record)); });
    if (!result) {
      first = std::move(record);
      result = ResultOf(first, run_.info.device, plan_.expectations);
    } else {
      first.again.push_back(std::move(record));
      TakeLastRun(*result, run_.info.device, plan_.expectations);
    }
    Judge(place);
    if (options_.stopAfter == 0) return;
    if (result->asExpected || first.ending.kind == Ending::Kind::notRun) {
      failed_.erase(place);
    } else {
      failed_.insert(place);
    }
    if (failed_.size() == static_cast<std::size_t>(options_.stopAfter)) throw Enough();
  }

  // Tells what a row came to, and whether it is to be run again.
  void Judge(std::size_t place) {
    const RowResult& result = *slots_[place].result;
    const std::size_t runs = 1 + result.record->again.size();
    const bool isRun = result.status != Status::skip && result.status != Status::missing;
    bool again = isRun && runs < static_cast<std::size_t>(plan_.runsOfEach);
    if (plan_.isAgainstBaseline && isRun && !result.asExpected && runs == 1) {
      again_.push_back(place);
      again = true;
    }
    Tell(place, again);
  }

  void Tell(std::size_t place, bool again) {
    slots_[place].isOver = !again;
    outputs::Case one = CaseOf(*slots_[place].result);
    if (!again)
      TakeAsCutShort(one, *slots_[place].result, static_cast<std::size_t>(plan_.runsOfEach));
    Report([&one, again](outputs::Reporter& reporter) { reporter.Ended(one, again); });
  }

  // Nothing of what the rows came to changes by it.
  workers::PoolEnd AskAbout(Analysis& analysis) {
    return Ask(run_, analysis, plan_.pool, [this](const Record& record) {
      Write([&record](outputs::Folder& folder) { folder.Append(ToJson(record)); });
    });
  }

  // What the slots hold, whatever ended the run.
  std::vector<RowResult> Results() {
    std::vector<RowResult> results;
    results.reserve(slots_.size());
    for (std::size_t place = 0; place < slots_.size(); ++place) {
      std::optional<RowResult>& result = slots_[place].result;
      if (!result) {
        const Record& record = run_.records[place];
        Write([&record](outputs::Folder& folder) { folder.Append(ToJson(record)); });
        result = ResultOf(record, run_.info.device, plan_.expectations);
      }
      if (!slots_[place].isOver) Tell(place, false);
      results.push_back(std::move(*result));
    }
    return results;
  }

  int Finish(workers::PoolEnd end) {
    run_.info.end = Now();
    Analysis analysis = AnalysisOf(run_, Results(), plan_.expectations.strict);
    const bool isWhole =
        end.kind == workers::PoolEnd::Kind::finished && Incomplete(analysis.totals).empty();
    if (options_.experiments && isWhole) end = AskAbout(analysis);
    run_.info.end = Now();
    run_.info.seconds += std::chrono::duration<double>(Clock::now() - begun_).count();
    Write([&](outputs::Folder& folder) {
      folder.Sync();
      folder.Write("run.json", ToJson(run_.info));
      WriteResults(folder, analysis);
    });
    if (isSilent_) Complain(end.reason);
    outputs::Summary summary = EndOfRun(analysis);
    if (writing_.Failed()) {
      summary.result = "What became of the rows is not written, or not wholly.";
      summary.isGood = false;
      summary.remarks.clear();
    }
    Report([&summary](outputs::Reporter& reporter) { reporter.End(summary); });
    const bool isInterrupted = end.kind == workers::PoolEnd::Kind::interrupted;
    if (options_.updateBaseline && !isInterrupted && !isSilent_) MendBaseline(analysis.rows);
    if (isInterrupted) {
      const std::string incomplete = Incomplete(analysis.totals);
      Complain(fmt::format("interrupted by SIG{}{}{}", sigabbrev_np(end.signal),
                           incomplete.empty() ? "" : "; incomplete: ", incomplete));
      return 128 + end.signal;
    }
    if (writing_.Failed() || reporting_.Failed()) return 4;
    if (isSilent_) return 3;
    return summary.isGood ? 0 : 1;
  }

  // Standard output may be for a machine.
  void MendBaseline(const std::vector<RowResult>& results) {
    writing_.Try([&] {
      const bool isUpdated = UpdateBaseline(options_.baselineFile, results);
      Complain(fmt::format("{}: {}", options_.baselineFile, isUpdated ? "updated" : "as it was"));
    });
  }

  const RunOptions& options_;
  RunPlan plan_;
  diagnosis::Run& run_;      // that of the plan
  std::vector<Slot> slots_;  // of its rows, in their order
  std::unique_ptr<outputs::Reporter> reporter_;
  std::unique_ptr<outputs::Folder> folder_;  // none if nothing is written
  Dispensable writing_;
  Dispensable reporting_;

  Clock::time_point begun_ = Clock::now();
  bool hasBegun_ = false;
  bool isSilent_ = false;           // there is no device
  std::set<std::size_t> failed_;    // places of rows that have not ended as expected in this run
  std::vector<std::size_t> again_;  // places of rows to be run once more
};

}  // namespace

int RunTriage(const RunOptions& options, const command_line::Call& call) {
  if (!options.resumed.empty()) {
    std::unique_ptr<outputs::Folder> folder = FolderOfRun(options.resumed);
    return TriageRun(options, std::move(folder), PlanOf(options, call)).Run();
  }
  RunPlan plan = PlanOf(options, call);
  using Old = outputs::Folder::Old;
  std::unique_ptr<outputs::Folder> folder;
  if (!options.folder.empty())
    folder = std::make_unique<outputs::Folder>(options.folder, FilesOfRun(),
                                               options.replace ? Old::replaced : Old::refused);
  return TriageRun(options, std::move(folder), std::move(plan)).Run();
}

}  // namespace diagnosis
