#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "common/workers/jobs.h"
#include "common/workers/runner.h"
#include "diagnosis/record/record.h"

namespace diagnosis {

/// A row to be run, and what is put between the suite and OpenCL for it.
struct RowJob {
  std::size_t row = 0;  // index in `rows` (harness/rows.h)
  std::string buildOptions = {};
  std::uint64_t localSize = 0;
  int passes = 1;  // how often the row is run in the same process; the last one is recorded
  bool freshWorker = false;
  Experiment experiment = {};              // its passes count in place of `passes`, in one context
  std::optional<std::uint32_t> seed = {};  // in place of the run's
};

/// How rows are run. The timeout is a pass's too.
struct RowsOptions : workers::PoolOptions {
  bool isolate = false;  // a fresh worker for every row
  /// The rows of a runner share one context. One that is not right there is run once more in a
  /// context of its own, and that run is its record.
  bool shareContext = false;
  std::uint32_t seed = 1;
};

/// What is told of a run while it lasts, all on the caller's thread. The jobs are those in the
/// caller's own list.
struct RowsListener {
  std::function<void(const Device&, const Provenance&)> device;  // once, before the first row
  std::function<void(const RowJob&)> started;                    // before the worker is told to
  std::function<void(const RowJob&, Record)> ended;  // once for every job, in the order they end
  /// Whether nothing is wrong with a row that was run; asked only where contexts are shared. If it
  /// is not set, one that came back with success and without a call that failed is right.
  std::function<bool(const Record&)> isRight;
  std::function<void()> tick;  // every second, whatever happens
};

/// Runs every job in worker processes and returns when each has ended; what was not reached ends as
/// a record whose ending is `notRun`, with the reason. If a row was run once more, because its
/// first worker was lost, its record is that of the second run, and its ending says so.
/// `started` is told of each run.
///
/// Throws what the listener throws, and std::runtime_error if the system refuses what a run needs.
workers::PoolEnd RunRows(const std::vector<RowJob>& jobs, const RowsOptions& options,
                         const RowsListener& listener);

/// What the workers are to be that it has: OpenCL, and rows behind the boundary.
extern const workers::Runner rowRunner;

}  // namespace diagnosis
