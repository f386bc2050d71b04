#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

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

/// The life of a runner: brings the driver up and does a task for each byte that comes from `wake`,
/// until that ends. Everything else that this process knows of its worker is in `memory`.
[[noreturn]] void RunnerLoop(const Runner& runner, RunnerMemory& memory, int wake) noexcept;

}  // namespace workers
