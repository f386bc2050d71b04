#pragma once

#include <string>
#include <vector>

#include "diagnosis/verdict/row_result.h"

namespace diagnosis {

/// The ledger of a run as a person reads it: rows by operation and verdict, and the five slowest.
/// Lines, with their ends.
std::string LedgerOf(const std::vector<RowResult>& rows);

/// What a run comes to, in one sentence that is the same wherever it stands: "All 210 rows
/// passed.", "2 of 6 rows did not pass; incomplete: 4 of 6 rows."
std::string SentenceOf(const Totals& totals);

/// "97 of 210 rows" of a run that did not reach all, "5 of 20 runs" where rows were to be run more
/// often than they were, or both; else nothing.
std::string Incomplete(const Totals& totals);

}  // namespace diagnosis
