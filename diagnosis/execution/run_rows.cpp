#include "diagnosis/execution/run_rows.h"

#include <optional>
#include <utility>

#include "diagnosis/capture/journal.h"
#include "diagnosis/execution/row_task.h"
#include "diagnosis/record/row_facts.h"

namespace diagnosis {
namespace {

using workers::Afterwards;
using workers::Answer;

workers::Job JobOf(const RowJob& row, std::size_t number, const RowsOptions& options) {
  const RowFacts& facts = FactsOfRows().at(row.row);
  const RowTask task = {.row = facts.row.name,
                        .conditions = {.seed = options.seed,
                                       .drawsBefore = facts.drawsBefore,
                                       .stride = facts.row.stride,
                                       .buildOptions = row.buildOptions,
                                       .localSize = row.localSize},
                        .passes = row.passes};
  return {.number = number,
          .task = Packed(task),
          .seconds = options.timeoutSeconds * row.passes,
          .freshRunner = row.freshWorker || options.isolate};
}

Ending::Kind KindOf(workers::Ending ending) {
  switch (ending) {
    case workers::Ending::notRun:
      break;
    case workers::Ending::returned:
      return Ending::Kind::returned;
    case workers::Ending::exited:
      return Ending::Kind::exited;
    case workers::Ending::signalled:
      return Ending::Kind::signalled;
    case workers::Ending::timedOut:
      return Ending::Kind::timedOut;
    case workers::Ending::lost:
      return Ending::Kind::lost;
  }
  return Ending::Kind::notRun;
}

// A record in which nothing has come to pass.
Record Blank(const RowJob& job, const RowsOptions& options) {
  Record record;
  record.row = FactsOfRows().at(job.row).row.name;
  record.seed = options.seed;
  record.buildOptions = job.buildOptions;
  record.localSize = job.localSize;
  return record;
}

// Puts the answer into a blank record. What the row did is in the journal; how it ended, only if it
// returned. False if the driver has written where only the journal is.
bool Fill(Record& record, const Answer& answer) {
  record.driver = answer.printed;
  const bool sound = ReadJournal(answer.bytes, record);
  const bool returned = record.ending.kind == Ending::Kind::returned;
  const bool agrees = sound && (returned || answer.ending != workers::Ending::returned);
  if (!agrees) {
    record.ending = {.kind = Ending::Kind::lost,
                     .value = 0,
                     .reason = "the driver has overwritten the row's own record"};
  } else if (!returned || answer.ending != workers::Ending::returned) {
    record.ending = {.kind = KindOf(answer.ending), .value = answer.value, .reason = answer.reason};
    record.seconds = answer.seconds;
  }
  record.ending.lostFirst = answer.lostFirst;
  return agrees;
}

}  // namespace

workers::PoolEnd RunRows(const std::vector<RowJob>& jobs, const RowsOptions& options,
                         const RowsListener& listener) {
  std::size_t given = 0;
  workers::PoolListener pool;
  pool.next = [&]() -> std::optional<workers::Job> {
    if (given == jobs.size()) return std::nullopt;
    const std::size_t number = given++;
    return JobOf(jobs[number], number, options);
  };
  pool.device = [&](const std::string& device) {
    const FoundDevice found = FoundDeviceFrom(device);
    if (listener.device) listener.device(found.device, found.provenance);
  };
  pool.started = [&](const workers::Job& job) {
    if (listener.started) listener.started(jobs[job.number]);
  };
  pool.ended = [&](const workers::Job& job, const Answer& answer) {
    Record record = Blank(jobs[job.number], options);
    const bool sound = Fill(record, answer);
    listener.ended(jobs[job.number], std::move(record));
    return sound ? Afterwards::keepRunner : Afterwards::endRunner;
  };
  pool.tick = listener.tick;
  workers::PoolOptions poolOptions = options;
  poolOptions.protocol = rowProtocol;
  const workers::PoolEnd end = workers::RunJobs(poolOptions, pool);
  for (; given < jobs.size(); ++given) {
    Record record = Blank(jobs[given], options);
    record.ending.reason = end.reason;
    listener.ended(jobs[given], std::move(record));
  }
  return end;
}

}  // namespace diagnosis
