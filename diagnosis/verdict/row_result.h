#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "diagnosis/judgement/opinion.h"
#include "diagnosis/record/record.h"
#include "diagnosis/verdict/baseline.h"
#include "diagnosis/verdict/category.h"
#include "diagnosis/verdict/ledger.h"

namespace diagnosis {

/// What is expected of a run's rows, and who judges them.
struct Expectations {
  Baseline baseline;
  bool flakesFail = false;
  bool strict = false;  // where the second opinion has one, its verdict counts, not the suite's
};

/// One run of a row, and what counts of it by itself.
struct Judged {
  Status status;   // by the suite: one of the first eight
  Status verdict;  // by whoever judges
  std::string detail;
  std::uint64_t answer;  // equal for runs that ended alike and answered alike in every lane
};

/// What a row came to in a run. The record outlives it.
struct RowResult {
  const Record* record = nullptr;
  std::vector<Judged> runs;               // of the row, those that were reached; one at least
  Status status = Status::missing;        // by the suite, of the first run: one of the first eight
  Opinion opinion;                        // on the first run
  Category category = Category::missing;  // whatever was expected
  Status expected = Status::pass;
  Status verdict = Status::missing;  // what counts, against what was expected: the word in results
  bool asExpected = false;
  bool isNews = false;  // is not as expected, or is and yet a reader should know
  std::string detail;   // what stands behind the verdict, one line; often empty
  std::string remark;   // how who does not judge sees it otherwise, one line; mostly empty
};

/// If the row was run again, on the same data, and did not come to the same end, or passed with
/// other answers, it is a flake, which is as expected unless flakes are failures.
RowResult ResultOf(const Record& record, const Device& device, const Expectations& expectations);

/// Takes into account another run of the row, the last of those in its record.
void TakeLastRun(RowResult& row, const Device& device, const Expectations& expectations);

/// The status to expect of a row that came to this verdict, for a baseline: a flake's is Flake,
/// that of an expected Fail is Fail.
Status ToExpect(Status verdict);

/// How often the row was run; 0 if it was never reached, or is skipped.
std::size_t RunsOf(const Record& record);

/// Whether the row was run, but not `runsOfEach` times.
bool IsCutShort(const Record& record, std::size_t runsOfEach);

/// How many rows of a run came to what.
struct Totals {
  std::size_t rows = 0;
  std::size_t reached = 0;
  std::size_t cutShort = 0;    // rows that were run, but not as often as wanted
  std::size_t runs = 0;        // of rows that are not skipped
  std::size_t runsWanted = 0;  // of the same
  std::size_t asExpected = 0;
  std::array<std::size_t, statuses> byVerdict{};
  std::array<std::size_t, categories.size()> byCategory{};

  std::size_t Of(Status verdict) const { return byVerdict.at(static_cast<std::size_t>(verdict)); }
  std::size_t Of(Category category) const {
    return byCategory.at(static_cast<std::size_t>(category));
  }
};

Totals TotalsOf(const std::vector<RowResult>& rows, std::size_t runsOfEach = 1);

}  // namespace diagnosis
