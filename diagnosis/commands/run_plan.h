#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "common/command_line/program.h"
#include "diagnosis/execution/run_rows.h"
#include "diagnosis/record/record.h"
#include "diagnosis/record/select.h"
#include "diagnosis/verdict/row_result.h"

namespace diagnosis {

/// What `triage run` was told.
struct RunOptions {
  std::vector<std::string> patterns;
  RowsOptions pool;
  std::string buildOptions;
  std::uint64_t localSize = 0;
  std::string skipsFile;
  Skips skips;
  std::string baselineFile;
  Baseline baseline;
  bool updateBaseline = false;
  bool flakesFail = false;
  bool strict = false;
  int repeat = 1;                        // runs of each row
  std::optional<std::uint64_t> shuffle;  // the seed of their order
  int stopAfter = 0;                     // rows that did not end as expected; 0 for none
  std::string shard;                     // "2/4": the second of four parts
  std::string folder;
  bool replace = false;
  std::string resumed;  // folder of the run to go on with
  std::string rerun;    // folder of the run whose failures are to be run
  bool ktap = false;
  bool experiments = true;  // are made where the run leaves suspects open
};

/// What is to be run, and what is known of it already.
struct RunPlan {
  /// Each selected row has a record: its own if it has been run or is skipped, else as not run.
  Run run;
  Expectations expectations;
  bool isAgainstBaseline = false;  // what is not as expected is run once more
  RowsOptions pool;
  std::vector<RowJob> jobs;  // in their order
  int runsOfEach = 1;        // of the rows that are not skipped
};

/// Throws text::BadUse where there is nothing that could be run so.
RunPlan PlanOf(const RunOptions& options, const command_line::Call& call);

/// A part of a run's rows.
struct Shard {
  std::size_t number = 0;  ///< From 1.
  std::size_t count = 0;
};

/// Of "2/4", the second of four parts; zeros for anything else.
Shard ShardOf(const std::string& text);

/// Refuses what is no shard, "0/4" for instance. Throws text::BadUse.
void CheckShard(const std::string& shard);

/// The time, UTC, in ISO 8601.
std::string Now();

}  // namespace diagnosis
