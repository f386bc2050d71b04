#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "diagnosis/execution/run_rows.h"

namespace diagnosis {

/// The index in `rows` of this name.
std::size_t IndexOf(std::string_view name);

/// Everything that a run told.
struct Told {
  workers::PoolEnd end;
  std::vector<Device> devices;
  std::vector<std::string> started;
  std::map<std::string, std::vector<Record>> records;

  const Record& Only(const std::string& row) const;
};

/// Rows in the workers of union_triage, on the simulated GPU unless a test puts something before
/// it.
class RowsInWorkers : public testing::Test {
 protected:
  RowsInWorkers();
  ~RowsInWorkers() override;

  void Set(const std::string& name, const std::string& value);

  /// The fault, in the rows whose text has `text`, if that is not empty.
  void SetFault(const std::string& fault, const std::string& text = "");
  /// Only the first time.
  void SetFaultOnce() { Set("BAD_DRIVER_ONCE", folder_ / "once"); }

  Told RunAll(const std::vector<RowJob>& jobs);

  static std::vector<RowJob> JobsOf(const std::vector<std::string>& names);

  std::filesystem::path folder_;
  RowsOptions options_;

 private:
  std::vector<std::string> set_;
};

}  // namespace diagnosis
