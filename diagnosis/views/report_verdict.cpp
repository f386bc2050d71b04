#include <fmt/format.h>

#include <algorithm>

#include "diagnosis/views/report_parts.h"

namespace diagnosis {

namespace {

std::size_t CountOf(const std::vector<RowResult>& outcomes, Category category) {
  return static_cast<std::size_t>(std::ranges::count(outcomes, category, &RowResult::category));
}

// The words one after another: "a, b and c".
std::string Joined(const std::vector<std::string>& words) {
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (i > 0) text += i + 1 == words.size() ? " and " : ", ";
    text += words[i];
  }
  return text;
}

// How many rows ended as the run's baseline says.
std::string AsExpected(const Totals& totals) {
  const std::size_t others = totals.rows - totals.asExpected;
  if (others == 0) return "every row ended as the baseline expects";
  return Counted(others, "row") + " ended otherwise than the baseline expects";
}

// What the suite says.
std::string LedgerSentence(const Analysis& analysis) {
  const Run& run = *analysis.run;
  const std::vector<RowResult>& outcomes = analysis.rows;
  struct Name {
    Status status;
    const char* text;
  };
  constexpr Name names[] = {
      {Status::fail, "failed"},
      {Status::buildError, "could not be built"},
      {Status::error, "ended in an error"},
      {Status::crash, "crashed"},
      {Status::timeout, "took too long"},
      {Status::flake, "ended now so, now otherwise"},
      {Status::skip, "skipped"},
      {Status::missing, "never reached"},
  };
  const auto status = [](const RowResult& row) { return TraitsOf(row.category).status; };
  const auto passed = static_cast<std::size_t>(std::ranges::count(outcomes, Status::pass, status));
  std::string text;
  if (passed == outcomes.size()) {
    text = passed == 1 ? "The one row passed" : fmt::format("All {} rows passed", passed);
  } else {
    std::vector<std::string> others;
    for (const Name& name : names) {
      const auto count = std::ranges::count(outcomes, name.status, status);
      if (count > 0) others.push_back(fmt::format("{} {}", count, name.text));
    }
    text =
        fmt::format("{} of {} passed: {}", passed, Counted(outcomes.size(), "row"), Joined(others));
  }
  if (!run.info.expected.empty()) text += "; " + AsExpected(analysis.totals);
  return text + (run.info.end.empty() ? "; the run was cut off." : ".");
}

// What OpenCL says to that.
std::string OpinionSentence(const std::vector<RowResult>& outcomes) {
  const std::size_t right = CountOf(outcomes, Category::passedRight);
  const std::size_t judged = right + CountOf(outcomes, Category::failedRight) +
                             CountOf(outcomes, Category::passedWrong) +
                             CountOf(outcomes, Category::failedWrong);
  if (judged == 0) return "Nothing came back that could be held against OpenCL\u2019s rules.";
  if (right == judged) return "By OpenCL\u2019s rules, too, every lane that came back is right.";

  struct Part {
    Category category;
    const char* text;
    const char* meaning;
  };
  constexpr Part parts[] = {
      {Category::failedWrong, "that failed {} wrong", "a fault of the device"},
      {Category::passedWrong, "that passed {} wrong", "a fault that the suite\u2019s rule hides"},
      {Category::failedRight, "that failed {} right", "where the suite asks more than OpenCL does"},
  };
  std::string text;
  for (const Part& part : parts) {
    const std::size_t count = CountOf(outcomes, part.category);
    if (count == 0) continue;
    text += text.empty() ? "By OpenCL\u2019s rules " : "; ";
    text +=
        fmt::format("{} {}, {}", count,
                    fmt::format(fmt::runtime(part.text), count == 1 ? "is" : "are"), part.meaning);
  }
  return text + ".";
}

}  // namespace

std::string VerdictOn(const Analysis& analysis) {
  return LedgerSentence(analysis) + " " + OpinionSentence(analysis.rows);
}

}  // namespace diagnosis
