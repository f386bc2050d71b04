#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "diagnosis/record/record.h"
#include "diagnosis/verdict/baseline.h"
#include "diagnosis/verdict/ledger.h"

namespace diagnosis {

/// A row in the account of a run.
struct AccountedRow {
  std::string name;
  Status status = Status::missing;
  bool asExpected = false;
  std::string detail;  // one line
  double seconds = 0;
  double buildSeconds = 0;
};

/// What became of a row against what was expected of it. If it was run again, on the same data, and
/// ended with another status, it is a flake, which passes unless flakes are failures.
AccountedRow AccountOf(const Record& record, const Baseline& baseline, bool flakesFail = false);

/// The status to expect of a row that ended so, for a baseline: a flake's is Flake, that of an
/// expected Fail is Fail.
Status ToExpect(const AccountedRow& row);

/// The ledger of a run as a person reads it: rows by operation and status, the five slowest, and in
/// a sentence what it comes to. `selected` rows were to be accounted for.
std::string TextOf(const std::vector<AccountedRow>& account, std::size_t selected);

/// Whether each of the selected rows is in the account exactly once.
bool AddsUp(const std::vector<AccountedRow>& account, const std::vector<std::string>& selected);

}  // namespace diagnosis
