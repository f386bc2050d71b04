#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "common/workers/descriptor.h"
#include "common/workers/exit_status.h"
#include "common/workers/jobs.h"
#include "common/workers/runner.h"

namespace workers {

/// What a worker and its runner have in common. All that one tells the other is in here, because
/// whatever goes through a file descriptor the driver can write, read or close as well; the socket
/// between them only wakes the other side.
struct RunnerMemory {
  enum class State : std::uint32_t { starting, ready, noDevice };

  std::atomic<State> state = State::starting;
  std::atomic<std::uint32_t> asked = 0;  // counts the tasks
  std::atomic<std::uint32_t> begun = 0;  // the last of them that the runner has taken up
  std::atomic<std::uint32_t> done = 0;   // and that has ended

  SharedBytes answer;  // to the last task

  /// What the runner found when it brought the driver up; then the task that it is asked to do.
  /// What is longer than `longestTask` is cut.
  void SetMessage(std::string_view bytes);
  std::string_view Message() const;

  /// As it was made, for another runner.
  void Reset();

 private:
  std::size_t messageSize_ = 0;
  char message_[longestTask];
};

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
