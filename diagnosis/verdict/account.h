#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "diagnosis/verdict/row_result.h"

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

AccountedRow AccountOf(const RowResult& row);

/// The ledger of a run as a person reads it: rows by operation and status, the five slowest, and in
/// a sentence what it comes to. `selected` rows were to be accounted for.
std::string TextOf(const std::vector<AccountedRow>& account, std::size_t selected);

/// Whether each of the selected rows is in the account exactly once.
bool AddsUp(const std::vector<AccountedRow>& account, const std::vector<std::string>& selected);

}  // namespace diagnosis
