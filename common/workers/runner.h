#pragma once

#include <atomic>
#include <cstddef>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

namespace workers {

/// Bytes that only grow, in memory that outlives the process that writes them, so that nothing is
/// lost when the driver ends it; and nothing is allocated, which the driver may have spoilt.
class SharedBytes {
 public:
  static constexpr std::size_t capacity = 4 << 20;

  void Clear();

  /// Adds these parts, all of them or, if there is no room, none.
  bool Append(std::initializer_list<std::span<const std::byte>> parts);

  /// All that was written, or nothing if the size cannot be true.
  std::string_view Written() const;

 private:
  std::atomic<std::size_t> size_;
  std::byte bytes_[capacity];
};

/// What a runner found when it brought the driver up.
struct BroughtUp {
  bool hasDevice = false;
  std::string text;  // what is to be known of the device; or why there is none, in one line
};

/// What is done in a runner, the process in which the driver lives. What either throws ends the
/// process. Standard output and standard error are kept and come with the answer.
struct Runner {
  const char* protocol;  // names the program and the version of its tasks and answers
  BroughtUp (*bringUp)();
  void (*run)(std::string_view task, SharedBytes& answer);
  void (*end)() = nullptr;  // before the process ends by itself
};

/// What the program does when it is called as a worker: has one runner after the other, tells them
/// their tasks, and the pool what became of these. Standard input and standard output are the
/// pool's. Returns the program's status.
int WorkerMain(const Runner& runner);

}  // namespace workers
