#include "tests/diagnosis/rows_in_workers.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <sstream>
#include <utility>

#include "harness/rows.h"

namespace diagnosis {

std::size_t IndexOf(std::string_view name) {
  return static_cast<std::size_t>(std::ranges::find(rows, name, &NamedRunner::name) - rows);
}

const Record& Told::Only(const std::string& row) const {
  static const Record none;
  const auto found = records.find(row);
  EXPECT_TRUE(found != records.end() && found->second.size() == 1) << row;
  return found != records.end() ? found->second.front() : none;
}

RowsInWorkers::RowsInWorkers() {
  std::string folder = (std::filesystem::temp_directory_path() / "rows_test_XXXXXX").string();
  folder_ = mkdtemp(folder.data());
  Set("OCL_ICD_VENDORS", SIMULATED_DRIVER);
  Set("OPENCL_LAYERS", SIMULATED_GPU);
  // A sanitizer in the worker leaves the driver's signals alone.
  Set("ASAN_OPTIONS", "handle_segv=0:handle_abort=0:detect_leaks=0");
  options_.program = UNION_TRIAGE;
  std::istringstream emulator(EMULATOR);
  options_.launcher.assign(std::istream_iterator<std::string>(emulator), {});
}

RowsInWorkers::~RowsInWorkers() {
  for (const std::string& name : set_) unsetenv(name.c_str());
  std::filesystem::remove_all(folder_);
}

void RowsInWorkers::Set(const std::string& name, const std::string& value) {
  setenv(name.c_str(), value.c_str(), 1);
  set_.push_back(name);
}

void RowsInWorkers::SetFault(const std::string& fault, const std::string& text) {
  Set("OPENCL_LAYERS", std::string(SIMULATED_GPU) + ":" + BAD_DRIVER);
  Set("BAD_DRIVER", fault);
  Set("BAD_DRIVER_TEXT", text);
}

Told RowsInWorkers::RunAll(const std::vector<RowJob>& jobs) {
  Told told;
  RowsListener listener;
  listener.device = [&](const Device& device, const Provenance&) {
    told.devices.push_back(device);
  };
  listener.started = [&](const RowJob& job) { told.started.emplace_back(rows[job.row].name); };
  listener.ended = [&](const RowJob& job, Record record) {
    const std::string name(rows[job.row].name);
    EXPECT_EQ(record.row, name);
    told.records[name].push_back(std::move(record));
  };
  told.end = RunRows(jobs, options_, listener);
  return told;
}

std::vector<RowJob> RowsInWorkers::JobsOf(const std::vector<std::string>& names) {
  std::vector<RowJob> jobs(names.size());
  std::ranges::transform(names, jobs.begin(),
                         [](const std::string& name) { return RowJob{.row = IndexOf(name)}; });
  return jobs;
}

}  // namespace diagnosis
