#pragma once

#include <string>

#include "exploration/record/run_record.h"

namespace exploration {

/// A program in C99 that shows the fault by itself: it ends with 0 if the device is right, 1 if the
/// answers are wrong, and 2 if a call fails.
std::string ReproducerOf(const Fault& fault, const RunRecord& run);

}  // namespace exploration
