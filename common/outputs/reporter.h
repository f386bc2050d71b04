#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "diagnosis/record/record.h"
#include "diagnosis/verdict/account.h"

namespace diagnosis {

/// What standard output says of a run while it lasts. One is for people and one for test labs.
class Reporter {
 public:
  Reporter() = default;
  Reporter(const Reporter&) = delete;
  Reporter& operator=(const Reporter&) = delete;
  virtual ~Reporter() = default;

  /// The device, before any row, and how many rows are selected.
  virtual void Begin(const Device& device, std::size_t selected) = 0;
  virtual void Started(const std::string& row) = 0;
  /// A row ended. If it is to be run again its account may still change, and comes once more.
  virtual void Ended(const AccountedRow& row, bool runAgain) = 0;
  /// From time to time.
  virtual void Tick() {}
  /// The whole account, in the order of the matrix, and what else there is to say of the run.
  virtual void End(const std::vector<AccountedRow>& account, const std::string& remarks) = 0;
};

/// Where a reporter writes, and how.
struct Console {
  std::function<void(const std::string&)> write;
  std::function<double()> clock;  // seconds
  bool isTerminal = false;        // the progress line is redrawn
  std::size_t columns = 80;
  bool colour = false;
};

/// Lines for a person: how far the run is, each row that did not end as expected, the ledger.
std::unique_ptr<Reporter> ReporterForPeople(const Console& console);

/// KTAP, version 1. A row's line comes when its account is final.
std::unique_ptr<Reporter> ReporterInKtap(const Console& console);

}  // namespace diagnosis
