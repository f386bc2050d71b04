#include "common/workers/runner_loop.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace workers {
namespace {

// The worker's wake, or its end. Without a socket, which the driver may have closed, the process
// ends too: the worker sees that, and what was answered is in memory.
bool Wait(int wake) {
  char any = 0;
  ssize_t size = 0;
  do size = read(wake, &any, 1);
  while (size < 0 && errno == EINTR);
  return size == 1;
}

[[noreturn]] void End(const Runner& runner) {
  if (runner.end != nullptr) runner.end();
  std::exit(0);
}

bool WakeWorker(int wake) { return write(wake, "", 1) == 1; }

}  // namespace

void SharedBytes::Clear() { size_ = 0; }

bool SharedBytes::Append(std::initializer_list<std::span<const std::byte>> parts) {
  std::size_t size = size_;
  for (const std::span<const std::byte> part : parts) {
    if (size > capacity || part.size() > capacity - size) return false;
    if (!part.empty()) std::memcpy(bytes_ + size, part.data(), part.size());
    size += part.size();
  }
  size_.store(size, std::memory_order_release);
  return true;
}

std::string_view SharedBytes::Written() const {
  const std::size_t size = size_.load(std::memory_order_acquire);
  return {reinterpret_cast<const char*>(bytes_), size <= capacity ? size : 0};
}

void RunnerMemory::SetMessage(std::string_view bytes) {
  messageSize_ = std::min(bytes.size(), longestTask);
  std::memcpy(message_, bytes.data(), messageSize_);
}

std::string_view RunnerMemory::Message() const {
  return {message_, std::min(messageSize_, longestTask)};
}

void RunnerMemory::Reset() {
  state = State::starting;
  asked = 0;
  begun = 0;
  done = 0;
  answer.Clear();
  messageSize_ = 0;
}

void RunnerLoop(const Runner& runner, RunnerMemory& memory, int wake) noexcept {
  const BroughtUp found = runner.bringUp();
  memory.SetMessage(found.text);
  memory.state = found.hasDevice ? RunnerMemory::State::ready : RunnerMemory::State::noDevice;
  while (WakeWorker(wake)) {
    while (memory.done == memory.asked) {
      if (!Wait(wake)) End(runner);
    }
    memory.begun = memory.asked.load();
    runner.run(memory.Message(), memory.answer);
    memory.done = memory.begun.load();
  }
  End(runner);
}

}  // namespace workers
