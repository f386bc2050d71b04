#include "common/command_line/options.h"

#include <fmt/format.h>
#include <wordexp.h>

#include <charconv>
#include <string>
#include <system_error>

namespace command_line {
namespace {

// The number that is all of the text, if it is one in the range.
template <class Number>
bool IsIn(const std::string& text, Number least, Number most) {
  Number number{};
  const char* const end = text.data() + text.size();
  const auto [behind, error] = std::from_chars(text.data(), end, number);
  // A NaN is in no range.
  return error == std::errc() && behind == end && number >= least && number <= most;
}

// The empty name and description keep it out of the help, which has the type's.
CLI::Validator Check(std::function<std::string(std::string&)> check) {
  return {std::move(check), "", ""};
}

}  // namespace

CLI::Validator Whole(std::uint64_t least, std::uint64_t most) {
  return Check([least, most](const std::string& text) {
    return IsIn(text, least, most)
               ? std::string()
               : fmt::format("'{:.40}' is not a whole number from {} to {}", text, least, most);
  });
}

CLI::Validator Seconds(double least, double most) {
  return Check([least, most](const std::string& text) {
    return IsIn(text, least, most)
               ? std::string()
               : fmt::format("'{:.40}' is not a number from {} to {}", text, least, most);
  });
}

CLI::Validator NotEmpty() {
  return Check([](const std::string& text) {
    return text.empty() ? std::string("must not be empty") : std::string();
  });
}

std::vector<std::string> WordsOf(const std::string& option, const std::string& line) {
  wordexp_t expansion{};
  if (wordexp(line.c_str(), &expansion, WRDE_NOCMD) != 0)
    throw CLI::ValidationError(option, "cannot be split into words: " + line);
  std::vector<std::string> words(expansion.we_wordv, expansion.we_wordv + expansion.we_wordc);
  wordfree(&expansion);
  if (words.empty()) throw CLI::ValidationError(option, "names no command");
  return words;
}

}  // namespace command_line
