#include "diagnosis/commands/ask.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "common/text/bad_use.h"
#include "diagnosis/localization/experiment.h"
#include "diagnosis/record/select.h"

namespace diagnosis {
namespace {

Record& RecordOf(Run& run, const std::string& row) {
  return *std::ranges::find(run.records, row, &Record::row);
}

std::vector<RowJob> JobsOf(std::vector<ToAsk> asked, Run& run) {
  std::vector<RowJob> jobs;
  for (ToAsk& one : asked) {
    const Record& record = RecordOf(run, one.row);
    RowJob& job = jobs.emplace_back();
    job.row = RowCalled(one.row);
    job.buildOptions = record.buildOptions;
    job.localSize = record.localSize;
    job.seed = record.seed;
    job.experiment = std::move(one.experiment);
  }
  return jobs;
}

}  // namespace

bool IsSame(const Device& one, const Device& other) {
  return one.platform == other.platform && one.name == other.name &&
         one.driverVersion == other.driverVersion && one.singleFpConfig == other.singleFpConfig;
}

workers::PoolEnd Ask(Run& run, Analysis& analysis, const RowsOptions& pool,
                     const std::function<void(const Record&)>& told) {
  RowsListener listener;
  listener.device = [&run](const Device& device, const Provenance&) {
    if (!IsSame(run.info.device, device))
      throw text::BadUse("the run was on another device: " + run.info.device.name +
                         " in place of " + device.name);
  };
  std::size_t left = MostExperiments(run.records.size());
  listener.ended = [&](const RowJob&, Record record) {
    if (record.ending.kind == Ending::Kind::notRun) return;
    told(record);
    RecordOf(run, record.row).experiments.push_back(std::move(record));
  };
  workers::PoolEnd end;
  while (left > 0 && end.kind == workers::PoolEnd::Kind::finished) {
    const std::vector<RowJob> jobs = JobsOf(ExperimentsFor(analysis, left), run);
    if (jobs.empty()) break;
    left -= jobs.size();
    end = RunRows(jobs, pool, listener);
    analysis.suspects = SuspectsOf(analysis.rows, run.info.device);
  }
  return end;
}

}  // namespace diagnosis
