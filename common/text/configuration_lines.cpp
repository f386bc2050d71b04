#include "common/text/configuration_lines.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string_view>

#include "common/text/bad_use.h"

namespace text {

std::vector<Line> LinesOf(const std::string& path) {
  const auto refuse = [&path] {
    throw BadUse(fmt::format("cannot read {}: {}", path, std::strerror(errno)));
  };
  errno = 0;
  std::ifstream stream(path, std::ios::binary);
  if (!stream) refuse();
  // Some devices never end.
  constexpr std::size_t most = 16 << 20;
  std::string bytes;
  for (char some[65536]; stream.read(some, sizeof some).gcount() > 0 && bytes.size() <= most;)
    bytes.append(some, static_cast<std::size_t>(stream.gcount()));
  if (stream.bad()) refuse();
  if (bytes.size() > most) throw BadUse(path + " is no list: it is longer than 16 MiB");
  std::istringstream file(bytes);
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
  return lines;
}

}  // namespace text
