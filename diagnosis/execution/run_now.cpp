#include "diagnosis/execution/run_now.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "common/text/bad_use.h"
#include "diagnosis/record/run_folder.h"
#include "harness/rows.h"

namespace diagnosis {

namespace {

bool IsSame(const Job& one, const Job& other) {
  return one.row == other.row && one.buildOptions == other.buildOptions &&
         one.localSize == other.localSize && one.passes == other.passes;
}

}  // namespace

Run RunNow(const std::vector<Job>& jobs, const PoolOptions& options) {
  Run run;
  run.records.resize(jobs.size());
  std::vector<bool> isIn(jobs.size());
  PoolListener listener;
  listener.device = [&run](const Device& device) { run.info.device = device; };
  std::string noDevice;
  listener.noDevice = [&noDevice](const std::string& reason) { noDevice = reason; };
  listener.started = [](const Job&) {};
  listener.ended = [&](const Job& ended, Record record) {
    for (std::size_t i = 0; i < jobs.size(); ++i) {
      if (isIn[i] || !IsSame(jobs[i], ended)) continue;
      isIn[i] = true;
      run.records[i] = std::move(record);
      return;
    }
  };
  switch (RunJobs(jobs, options, listener)) {
    case PoolEnd::noDevice:
      throw text::NothingToRunOn(noDevice);
    case PoolEnd::interrupted:
      throw std::runtime_error("interrupted");
    case PoolEnd::finished:
      break;
  }
  for (const Job& job : jobs) run.info.selected.emplace_back(rows[job.row].name);
  return run;
}

Run RunOf(const std::vector<std::size_t>& rowsWanted, const std::string& folder,
          const PoolOptions& options) {
  if (folder.empty()) {
    std::vector<Job> jobs;
    for (const std::size_t row : rowsWanted) jobs.emplace_back().row = row;
    return RunNow(jobs, options);
  }
  Run run = OpenRun(folder);
  for (const std::size_t row : rowsWanted) {
    if (std::ranges::find(run.records, rows[row].name, &Record::row) == run.records.end())
      throw text::BadUse(folder + " has no record of " + std::string(rows[row].name));
  }
  return run;
}

}  // namespace diagnosis
