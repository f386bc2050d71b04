#pragma once

#include <string>

#include "exploration/record/run_record.h"

namespace exploration {

/// The run as JUnit: a case a fault, which failed, or one that passed if there is none; of a run
/// that did not finish a further one, which is an error, and none that passed.
std::string JUnitOf(const RunRecord& run);

}  // namespace exploration
