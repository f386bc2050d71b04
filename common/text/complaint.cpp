#include "common/text/complaint.h"

#include <fmt/format.h>

#include <cstdio>

#include "common/text/text.h"

namespace text {

void Complain(std::string_view program, std::string_view line) {
  const std::string whole = fmt::format("{}: {}\n", program, PrintableLine(line, 1000));
  std::fwrite(whole.data(), 1, whole.size(), stderr);
}

}  // namespace text
