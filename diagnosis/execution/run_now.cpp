#include "diagnosis/execution/run_now.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "common/text/bad_use.h"
#include "diagnosis/record/run_folder.h"
#include "harness/rows.h"

namespace diagnosis {

Run RunNow(const std::vector<RowJob>& jobs, const RowsOptions& options) {
  Run run;
  run.records.resize(jobs.size());
  RowsListener listener;
  listener.device = [&run](const Device& device, const Provenance& provenance) {
    run.info.device = device;
    run.info.provenance = provenance;
  };
  listener.ended = [&](const RowJob& ended, Record record) {
    run.records[static_cast<std::size_t>(&ended - jobs.data())] = std::move(record);
  };
  const workers::PoolEnd end = RunRows(jobs, options, listener);
  switch (end.kind) {
    case workers::PoolEnd::Kind::noDevice:
      throw text::NothingToRunOn(end.reason);
    case workers::PoolEnd::Kind::interrupted:
      throw std::runtime_error(end.reason);
    case workers::PoolEnd::Kind::noWorker:  // each record says so
    case workers::PoolEnd::Kind::finished:
      break;
  }
  for (const RowJob& job : jobs) run.info.selected.emplace_back(rows[job.row].name);
  return run;
}

Run RunOf(const std::vector<std::size_t>& rowsWanted, const std::string& folder,
          const RowsOptions& options) {
  if (folder.empty()) {
    std::vector<RowJob> jobs;
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
