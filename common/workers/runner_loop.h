#pragma once

#include "common/workers/runner_process.h"

namespace workers {

/// The life of a runner: brings the driver up and does a task for each byte that comes from `wake`,
/// until that ends. Everything else that this process knows of its worker is in `memory`.
[[noreturn]] void RunnerLoop(const Runner& runner, RunnerMemory& memory, int wake) noexcept;

}  // namespace workers
