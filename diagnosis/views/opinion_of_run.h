#pragma once

#include <string>

#include "diagnosis/localization/analysis.h"

namespace diagnosis {

/// The second opinion on a whole run for a person: a sentence or two, or a table where rows are of
/// more than two kinds, with the fewest suspects behind it. Line ends included; empty if there is
/// no opinion on any row.
std::string OpinionOnRun(const Analysis& analysis);

}  // namespace diagnosis
