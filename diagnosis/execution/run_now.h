#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "common/workers/pool.h"
#include "diagnosis/record/record.h"

namespace diagnosis {

/// There is no GPU device to run rows on. The program says why in one line, and ends with 3.
class NothingToRunOn : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Runs jobs for a view that wants their records and nothing else, in the jobs' order. Throws
/// NothingToRunOn, or std::runtime_error if it is interrupted.
Run RunNow(const std::vector<Job>& jobs, const PoolOptions& options);

/// The run that was written into `folder`, if that is not empty; else these rows, run now. Throws
/// BadUse if the folder holds no run, or one without one of the rows.
Run RunOf(const std::vector<std::size_t>& rowsWanted, const std::string& folder,
          const PoolOptions& options);

}  // namespace diagnosis
