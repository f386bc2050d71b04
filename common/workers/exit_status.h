#pragma once

#include <string>
#include <string_view>

namespace workers {

/// How a process ended.
struct ExitStatus {
  bool signalled = false;
  int value = 0;  // signal or status
};

/// "exit status 3", "SIGSEGV".
std::string TextOf(const ExitStatus& status);

/// The last line of what a process wrote, which is the one that says why it ended: without its end,
/// and no more than `most` bytes of it.
std::string_view LastLine(std::string_view text, std::size_t most = 200);

}  // namespace workers
