#pragma once

#include "exploration/program/program.h"
#include "exploration/program/runnable.h"

namespace exploration {

/// Checks and executes the program: its text, its buffers and what it must answer, without the
/// features. Throws Invalid if the program is not valid.
RunnableProgram Modelled(const Program& program);

}  // namespace exploration
