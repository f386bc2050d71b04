#include "common/text/configuration_lines.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <string_view>

#include "common/text/bad_use.h"

namespace text {

std::vector<Line> LinesOf(const std::string& path) {
  const auto refuse = [&path] {
    throw BadUse(fmt::format("cannot read {}: {}", path, std::strerror(errno)));
  };
  errno = 0;
  std::ifstream file(path);
  if (!file) refuse();
  std::vector<Line> lines;
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    if (number == 1 && line.starts_with("\xEF\xBB\xBF"))
      throw BadUse(path + ":1: begins with a byte-order mark, which is no part of a name");
    std::string_view text = line;
    text = text.substr(0, text.find('#'));
    constexpr std::string_view blanks = " \t\r";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    text = text.substr(0, text.find_last_not_of(blanks) + 1);
    if (!text.empty()) lines.push_back({fmt::format("{}:{}", path, number), std::string(text)});
  }
  if (file.bad()) refuse();
  return lines;
}

}  // namespace text
