#include <fmt/format.h>
#include <sys/ioctl.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/command_line/options.h"
#include "common/outputs/reporter.h"
#include "common/outputs/results.h"
#include "common/text/text.h"
#include "diagnosis/commands/command.h"
#include "diagnosis/execution/run_rows.h"
#include "diagnosis/localization/analysis.h"
#include "diagnosis/record/record.h"
#include "diagnosis/record/select.h"
#include "diagnosis/verdict/account.h"
#include "diagnosis/verdict/baseline.h"
#include "diagnosis/views/end_of_run.h"
#include "harness/rows.h"

namespace diagnosis {
namespace {

struct Options {
  std::vector<std::string> patterns;
  RowsOptions pool;
  std::string buildOptions;
  std::uint64_t localSize = 0;
  std::string skipsFile;
  Skips skips;
  std::string baselineFile;
  Baseline baseline;
  bool flakesFail = false;
  bool strict = false;
  std::string folder;
  bool replace = false;
  bool ktap = false;
};

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

RunInfo InfoOf(const Options& options, const command_line::Call& call,
               const std::vector<std::size_t>& selected) {
  RunInfo info;
  info.host = Host();
  info.version = SUITE_VERSION;
  info.command = call.line;
  info.options = {{"baseline", options.baselineFile},
                  {"build options", options.buildOptions},
                  {"isolate", options.pool.isolate ? "yes" : "no"},
                  {"jobs", std::to_string(options.pool.workers)},
                  {"launcher", text::ShellWords(options.pool.launcher)},
                  {"program", options.pool.program},
                  {"local size", std::to_string(options.localSize)},
                  {"seed", std::to_string(options.pool.seed)},
                  {"skips", options.skipsFile},
                  {"timeout", fmt::format("{}", options.pool.timeoutSeconds)}};
  for (const auto& [row, status] : options.baseline) info.expected[row] = NameOf(status);
  info.start = Now();
  for (const std::size_t row : selected) info.selected.emplace_back(rows[row].name);
  return info;
}

Console StandardOutput() {
  Console console;
  console.write = command_line::Print;
  console.clock = [] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
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
      fmt::print(stderr, "triage: {}\n", text::PrintableLine(error.what(), 1000));
    }
  }
  bool Failed() const { return failed_; }

 private:
  bool failed_ = false;
};

/// A run from the selection to the status. What stands behind it must not move: the pool calls
/// back.
class TriageRun {
 public:
  TriageRun(const Options& options, const command_line::Call& call)
      : options_(options),
        selected_(Select(options.patterns)),
        info_(InfoOf(options, call, selected_)),
        reporter_(options.ktap ? ReporterInKtap(StandardOutput())
                               : ReporterForPeople(StandardOutput())) {
    if (!options.folder.empty()) folder_.emplace(options.folder, options.replace, info_);
  }
  TriageRun(const TriageRun&) = delete;
  TriageRun& operator=(const TriageRun&) = delete;

  int Run() {
    std::vector<RowJob> jobs;
    for (const std::size_t row : selected_) {
      const auto skip = options_.skips.find(rows[row].name);
      if (skip == options_.skips.end()) {
        jobs.push_back(JobOf(row));
      } else {
        Record record;
        record.row = rows[row].name;
        record.seed = options_.pool.seed;
        record.ending.kind = Ending::Kind::skipped;
        record.ending.reason = "skipped by " + skip->second;
        Ended(std::move(record));
      }
    }
    const auto ended = [this](const RowJob&, Record record) { Ended(std::move(record)); };
    const workers::PoolEnd end = RunRows(jobs, options_.pool, Listener(ended));
    if (end.kind == workers::PoolEnd::Kind::noDevice) isSilent_ = true;
    Begin({});
    if (end.kind == workers::PoolEnd::Kind::finished && !again_.empty()) RunAgain();
    return Finish(end);
  }

 private:
  Expectations Expected() const { return {options_.baseline, options_.flakesFail, false}; }

  RowJob JobOf(std::size_t row) const {
    RowJob job;
    job.row = row;
    job.buildOptions = options_.buildOptions;
    job.localSize = options_.localSize;
    return job;
  }

  RowsListener Listener(std::function<void(const RowJob&, Record)> ended) {
    RowsListener listener;
    listener.device = [this](const Device& device) { Begin(device); };
    listener.started = [this](const RowJob& job) {
      const std::string row(rows[job.row].name);
      Write([&row](ResultsFolder& folder) { folder.Started(row); });
      Report([&row](Reporter& reporter) { reporter.Started(row); });
    };
    listener.ended = std::move(ended);
    listener.tick = [this] { Report([](Reporter& reporter) { reporter.Tick(); }); };
    return listener;
  }

  template <class Function>
  void Write(Function function) {
    if (folder_) writing_.Try([this, &function] { function(*folder_); });
  }

  template <class Function>
  void Report(Function function) {
    if (hasBegun_ && !isSilent_) reporting_.Try([this, &function] { function(*reporter_); });
  }

  // Until the device is known, or that there is none, nothing is said.
  void Begin(const Device& device) {
    if (std::exchange(hasBegun_, true)) return;
    info_.device = device;
    Write([this](ResultsFolder& folder) { folder.SetDevice(info_.device); });
    Report([this](Reporter& reporter) { reporter.Begin(info_.device, selected_.size()); });
    for (Record& record : std::exchange(early_, {})) Ended(std::move(record));
  }

  void Ended(Record record) {
    if (!hasBegun_) {
      early_.push_back(std::move(record));
      return;
    }
    const AccountedRow row = AccountOf(ResultOf(record, info_.device, Expected()));
    const bool again =
        !options_.baselineFile.empty() && !row.asExpected && row.status != Status::missing;
    if (again) again_.push_back(RowCalled(row.name));
    Write([&record, &row](ResultsFolder& folder) { folder.Ended(record, row); });
    Report([&row, again](Reporter& reporter) { reporter.Ended(row, again); });
    account_.push_back(row);
    records_.push_back(std::move(record));
  }

  void RunAgain() {
    std::vector<RowJob> jobs;
    for (const std::size_t row : again_) {
      jobs.push_back(JobOf(row));
      jobs.back().freshWorker = true;
    }
    RunRows(jobs, options_.pool, Listener([this](const RowJob&, Record record) {
              const auto first = std::ranges::find(records_, record.row, &Record::row);
              first->again.push_back(std::move(record));
              AccountedRow& row = account_[static_cast<std::size_t>(first - records_.begin())];
              row = AccountOf(ResultOf(*first, info_.device, Expected()));
              Report([&row](Reporter& reporter) { reporter.Ended(row, false); });
            }));
  }

  int Finish(const workers::PoolEnd& end) {
    const bool addsUp = AddsUp(account_, info_.selected);
    std::ranges::sort(account_, {}, [](const AccountedRow& row) { return RowCalled(row.name); });
    std::ranges::sort(records_, {}, [](const Record& record) { return RowCalled(record.row); });
    info_.end = Now();
    Write([this](ResultsFolder& folder) { folder.Finish(records_, account_, info_.end); });
    if (end.kind == workers::PoolEnd::Kind::noDevice) {
      fmt::print(stderr, "triage: {}\n", text::PrintableLine(end.reason, 1000));
      return 3;
    }
    std::string remarks;
    Dispensable views;
    const diagnosis::Run run{info_, std::move(records_)};
    Expectations expectations = Expected();
    expectations.strict = options_.strict;
    const Analysis analysis = AnalysisOf(run, expectations);
    const std::string folder = writing_.Failed() ? "" : options_.folder;
    for (const EndOfRunView view : EndOfRunViews())
      views.Try([&] { remarks += view(analysis, folder); });
    Report([this, &remarks](Reporter& reporter) { reporter.End(account_, remarks); });
    if (!addsUp)
      fmt::print(stderr, "triage: the ledger does not add up: {} rows selected, {} accounted for\n",
                 selected_.size(), account_.size());
    const bool good = addsUp && analysis.totals.asExpected == analysis.totals.rows &&
                      !writing_.Failed() && !reporting_.Failed() && !views.Failed();
    return good ? 0 : 1;
  }

  const Options& options_;
  std::vector<std::size_t> selected_;
  RunInfo info_;
  std::unique_ptr<Reporter> reporter_;
  std::optional<ResultsFolder> folder_;
  Dispensable writing_;
  Dispensable reporting_;

  bool hasBegun_ = false;
  bool isSilent_ = false;
  std::vector<Record> early_;          // ended before the device was known
  std::vector<Record> records_;        // in the order in which they ended
  std::vector<AccountedRow> account_;  // of the same
  std::vector<std::size_t> again_;     // to be run once more
};

void AddTo(CLI::App& app, command_line::Call& call) {
  const auto options = std::make_shared<Options>();
  AddRows(app, options->patterns);
  AddPoolOptions(app, call, options->pool);
  app.add_option("--build-options", options->buildOptions,
                 "For clBuildProgram; the suite gives none")
      ->type_name("TEXT");
  app.add_option("--local-size", options->localSize,
                 "For clEnqueueNDRangeKernel; the suite leaves it to the driver")
      ->type_name("N")
      ->check(command_line::Whole(1, std::numeric_limits<std::uint64_t>::max()));
  app.add_option("--skips", options->skipsFile, "Rows not to be run, a name or glob a line")
      ->type_name("FILE")
      ->check(command_line::NotEmpty());
  app.add_option("--baseline", options->baselineFile, "Expected results, 'test,status' a line")
      ->type_name("FILE")
      ->check(command_line::NotEmpty());
  app.add_flag("--strict", options->strict,
               "The second opinion counts: a row that passed is a failure if it is wrong by "
               "OpenCL's rules, and one that failed is none if it is right");
  app.add_flag("--strict-flakes", options->flakesFail, "A flake is a failure");
  app.add_option("--out", options->folder, "Folder for the results")
      ->type_name("DIR")
      ->check(command_line::NotEmpty());
  app.add_flag("--force", options->replace, "Replace results that are there");
  app.add_flag("--ktap", options->ktap, "KTAP on standard output");
  app.footer(
      "With a baseline, what is not as expected is run once more on the same data, and is a flake\n"
      "if it then ends otherwise. Rows that the baseline does not name are expected to pass.\n"
      "\n"
      "The results are results.csv, failures.csv (a baseline for later runs), junit.xml,\n"
      "records.jsonl, run.json and report.html.");
  app.parse_complete_callback([options] {
    if (!options->skipsFile.empty()) options->skips = ReadSkips(options->skipsFile);
    if (!options->baselineFile.empty()) options->baseline = ReadBaseline(options->baselineFile);
    if (!options->folder.empty()) RefuseOldResults(options->folder, options->replace);
  });
  app.callback([options, &call] { call.status = TriageRun(*options, call).Run(); });
}

}  // namespace

const command_line::Command commands::run = {
    "run", "Run rows and say what became of each", AddTo,
    "triage 'multiply_*'\n"
    "triage --out results --baseline baselines/rusticl-llvmpipe.csv -j 2\n"
    "triage --launcher 'ssh board' --program /opt/union_triage --timeout 20"};

}  // namespace diagnosis
