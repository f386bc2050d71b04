#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/command_line/options.h"
#include "common/text/bad_use.h"
#include "exploration/commands/command.h"
#include "exploration/program/corpus.h"
#include "exploration/views/replayed.h"
#include "exploration/views/told.h"

namespace exploration {
namespace {

struct ReplayOptions {
  std::vector<std::string> patterns;
  std::string corpus;
  std::string baselineFile;
  WorkOptions work;

  // What these come to.
  std::vector<KeptProgram> programs;
  outputs::Baseline baseline;
};

// A word with a slash in it, or the name of a file that is there, names a program of one's own.
bool IsFile(const std::string& word) {
  return word.find('/') != std::string::npos || word.ends_with(".cl");
}

void Select(ReplayOptions& options) {
  outputs::Cases cases = {"program", "program", {}};
  const bool needsCorpus = options.patterns.empty() || !options.baselineFile.empty() ||
                           !std::ranges::all_of(options.patterns, IsFile);
  std::vector<KeptProgram> corpus;
  if (needsCorpus) corpus = KeptIn(options.corpus.empty() ? CorpusFolder() : options.corpus);
  for (const KeptProgram& kept : corpus) cases.names.push_back(kept.name);
  if (!options.baselineFile.empty())
    options.baseline = outputs::ReadBaseline(options.baselineFile, cases);
  std::vector<bool> isSelected(corpus.size(), options.patterns.empty());
  for (const std::string& pattern : options.patterns) {
    if (IsFile(pattern)) {
      for (KeptProgram& kept : KeptIn(pattern)) options.programs.push_back(std::move(kept));
      continue;
    }
    for (const std::string& name : outputs::Matching(pattern, cases))
      isSelected[static_cast<std::size_t>(std::ranges::find(cases.names, name) -
                                          cases.names.begin())] = true;
  }
  for (std::size_t i = 0; i < corpus.size(); ++i)
    if (isSelected[i]) options.programs.push_back(std::move(corpus[i]));
}

/// The programs run side by side, and are told in their order.
class Replay {
 public:
  explicit Replay(const ReplayOptions& options)
      : options_(options), runs_(options.programs.size()), missing_(options.programs.size()) {
    for (const KeptProgram& kept : options.programs)
      longest_ = std::max(longest_, kept.name.size());
    for (std::size_t i = 0; i < options.programs.size(); ++i) waiting_.push_back(i);
  }
  Replay(const Replay&) = delete;
  Replay& operator=(const Replay&) = delete;

  int Run() {
    CampaignListener listener;
    listener.device = [this](const Device& device) { device_ = device; };
    listener.next = [this] { return Next(); };
    listener.ended = [this](const Candidate& candidate, const Outcome& outcome) {
      Ended(static_cast<std::size_t>(candidate.program.number), outcome);
      return false;
    };
    const CampaignEnd end = Explore(options_.work, listener);
    RefuseNoDevice(end.pool);
    while (told_.size() < options_.programs.size()) Tell();
    command_line::Print(TotalsOf(told_) + "\n");
    if (end.pool.kind == workers::PoolEnd::Kind::interrupted) return 128 + end.pool.signal;
    return std::ranges::all_of(told_, &Replayed::asExpected) ? 0 : 1;
  }

 private:
  std::optional<Candidate> Next() {
    while (!waiting_.empty()) {
      const std::size_t index = waiting_.front();
      waiting_.pop_front();
      Candidate candidate;
      candidate.program.number = index;
      candidate.runnable = options_.programs[index].program;
      missing_[index] = MissingOn(device_, candidate.runnable);
      if (missing_[index].empty()) return candidate;
      TellWhatHasEnded();
    }
    return std::nullopt;
  }

  void Ended(std::size_t index, const Outcome& outcome) {
    std::vector<Outcome>& runs = runs_[index];
    runs.push_back(outcome);
    // As it was expected to, or perhaps now and then.
    const bool isAgain = runs.size() == 1 && !options_.baselineFile.empty() &&
                         outcome.kind != Outcome::Kind::notRun && !Result(index).asExpected;
    if (isAgain) waiting_.push_back(index);
    std::erase(under_, index);
    if (isAgain) under_.push_back(index);
    TellWhatHasEnded();
  }

  Replayed Result(std::size_t index) const {
    const std::string& name = options_.programs[index].name;
    if (!missing_[index].empty()) return {name, outputs::Status::skip, true, missing_[index]};
    const auto entry = options_.baseline.find(name);
    return ReplayedAs(name, runs_[index],
                      entry == options_.baseline.end() ? outputs::Status::pass : entry->second);
  }

  void TellWhatHasEnded() {
    while (told_.size() < options_.programs.size()) {
      const std::size_t next = told_.size();
      const bool hasEnded = !missing_[next].empty() || !runs_[next].empty();
      if (!hasEnded || std::ranges::count(under_, next) > 0) return;
      Tell();
    }
  }

  void Tell() {
    const std::size_t index = told_.size();
    const Replayed program = Result(index);
    std::string line = fmt::format("{:<{}}  {:<14}  {}", program.name, longest_,
                                   NameOf(program.verdict), program.detail);
    line.erase(line.find_last_not_of(' ') + 1);
    line += '\n';
    for (const Outcome& run : runs_[index])
      if (!program.asExpected && run.kind != Outcome::Kind::right) {
        line += DetailsTold(options_.programs[index].program, run);
        break;
      }
    told_.push_back(program);
    command_line::Print(line);
  }

  const ReplayOptions& options_;
  Device device_;
  std::size_t longest_ = 0;
  std::deque<std::size_t> waiting_;
  std::vector<std::size_t> under_;  // that are run again
  std::vector<std::vector<Outcome>> runs_;
  std::vector<std::string> missing_;  // why a program is skipped
  std::vector<Replayed> told_;
};

void AddTo(CLI::App& app, command_line::Call& call) {
  const auto options = std::make_shared<ReplayOptions>();
  app.add_option(
         "PROGRAM", options->patterns,
         "Names or globs of the corpus, or files of programs; without any, the whole corpus")
      ->type_name("");
  app.add_option("--corpus", options->corpus, "Another folder of programs, NAME.cl each")
      ->type_name("DIR")
      ->check(command_line::NotEmpty());
  app.add_option("--baseline", options->baselineFile, "Expected results, 'program,status' a line")
      ->type_name("FILE")
      ->check(command_line::NotEmpty());
  AddWork(app, call, options->work);
  app.footer(
      "With a baseline, what is not as expected is run once more, and is a Flake if it then ends\n"
      "otherwise. Programs that the baseline does not name are expected to pass. The statuses are\n"
      "those of triage; Skip is a program that needs what the device hasn't got.");
  app.parse_complete_callback([options] { Select(*options); });
  app.callback([options, &call] { call.status = Replay(*options).Run(); });
}

}  // namespace

const command_line::Command commands::replay = {
    "replay", "Run the corpus: the programs that some driver got wrong, as small as they can be",
    AddTo,
    "explore replay\n"
    "explore replay 'union-*' --baseline ours.csv\n"
    "explore replay results/faults/*/program.cl"};

}  // namespace exploration
