#include "diagnosis/execution/run_rows.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "diagnosis/capture/journal.h"
#include "diagnosis/execution/row_task.h"
#include "diagnosis/record/row_facts.h"

namespace diagnosis {
namespace {

using workers::Afterwards;
using workers::Answer;

workers::Job JobOf(const RowJob& row, std::size_t number, const RowsOptions& options,
                   bool sharesContext) {
  const RowFacts& facts = FactsOfRows().at(row.row);
  const int passes = std::max(row.passes, row.experiment.passes);
  const RowTask task = {.row = facts.row.name,
                        .conditions = {.seed = row.seed.value_or(options.seed),
                                       .drawsBefore = facts.drawsBefore,
                                       .stride = facts.row.stride,
                                       .buildOptions = row.buildOptions,
                                       .localSize = row.localSize,
                                       .experiment = row.experiment},
                        .passes = passes,
                        .sharesContext = sharesContext || row.experiment.passes > 1};
  return {.number = number,
          .task = Packed(task),
          .seconds = options.timeoutSeconds * passes,
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
  record.seed = job.seed.value_or(options.seed);
  record.experiment = job.experiment;
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

// Which rows share a context, and which are run once more in one of their own. After a row that is
// not right in its own, the next has its own too, until one is right: where much is wrong, no row
// is run twice for that.
class Contexts {
 public:
  Contexts(const std::vector<RowJob>& jobs, const RowsOptions& options,
           const RowsListener& listener)
      : jobs_(jobs), isOn_(options.shareContext && !options.isolate), isRight_(listener.isRight) {}

  // Of a run that is about to be made.
  bool Shares(std::size_t number) {
    const RowJob& job = jobs_[number];
    const bool shares = isOn_ && isTrusted_ && !job.freshWorker && job.passes == 1 &&
                        job.experiment.kind.empty() && !former_.contains(number);
    if (shares) sharing_.insert(number);
    return shares;
  }

  // A row to be run once more.
  std::optional<std::size_t> Next() {
    if (again_.empty()) return std::nullopt;
    const std::size_t number = again_.front();
    again_.pop_front();
    return number;
  }

  bool WasShared(std::size_t number) const { return sharing_.contains(number); }

  // Takes a run that has ended. False if it is not the last of its row; else the record has what is
  // to be said of the one before.
  bool IsOver(std::size_t number, Record& record) {
    if (!isOn_ || !jobs_[number].experiment.kind.empty()) return true;
    const bool isRun = record.ending.kind != Ending::Kind::notRun;
    if (isRun) isTrusted_ = IsRight(record);
    if (sharing_.erase(number) > 0 && isRun) {
      record.sharedContext = true;
      if (isTrusted_) return true;
      former_.insert_or_assign(number, std::move(record));
      again_.push_back(number);
      return false;
    }
    const auto former = former_.find(number);
    if (former == former_.end()) return true;
    if (!isRun) {
      record = std::move(former->second);
    } else if (!IsSameOutcome(record, former->second)) {
      record.inShared.push_back(std::move(former->second));
    }
    former_.erase(former);
    return true;
  }

  // Rows that were to be run once more, and are not reached.
  std::map<std::size_t, Record> Left() { return std::move(former_); }

 private:
  bool IsRight(const Record& record) const {
    if (isRight_) return isRight_(record);
    return record.ending.kind == Ending::Kind::returned && record.ending.value == 1 &&
           record.failedCalls.empty();
  }

  const std::vector<RowJob>& jobs_;
  bool isOn_;
  std::function<bool(const Record&)> isRight_;
  bool isTrusted_ = true;
  std::set<std::size_t> sharing_;         // that are under way
  std::map<std::size_t, Record> former_;  // that were not right in a shared context
  std::deque<std::size_t> again_;         // of these, those that are still to be run
};

}  // namespace

workers::PoolEnd RunRows(const std::vector<RowJob>& jobs, const RowsOptions& options,
                         const RowsListener& listener) {
  std::size_t given = 0;
  Contexts contexts(jobs, options, listener);
  workers::PoolListener pool;
  pool.next = [&]() -> std::optional<workers::Job> {
    std::optional<std::size_t> number = contexts.Next();
    if (!number && given == jobs.size()) return std::nullopt;
    if (!number) number = given++;
    return JobOf(jobs[*number], *number, options, contexts.Shares(*number));
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
    bool isSound = Fill(record, answer);
    // A call that fails may leave the context, too, as no row should find it.
    if (contexts.WasShared(job.number) && !record.failedCalls.empty()) isSound = false;
    if (contexts.IsOver(job.number, record)) listener.ended(jobs[job.number], std::move(record));
    return isSound ? Afterwards::keepRunner : Afterwards::endRunner;
  };
  pool.tick = listener.tick;
  workers::PoolOptions poolOptions = options;
  poolOptions.protocol = rowProtocol;
  workers::PoolEnd end = workers::RunJobs(poolOptions, pool);
  for (auto& [number, record] : contexts.Left()) listener.ended(jobs[number], std::move(record));
  for (; given < jobs.size(); ++given) {
    Record record = Blank(jobs[given], options);
    record.ending.reason = end.reason;
    listener.ended(jobs[given], std::move(record));
  }
  return end;
}

}  // namespace diagnosis
