#pragma once

#include <string>
#include <vector>

#include "diagnosis/execution/run_rows.h"
#include "diagnosis/record/record.h"

namespace diagnosis {

/// Runs jobs for a view that wants their records and nothing else, in the jobs' order. Throws
/// text::NothingToRunOn, or std::runtime_error if it is interrupted.
Run RunNow(const std::vector<RowJob>& jobs, const RowsOptions& options);

/// The run that was written into `folder`, if that is not empty; else these rows, run now. Throws
/// BadUse if the folder holds no run, or one without one of the rows.
Run RunOf(const std::vector<std::size_t>& rowsWanted, const std::string& folder,
          const RowsOptions& options);

}  // namespace diagnosis
