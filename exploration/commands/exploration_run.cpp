#include "exploration/commands/exploration_run.h"

#include <fmt/format.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "common/text/bad_use.h"
#include "common/text/complaint.h"
#include "common/text/text.h"
#include "exploration/features/features.h"
#include "exploration/record/run_record.h"
#include "exploration/views/results.h"
#include "exploration/views/told.h"

namespace exploration {
namespace {

using Clock = std::chrono::steady_clock;

std::string Now() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  gmtime_r(&now, &parts);
  char text[sizeof "2000-01-01T00:00:00Z"];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
  return text;
}

std::string Host() {
  utsname name{};
  uname(&name);
  return fmt::format("{} {} {}", name.sysname, name.release, name.machine);
}

/// A line at the bottom of a terminal that says how far the run is; nothing elsewhere.
class ProgressLine {
 public:
  ProgressLine() {
    const char* terminal = std::getenv("TERM");
    isTerminal_ =
        isatty(STDOUT_FILENO) != 0 && terminal != nullptr && std::string_view(terminal) != "dumb";
  }

  void Draw(const RunRecord& run, double seconds) {
    if (!isTerminal_) return;
    std::string line =
        fmt::format("{}, {:.0f} a second, {} wrong, {}", text::Counted(run.Programs(), "program"),
                    static_cast<double>(run.Programs()) / std::max(seconds, 1.0), run.wrong,
                    text::Counted(run.faults.size(), "fault"));
    if (run.open > 0) line += fmt::format(", {} to be looked into", run.open);
    command_line::Print("\r\033[K" + line);
    isDrawn_ = true;
  }

  /// Writes in its place.
  void Print(const std::string& text) {
    command_line::Print((std::exchange(isDrawn_, false) ? "\r\033[K" : "") + text);
  }

 private:
  bool isTerminal_ = false;
  bool isDrawn_ = false;
};

/// A run from its options to its status. The campaign calls back.
class ExplorationRun {
 public:
  ExplorationRun(const RunOptions& options, const command_line::Call& call)
      : options_(options), number_(options.shard) {
    std::vector<std::string> features;
    for (const Feature* feature : Features()) features.emplace_back(feature->name);
    run_.pairs = PairCounts(std::move(features));
    run_.version = SUITE_VERSION;
    run_.command = call.line;
    run_.host = Host();
    run_.start = Now();
    run_.ending = "not finished";
    run_.options = {{"build options", options.work.buildOptions},
                    {"drawing", DrawingWords(options.drawing)},
                    {"jobs", std::to_string(options.work.pool.workers)},
                    {"seed", std::to_string(options.seed)},
                    {"shard", fmt::format("{}/{}", options.shard, options.shards)},
                    {"timeout", fmt::format("{}", options.work.seconds)}};
    if (!options.work.compiler.empty()) run_.options["compiler"] = options.work.compiler;
    if (!options.folder.empty()) results_.emplace(options.folder, options.replace);
  }
  ExplorationRun(const ExplorationRun&) = delete;
  ExplorationRun& operator=(const ExplorationRun&) = delete;

  int Run() {
    Write([this] { results_->Begin(run_); });
    CampaignListener listener;
    listener.device = [this](const Device& device) { Begin(device); };
    listener.next = [this] { return Next(); };
    listener.ended = [this](const Candidate& one, const Outcome& outcome) {
      return Ended(one, outcome);
    };
    listener.concluded = [this](const Finding& finding, const Fault* fault) {
      Concluded(finding, fault);
    };
    listener.tick = [this] { progress_.Draw(run_, SecondsSince(start_)); };
    listener.isOver = [this] { return run_.faults.size() >= options_.faults; };
    return Finish(Explore(options_.work, listener));
  }

 private:
  static double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
  }

  // What cannot be written is told once. The run goes on, and all of it is still told.
  template <class Function>
  void Write(Function function) {
    if (!results_ || !cannotWrite_.empty()) return;
    try {
      function();
    } catch (const text::CannotWrite& error) {
      cannotWrite_ = text::PrintableLine(error.what(), 1000);
      text::Complain("explore", cannotWrite_);
    }
  }

  void Begin(const Device& device) {
    run_.device = device;
    start_ = Clock::now();
  }

  std::optional<Candidate> Next() {
    const bool isCounted = options_.programs != RunOptions().programs;
    while (isCounted ? begun_ < options_.programs : SecondsSince(start_) < options_.seconds) {
      Candidate drawn = Drawn({options_.seed, number_}, options_.drawing);
      number_ += options_.shards;
      if (MissingOn(run_.device, drawn.runnable).empty()) {
        ++begun_;
        return drawn;
      }
      ++run_.leftOut;
      // Where every program needs what there isn't, there would be no end.
      if (run_.leftOut > 10'000 && begun_ == 0)
        throw text::BadUse("the device has neither double nor half for any of these programs");
    }
    return std::nullopt;
  }

  bool Ended(const Candidate& one, const Outcome& outcome) {
    const std::string name = NameOf(one.program);
    if (outcome.kind == Outcome::Kind::notRun) {
      ++run_.notRun;
      progress_.Print(fmt::format("{} was not run: {}\n", name, text::PrintableLine(outcome.text)));
      return false;
    }
    run_.pairs.Add(one.runnable.features, outcome.IsFinding());
    if (options_.customary) TellCustomary(name, one.runnable, outcome);
    if (!outcome.IsFinding()) {
      ++run_.right;
      return false;
    }
    ++run_.wrong;
    ++run_.open;
    constexpr std::size_t most = 16;
    Write([&] {
      results_->Found({name, std::string(NameOf(outcome.kind)), Told(outcome),
                       one.runnable.features, text::Printable(outcome.text),
                       DifferenceLines(one.runnable, outcome, most)});
    });
    return true;
  }

  void TellCustomary(const std::string& name, const RunnableProgram& program,
                     const Outcome& outcome) {
    constexpr std::size_t most = 4;
    std::string told;
    for (const std::string& line : DifferenceLines(program, outcome, most, true))
      told += fmt::format("customary, {}: {}\n", name, line);
    if (!told.empty()) progress_.Print(told);
  }

  void Concluded(const Finding& finding, const Fault* fault) {
    --run_.open;
    if (fault == nullptr) {
      ++run_.vanished;
      progress_.Print(fmt::format("{}: {}, but right when it was run again\n",
                                  NameOf(finding.program), Told(finding.outcome)));
      return;
    }
    const auto known = std::ranges::find(run_.faults, fault->name, &FaultRecord::name);
    if (known != run_.faults.end()) {
      known->findings.push_back(NameOf(finding.program));
      return;
    }
    run_.faults.push_back(RecordOf(*fault));
    progress_.Print(FaultTold(*fault));
    Write([&] { results_->Add(*fault, run_, DrawingWords(options_.drawing)); });
  }

  int Finish(const CampaignEnd& end) {
    run_.end = Now();
    run_.ending = end.pool.kind == workers::PoolEnd::Kind::finished ? finished : end.pool.reason;
    Write([this] { results_->Finish(run_); });
    if (!cannotWrite_.empty()) FinishIncomplete();
    RefuseNoDevice(end.pool);
    progress_.Print(TotalsOf(run_) + "\n");
    if (!cannotWrite_.empty()) return 4;
    if (end.pool.kind == workers::PoolEnd::Kind::interrupted) return 128 + end.pool.signal;
    return run_.wrong > 0 || run_.notRun > 0 ? 1 : 0;
  }

  // Where there is room again, the files say that they lack something. It has been told already.
  void FinishIncomplete() {
    run_.ending = cannotWrite_;
    try {
      results_->Finish(run_);
    } catch (const text::CannotWrite&) {
    }
  }

  const RunOptions& options_;
  RunRecord run_;
  std::optional<Results> results_;
  std::string cannotWrite_;  // why, once something could not be written
  ProgressLine progress_;
  Clock::time_point start_ = Clock::now();
  std::uint64_t number_;
  std::uint64_t begun_ = 0;
};

}  // namespace

int Run(const RunOptions& options, const command_line::Call& call) {
  return ExplorationRun(options, call).Run();
}

}  // namespace exploration
