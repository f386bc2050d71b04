#pragma once

#include <map>
#include <string>

#include "diagnosis/verdict/ledger.h"

namespace diagnosis {

/// Expected results by row. A row that is not named is expected to pass. Flake expects a row to end
/// in one way or another. Skip and Missing are no results: the row may also pass.
using Baseline = std::map<std::string, Status, std::less<>>;

/// Reads `test,status` a line, comments behind a `#`; a first line that says just that is the head.
/// A test is a name or glob; "!GLOB" takes rows out again; the later of two lines counts. Throws
/// BadUse, with the line, for a row or status that there is not, a name twice, or another form.
Baseline ReadBaseline(const std::string& path);

}  // namespace diagnosis
