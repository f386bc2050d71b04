#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "common/workers/descriptor.h"
#include "common/workers/exit_status.h"
#include "common/workers/runner.h"
#include "common/workers/runner_loop.h"

namespace workers {

/// The child of a worker in which the driver lives, one after the other. It has a process group of
/// its own, of which nothing is left when it is dead, and it does not outlive the worker.
class RunnerProcess {
 public:
  explicit RunnerProcess(const Runner& runner);
  RunnerProcess(const RunnerProcess&) = delete;
  RunnerProcess& operator=(const RunnerProcess&) = delete;
  ~RunnerProcess();

  /// Forks one, where there is none. Throws std::system_error if the system refuses.
  void Start();

  /// Tells it to do a task, which has begun when `begun` is the number that is returned.
  std::uint32_t Ask(std::string_view task);

  bool IsThere() const { return process_ != 0; }
  bool HasBeenAsked() const { return IsThere() && memory_->asked != 0; }
  const RunnerMemory& Memory() const { return *memory_; }
  /// How the last one ended.
  const ExitStatus& Status() const { return status_; }

  /// To be polled for input, with Hear behind it. Negative if there is nothing to be heard.
  int Wake() const { return wake_.Number(); }
  int Output() const { return output_.Number(); }
  void HearWake();
  void HearOutput();

  /// What it printed since this was last called.
  std::string TakePrinted();

  /// Whether there is no process any more.
  bool Reap();

  /// Tells it to end when it has nothing to do.
  void AskToEnd() const;

  void Kill();

 private:
  [[noreturn]] void BecomeRunner(pid_t worker, int wake, int output);
  void Forget();

  const Runner& runner_;
  RunnerMemory* memory_ = nullptr;
  pid_t process_ = 0;
  ExitStatus status_;
  Descriptor wake_;
  Descriptor output_;
  std::string printed_;
};

}  // namespace workers
