#pragma once

#include "common/workers/runner.h"

namespace exploration {

/// Brings OpenCL up once, with one context and one queue, says what Device it is and does Tasks on
/// it. Every program is run twice.
extern const workers::Runner deviceRunner;

/// Does tasks that name a compiler; needs no device. The word makes the program a worker with it.
extern const workers::Runner compilerRunner;
inline constexpr const char* compilerWord = "compiler-worker";

}  // namespace exploration
