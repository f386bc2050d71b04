#pragma once

#include <array>
#include <cstddef>
#include <optional>

#include "diagnosis/judgement/opinion.h"
#include "diagnosis/verdict/ledger.h"

namespace diagnosis {

/// What the suite and OpenCL's rules together make of a row, whatever was expected of it.
enum class Category {
  passedRight,
  failedRight,
  passedWrong,
  failedWrong,
  passedUnseen,
  failedUnseen,
  flake,
  error,
  buildError,
  crash,
  timeout,
  skip,
  missing,
};

/// All that is the same of every row of a category.
struct CategoryTraits {
  Category category;
  Status status;  // by the suite; Flake for one that ended otherwise when it was run again
  std::optional<Opinion::Verdict> opinion;  // none where it plays no part
  int rank;          // the best have 0: a device that computes rightly stands above one that does
                     // not, whatever the suite's rule lets pass, and one that answers wrongly
                     // above one that does not answer
  const char* name;  // "passed and right"
  const char* meaning;  // half a sentence
  const char* style;    // class in the pages' style sheet
  const char* sign;  // so that the colour need not be seen: the suite's verdict, then OpenCL's, or
                     // a word
};

inline constexpr int rankOfSkip = 10;

/// In the order of the enumeration.
inline constexpr std::array categories = std::to_array<CategoryTraits>({
    {Category::passedRight, Status::pass, Opinion::Verdict::right, 0, "passed and right",
     "as it should be", "passed-right", "\u2713\u2713"},
    {Category::failedRight, Status::fail, Opinion::Verdict::right, 2, "failed but right",
     "the suite asks more than OpenCL does", "failed-right", "\u2717\u2713"},
    {Category::passedWrong, Status::pass, Opinion::Verdict::wrong, 3, "passed but wrong",
     "a fault that the suite\u2019s rule hides", "passed-wrong", "\u2713\u2717"},
    {Category::failedWrong, Status::fail, Opinion::Verdict::wrong, 5, "failed and wrong",
     "a fault of the device", "failed-wrong", "\u2717\u2717"},
    {Category::passedUnseen, Status::pass, Opinion::Verdict::unseen, 1, "passed, unseen",
     "no result came back to be judged", "unseen", "\u2713?"},
    {Category::failedUnseen, Status::fail, Opinion::Verdict::unseen, 5, "failed, unseen",
     "no result came back to be judged", "unseen", "\u2717?"},
    {Category::flake,
     Status::flake,
     {},
     4,
     "flake",
     "ended otherwise on the same data",
     "flake",
     "flake"},
    {Category::error, Status::error, {}, 6, "error", "an OpenCL call failed", "broken", "error"},
    {Category::buildError,
     Status::buildError,
     {},
     7,
     "not built",
     "clBuildProgram failed",
     "broken",
     "build"},
    {Category::crash,
     Status::crash,
     {},
     8,
     "crashed",
     "the process ended in mid-row",
     "broken",
     "crash"},
    {Category::timeout,
     Status::timeout,
     {},
     8,
     "timed out",
     "ended for its time",
     "broken",
     "time"},
    {Category::skip,
     Status::skip,
     {},
     rankOfSkip,
     "skipped",
     "named in a list of skips",
     "unrun",
     "skip"},
    {Category::missing, Status::missing, {}, 9, "missing", "never reached", "unrun", "none"},
});

constexpr const CategoryTraits& TraitsOf(Category category) {
  return categories.at(static_cast<std::size_t>(category));
}

/// Whether both the suite and the opinion have a verdict.
constexpr bool IsJudged(Category category) { return category <= Category::failedWrong; }

/// The category of what ended so by the suite: one of the first eight statuses, or Flake.
Category CategoryOf(Status status, Opinion::Verdict opinion);

/// The category of one run of a row, which alone is never a flake.
Category CategoryOf(const Record& record, const Opinion& opinion);

}  // namespace diagnosis
