#pragma once

#include <functional>

#include "common/workers/jobs.h"
#include "diagnosis/execution/run_rows.h"
#include "diagnosis/localization/analysis.h"
#include "diagnosis/record/record.h"

namespace diagnosis {

/// Whether they are one device, as far as is known.
bool IsSame(const Device& one, const Device& other);

/// Asks the device what the records of the run leave open, as often as a run of its size may cost:
/// the experiments go into their rows' records, each is told as it ends, and the analysis, which is
/// of the run, names the suspects that are left. Throws text::BadUse if the device is not that of
/// the run.
workers::PoolEnd Ask(Run& run, Analysis& analysis, const RowsOptions& pool,
                     const std::function<void(const Record&)>& told);

}  // namespace diagnosis
