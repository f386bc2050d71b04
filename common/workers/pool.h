#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "diagnosis/record/record.h"

namespace diagnosis {

/// A row to be run, and what is put between the suite and OpenCL for it.
struct Job {
  std::size_t row = 0;  // index in `rows` (harness/rows.h)
  std::string buildOptions = {};
  std::uint64_t localSize = 0;
  int passes = 1;  // how often the row is run in the same process; the last one is recorded
  bool freshWorker = false;
};

/// How jobs are run.
struct PoolOptions {
  int workers = 1;
  double timeoutSeconds = 60;         // a row
  bool isolate = false;               // a fresh worker for every row
  std::vector<std::string> launcher;  // words before the worker's command
  std::string program;                // the worker's own, as the launcher finds it; empty: this one
  std::uint32_t seed = 1;
  std::string folder;  // where workers start; empty for the caller's own
};

/// What is told of a run while it lasts, all on the caller's thread.
struct PoolListener {
  std::function<void(const Device&)> device;         // once, before the first row
  std::function<void(const Job&)> started;           // before the worker is told to
  std::function<void(const Job&, Record)> ended;     // once for every job, in the order they end
  std::function<void()> tick;                        // every second, whatever happens
  std::function<void(const std::string&)> noDevice;  // why there is none: the run ends so
};

/// In the reason of a row's ending, before how the worker was lost.
inline constexpr std::string_view runOnceMore = "run once more after the first worker was lost: ";

/// How a run of jobs ended.
enum class PoolEnd { finished, interrupted, noDevice };

/// Runs every job in worker processes and returns when each has ended; what was not reached ends as
/// a record whose ending is `notRun`. SIGINT and SIGTERM end the run: the rows in flight are ended
/// too, and the rest is not reached.
///
/// A row whose worker was lost behind a launcher is run once more in a new one, and its record is
/// that of the second run; its ending's reason says so. Throws std::runtime_error if the system
/// refuses what a run needs.
PoolEnd RunJobs(const std::vector<Job>& jobs, const PoolOptions& options,
                const PoolListener& listener);

}  // namespace diagnosis
