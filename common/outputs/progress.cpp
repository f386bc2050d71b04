#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <string_view>
#include <utility>

#include "common/outputs/reporter.h"
#include "common/text/text.h"

namespace diagnosis {

namespace {

constexpr double secondsBetweenLines = 5;

constexpr std::string_view red = "31";
constexpr std::string_view yellow = "33";
constexpr std::string_view green = "32";

std::string_view ColourOf(const AccountedRow& row) {
  if (!row.asExpected) return red;
  return row.status == Status::pass ? green : yellow;
}

// "8 s", "2 min 5 s".
std::string Duration(double seconds) {
  const auto whole = static_cast<long>(std::ceil(seconds));
  return whole < 60 ? fmt::format("{} s", whole)
                    : fmt::format("{} min {} s", whole / 60, whole % 60);
}

class People : public Reporter {
 public:
  explicit People(Console console) : console_(std::move(console)) {}

  void Begin(const Device& device, std::size_t selected) override {
    selected_ = selected;
    start_ = lastLine_ = console_.clock();
    if (device.platform.empty() && device.name.empty()) return;  // none was seen
    console_.write(fmt::format("{} on {}, driver version {}\n", text::PrintableLine(device.name),
                               text::PrintableLine(device.platform),
                               text::PrintableLine(device.driverVersion)));
  }

  void Started(const std::string& row) override {
    running_.push_back(row);
    ShowProgress();
  }

  void Ended(const AccountedRow& row, bool runAgain) override {
    const bool isSecondRun = std::erase(toRunAgain_, row.name) > 0;
    std::erase(running_, row.name);
    if (!isSecondRun) ++done_;
    if (!isSecondRun && !row.asExpected) ++failed_;
    if (isSecondRun && row.asExpected) --failed_;
    if (runAgain) toRunAgain_.push_back(row.name);
    if (row.status == Status::missing) ++unreached_[row.detail];
    // What a second run confirmed has been said, and rows that were not reached are told together.
    const bool isNews = isSecondRun ? row.status == Status::flake : !row.asExpected;
    if (isNews && row.status != Status::missing) {
      Clear();
      console_.write(fmt::format("{} {}{}{}\n",
                                 Coloured(fmt::format("{:<14}", NameOf(row.status)), ColourOf(row)),
                                 row.name, row.detail.empty() ? "" : ": ", row.detail));
    }
    ShowProgress();
  }

  void Tick() override { ShowProgress(); }

  void End(const std::vector<AccountedRow>& account, const std::string& remarks) override {
    Clear();
    for (const auto& [reason, rows] : unreached_)
      console_.write(fmt::format("{} {} row{} not reached: {}\n",
                                 Coloured(fmt::format("{:<14}", NameOf(Status::missing)), red),
                                 rows, rows == 1 ? "" : "s", reason));
    const bool good = std::ranges::all_of(account, &AccountedRow::asExpected);
    std::string text = TextOf(account, selected_);
    // The last line is the sentence that it comes to.
    const std::size_t sentence = text.rfind('\n', text.size() - 2) + 1;
    const std::string result = text.substr(sentence, text.size() - 1 - sentence);
    text.resize(sentence);
    console_.write(fmt::format("\n{}{}\n{}", text, Coloured(result, good ? green : red), remarks));
  }

 private:
  std::string Coloured(const std::string& text, std::string_view colour) const {
    return console_.colour ? fmt::format("\x1B[{}m{}\x1B[0m", colour, text) : text;
  }

  std::string Progress(double now) const {
    std::string line = fmt::format("{} of {} rows done, {} failed", done_, selected_, failed_);
    if (done_ > 0 && done_ < selected_)
      line += fmt::format(", about {} left",
                          Duration((now - start_) * static_cast<double>(selected_ - done_) /
                                   static_cast<double>(done_)));
    if (done_ == selected_ && !toRunAgain_.empty())
      line += fmt::format(", {} to be run once more", toRunAgain_.size());
    if (!running_.empty()) line += "; now " + running_.front();
    return line;
  }

  void ShowProgress() {
    const double now = console_.clock();
    if (console_.isTerminal) {
      console_.write(fmt::format("\r{:.{}}\x1B[K", Progress(now), console_.columns - 1));
      isDrawn_ = true;
    } else if (now - lastLine_ >= secondsBetweenLines) {
      lastLine_ = now;
      console_.write(Progress(now) + "\n");
    }
  }

  void Clear() {
    if (std::exchange(isDrawn_, false)) console_.write("\r\x1B[K");
  }

  Console console_;
  std::size_t selected_ = 0;
  std::size_t done_ = 0;
  std::size_t failed_ = 0;
  std::map<std::string, std::size_t> unreached_;  // by reason
  std::vector<std::string> running_;
  std::vector<std::string> toRunAgain_;
  double start_ = 0;
  double lastLine_ = 0;
  bool isDrawn_ = false;
};

}  // namespace

std::unique_ptr<Reporter> ReporterForPeople(const Console& console) {
  return std::make_unique<People>(console);
}

}  // namespace diagnosis
