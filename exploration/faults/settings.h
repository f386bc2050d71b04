#pragma once

#include <string>
#include <vector>

#include "exploration/faults/investigation.h"

namespace exploration {

/// A program, or a way to build it, that is other than a fault's in one thing.
struct Variant {
  std::string name;
  Task task;
  std::string cannot;     ///< Why it can't be tried; empty if it can.
  bool isMemory = false;  ///< The objects lie in another address space.
};

/// All that are worth trying on what a shrunken program is.
std::vector<Variant> VariantsOf(const Program& program, const InvestigationOptions& options);

/// A task of a program as the options have it run.
Task TaskOf(const RunnableProgram& program, const InvestigationOptions& options);

}  // namespace exploration
