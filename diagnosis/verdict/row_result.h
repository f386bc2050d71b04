#pragma once

#include <array>
#include <cstddef>
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

/// What a row came to in a run. The record outlives it.
struct RowResult {
  const Record* record = nullptr;
  Status status = Status::missing;        // by the suite, of the first run: one of the first eight
  Opinion opinion;                        // on the first run
  Category category = Category::missing;  // whatever was expected
  Status expected = Status::pass;
  Status verdict = Status::missing;  // what counts, against what was expected: the word in results
  bool asExpected = false;
  std::string detail;  // what stands behind the verdict, one line; often empty
};

/// If the row was run again, on the same data, and that came to another end, it is a flake, which
/// is as expected unless flakes are failures.
RowResult ResultOf(const Record& record, const Device& device, const Expectations& expectations);

/// The status to expect of a row that came to this verdict, for a baseline: a flake's is Flake,
/// that of an expected Fail is Fail.
Status ToExpect(Status verdict);

/// How many rows of a run came to what.
struct Totals {
  std::size_t rows = 0;
  std::size_t asExpected = 0;
  std::array<std::size_t, statuses> byVerdict{};
  std::array<std::size_t, categories.size()> byCategory{};

  std::size_t Of(Status verdict) const { return byVerdict.at(static_cast<std::size_t>(verdict)); }
  std::size_t Of(Category category) const {
    return byCategory.at(static_cast<std::size_t>(category));
  }
};

Totals TotalsOf(const std::vector<RowResult>& rows);

}  // namespace diagnosis
