#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "diagnosis/capture/journal.h"

namespace diagnosis {

/// What a worker and its runner, the child in which OpenCL lives, have in common. All that one
/// tells the other is in here, because whatever goes through a file descriptor the driver can
/// write, read or close as well; the socket between them only wakes the other side.
struct RunnerMemory {
  enum class State : std::uint32_t { starting, ready, noDevice };

  std::atomic<State> state;
  std::atomic<std::uint32_t> asked;  // counts the tasks
  std::atomic<std::uint32_t> begun;  // the last of them that the runner has taken up
  std::atomic<std::uint32_t> done;   // and that has ended

  /// The Device, when the runner is ready, or why there is none; then the Task that it is asked to
  /// do.
  void SetMessage(std::string_view bytes);
  std::string_view Message() const;

  Journal journal;  // of the last row

  static constexpr std::size_t longestMessage = 1 << 20;

 private:
  std::size_t messageSize_;
  char message_[longestMessage];
};

/// The life of a runner: brings OpenCL up and runs a row for each byte that comes from `wake`,
/// until that ends. Everything else that this process knows of its worker is in `memory`. What the
/// driver throws ends the process, as it ends the suite's.
[[noreturn]] void RunnerMain(RunnerMemory& memory, int wake) noexcept;

}  // namespace diagnosis
