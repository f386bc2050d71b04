#pragma once

#include <string>
#include <vector>

#include "exploration/record/run_record.h"

namespace exploration {

/// "out, byte 8: the answer is 0x00, right is 0x2A", a line for each byte, but for no more than
/// `most`; with `customary` of those that nobody has promised.
std::vector<std::string> DifferenceLines(const RunnableProgram& program, const Outcome& outcome,
                                         std::size_t most, bool customary = false);

/// What there is to say of an outcome beside its name: the first bytes that differ, or the first
/// lines of what was printed. Lines with two blanks before each.
std::string DetailsTold(const RunnableProgram& program, const Outcome& outcome);

/// For standard output: the title and the shrunken program.
std::string FaultTold(const Fault& fault);

}  // namespace exploration
