#include "common/workers/exit_status.h"

#include <csignal>
#include <cstring>

namespace workers {

std::string TextOf(const ExitStatus& status) {
  if (!status.signalled) return "exit status " + std::to_string(status.value);
  const char* const name = sigabbrev_np(status.value);
  return name != nullptr ? "SIG" + std::string(name) : "signal " + std::to_string(status.value);
}

std::string_view LastLine(std::string_view text, std::size_t most) {
  const std::size_t last = text.find_last_not_of(" \r\n");
  text = text.substr(0, last == std::string_view::npos ? 0 : last + 1);
  return text.substr(text.find_last_of("\r\n") + 1).substr(0, most);
}

}  // namespace workers
