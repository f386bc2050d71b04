#pragma once

#include "common/outputs/reporter.h"
#include "diagnosis/localization/analysis.h"

namespace diagnosis {

/// What a run came to, for whoever waits at its end.
outputs::Summary EndOfRun(const Analysis& analysis);

}  // namespace diagnosis
