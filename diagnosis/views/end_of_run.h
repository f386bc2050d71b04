#pragma once

#include <string>
#include <vector>

#include "diagnosis/localization/analysis.h"

namespace diagnosis {

/// What `triage run` does with a whole run at its end. `folder` is where the run was written, or
/// empty. Returns what there is to say of it, line ends included.
using EndOfRunView = std::string (*)(const Analysis& analysis, const std::string& folder);

/// In their order. A view is added here and nowhere else.
const std::vector<EndOfRunView>& EndOfRunViews();

}  // namespace diagnosis
