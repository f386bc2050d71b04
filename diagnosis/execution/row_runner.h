#pragma once

#include "common/workers/runner.h"

namespace diagnosis {

/// Brings OpenCL up and runs rows behind the boundary; tasks and answers are those of row_task.h
/// and the journal.
extern const workers::Runner rowRunner;

}  // namespace diagnosis
