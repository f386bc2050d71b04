#include <fmt/format.h>

#include <algorithm>

#include "diagnosis/verdict/account.h"
#include "diagnosis/views/report_parts.h"

namespace diagnosis {

namespace {

std::size_t CountOf(const std::vector<RowResult>& outcomes, Category category) {
  return static_cast<std::size_t>(std::ranges::count(outcomes, category, &RowResult::category));
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
  const bool isCutOff = analysis.run->info.end.empty();
  return fmt::format("{} {}{}", SentenceOf(analysis.totals),
                     isCutOff ? "The run was cut off. " : "", OpinionSentence(analysis.rows));
}

}  // namespace diagnosis
