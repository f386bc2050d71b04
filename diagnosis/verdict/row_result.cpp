#include "diagnosis/verdict/row_result.h"

#include <fmt/format.h>

namespace diagnosis {

namespace {

Status ExpectedOf(const std::string& row, const Baseline& baseline) {
  const auto entry = baseline.find(row);
  return entry == baseline.end() ? Status::pass : entry->second;
}

/// What counts of one run of a row.
Status JudgedBy(bool strict, Status status, Opinion::Verdict opinion) {
  const bool answered = status == Status::pass || status == Status::fail;
  if (!strict || !answered || opinion == Opinion::Verdict::unseen) return status;
  return opinion == Opinion::Verdict::right ? Status::pass : Status::fail;
}

}  // namespace

RowResult ResultOf(const Record& record, const Device& device, const Expectations& expectations) {
  RowResult row;
  row.record = &record;
  row.status = StatusOf(record);
  row.opinion = OpinionOf(record, device);
  row.expected = ExpectedOf(record.row, expectations.baseline);
  row.detail = DetailOf(record);

  const Status ended = JudgedBy(expectations.strict, row.status, row.opinion.verdict);
  // A second run that was not reached tells nothing.
  const Record* again = record.again.empty() ? nullptr : &record.again.back();
  if (again != nullptr && StatusOf(*again) == Status::missing) again = nullptr;
  const Status statusAgain = again == nullptr ? row.status : StatusOf(*again);
  const Status last = again == nullptr ? ended
                                       : JudgedBy(expectations.strict, statusAgain,
                                                  OpinionOf(*again, device).verdict);
  const bool isFlake = last != ended;
  row.category =
      statusAgain == row.status ? CategoryOf(row.status, row.opinion.verdict) : Category::flake;

  row.verdict = ended;
  row.asExpected = ended == row.expected || ended == Status::skip;
  const bool isResult = row.expected != Status::skip && row.expected != Status::missing;
  if (row.expected == Status::flake) {
    row.asExpected = ended != Status::missing;
    if (ended != Status::pass && row.asExpected && ended != Status::skip)
      row.verdict = Status::flake;
  } else if (isFlake) {
    row.verdict = Status::flake;
    row.asExpected = !expectations.flakesFail;
    row.detail = fmt::format("{}, then {}: {}", NameOf(ended), NameOf(last),
                             row.detail.empty() ? DetailOf(*again) : row.detail);
  } else if (ended == Status::fail && row.asExpected) {
    row.verdict = Status::expectedFail;
  } else if (ended == Status::pass && !isResult) {
    row.asExpected = true;
  } else if (ended == Status::pass && !row.asExpected) {
    row.verdict = Status::unexpectedPass;
    row.detail = fmt::format("expected {}", NameOf(row.expected));
  } else if (!row.asExpected && row.expected != Status::pass && isResult) {
    row.detail += fmt::format(" (expected {})", NameOf(row.expected));
  }
  return row;
}

Status ToExpect(Status verdict) {
  if (verdict == Status::expectedFail) return Status::fail;
  if (verdict == Status::unexpectedPass) return Status::pass;
  return verdict;
}

Totals TotalsOf(const std::vector<RowResult>& rows) {
  Totals totals;
  for (const RowResult& row : rows) {
    ++totals.rows;
    if (row.asExpected) ++totals.asExpected;
    ++totals.byVerdict.at(static_cast<std::size_t>(row.verdict));
    ++totals.byCategory.at(static_cast<std::size_t>(row.category));
  }
  return totals;
}

}  // namespace diagnosis
