#pragma once

#include "common/command_line/program.h"
#include "diagnosis/commands/run_plan.h"

namespace diagnosis {

/// Runs the rows, says on standard output what becomes of each, and writes the folder if one is
/// named. Returns the program's status. Throws text::BadUse and text::CannotWrite before any row is
/// run; whatever cannot be written later costs no row.
int RunTriage(const RunOptions& options, const command_line::Call& call);

}  // namespace diagnosis
