#pragma once

#include <string>

#include "exploration/record/run_record.h"

namespace exploration {

/// The run as a page that needs nothing else: its faults first, and then of each pair of features
/// how many programs had both and how many of these were wrong.
std::string PageOf(const RunRecord& run);

}  // namespace exploration
