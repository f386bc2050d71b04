#pragma once

#include <string>
#include <vector>

#include "diagnosis/localization/suspects.h"
#include "diagnosis/record/record.h"

namespace diagnosis {

/// "asked once: lanes-unwritten, not answers-0x00000000", of one decision.
std::string TextOf(const Decision& decision);

/// What experiments have decided in a run, in a sentence with its line end; empty if none was made
/// that tells anything.
std::string ExperimentsOfRun(const Suspects& suspects);

/// The experiments on a row, several lines each: what was changed, what each suspect predicted and
/// what came.
std::vector<std::string> ExperimentsOn(const Record& record);

}  // namespace diagnosis
