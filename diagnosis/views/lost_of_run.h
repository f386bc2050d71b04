#pragma once

#include <string>

#include "diagnosis/record/record.h"

namespace diagnosis {

/// How many rows were run once more because their workers were lost, in a sentence with its line
/// end; empty if none was.
std::string LostOfRun(const Run& run);

}  // namespace diagnosis
