#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "common/outputs/reporter.h"
#include "common/text/text.h"

namespace outputs {

namespace {

constexpr double secondsBetweenLines = 5;

constexpr std::string_view red = "31";
constexpr std::string_view yellow = "33";
constexpr std::string_view green = "32";

std::string_view ColourOf(const Case& one) {
  if (!one.asExpected) return red;
  return one.kind == Kind::passed && one.remark.empty() ? green : yellow;
}

// "8 s", "2 min 5 s".
std::string Duration(double seconds) {
  const auto whole = static_cast<long>(std::ceil(seconds));
  return whole < 60 ? fmt::format("{} s", whole)
                    : fmt::format("{} min {} s", whole / 60, whole % 60);
}

class Progress : public Reporter {
 public:
  explicit Progress(Console console) : console_(std::move(console)) {}

  void Begin(const Plan& plan) override {
    plan_ = plan;
    runs_ = std::max(plan.cases, plan.runs);
    start_ = lastLine_ = console_.clock();
    if (!plan.heading.empty()) console_.write(plan.heading + "\n");
  }

  void Started(const std::string& name) override {
    running_.push_back(name);
    ShowProgress();
  }

  void Ended(const Case& one, bool runAgain) override {
    const auto running = std::ranges::find(running_, one.name);
    if (running != running_.end()) running_.erase(running);
    if (done_ < runs_) ++done_;
    if (one.asExpected) {
      failed_.erase(one.name);
    } else {
      failed_.insert(one.name);
    }
    if (runAgain) {
      toRunAgain_.insert(one.name);
    } else {
      toRunAgain_.erase(one.name);
    }
    if (one.kind == Kind::notReached) {
      ++unreached_[{one.status, one.line}];
    } else if (one.isNews && !(runAgain && one.kind == Kind::noted)) {
      // What is noted may have another line after the next run.
      Tell(one);
    }
    ShowProgress();
  }

  void Tick() override { ShowProgress(); }

  void End(const Summary& summary) override {
    Clear();
    for (const auto& [reason, cases] : unreached_)
      console_.write(fmt::format("{} {} not reached: {}\n",
                                 Coloured(fmt::format("{:<14}", reason.first), red),
                                 text::Counted(cases, plan_.noun), reason.second));
    console_.write(fmt::format("\n{}\n{}\n{}", summary.table,
                               Coloured(summary.result, summary.isGood ? green : red),
                               summary.remarks));
  }

 private:
  std::string Coloured(const std::string& text, std::string_view colour) const {
    return console_.colour ? fmt::format("\x1B[{}m{}\x1B[0m", colour, text) : text;
  }

  // What another run confirmed has been said.
  void Tell(const Case& one) {
    std::string& told = told_[one.name];
    if (told == one.status) return;
    told = one.status;
    Clear();
    const std::string& words = one.line.empty() ? one.remark : one.line;
    console_.write(fmt::format("{} {}{}{}\n",
                               Coloured(fmt::format("{:<14}", one.status), ColourOf(one)), one.name,
                               words.empty() ? "" : ": ", words));
  }

  std::string Line(double now) const {
    std::string line = fmt::format("{} of {} {}s done, {} failed", done_, runs_,
                                   plan_.runs > 0 ? "run" : plan_.noun, failed_.size());
    if (done_ > 0 && done_ < runs_)
      line += fmt::format(", about {} left",
                          Duration((now - start_) * static_cast<double>(runs_ - done_) /
                                   static_cast<double>(done_)));
    if (done_ == runs_ && !toRunAgain_.empty())
      line += fmt::format(", {} to be run once more", toRunAgain_.size());
    if (!running_.empty()) line += "; now " + running_.front();
    return line;
  }

  void ShowProgress() {
    const double now = console_.clock();
    if (console_.isTerminal) {
      console_.write(fmt::format("\r{:.{}}\x1B[K", Line(now), console_.columns - 1));
      isDrawn_ = true;
    } else if (now - lastLine_ >= secondsBetweenLines) {
      lastLine_ = now;
      console_.write(Line(now) + "\n");
    }
  }

  void Clear() {
    if (std::exchange(isDrawn_, false)) console_.write("\r\x1B[K");
  }

  Console console_;
  Plan plan_;
  std::size_t runs_ = 0;
  std::size_t done_ = 0;
  std::set<std::string> failed_;
  std::map<std::pair<std::string, std::string>, std::size_t> unreached_;  // by status and line
  std::map<std::string, std::string> told_;  // the status, by the case's name
  std::vector<std::string> running_;
  std::set<std::string> toRunAgain_;
  double start_ = 0;
  double lastLine_ = 0;
  bool isDrawn_ = false;
};

}  // namespace

std::unique_ptr<Reporter> ProgressReporter(const Console& console) {
  return std::make_unique<Progress>(console);
}

}  // namespace outputs
