#pragma once

#include <string>

#include "diagnosis/record/record.h"

namespace diagnosis {

/// What follows from a driver's drawing from rand, in a sentence with its line end; empty if it did
/// not.
std::string DrawsOfRun(const Run& run);

}  // namespace diagnosis
