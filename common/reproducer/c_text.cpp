#include "common/reproducer/c_text.h"

#include <fmt/format.h>

#include <algorithm>

#include "common/text/text.h"

namespace reproducer {

namespace {

constexpr std::size_t columns = 100;

/// ASCII that can stand in a comment: nothing in it ends the comment, begins another, or is a
/// trigraph.
std::string InComment(std::string_view text) {
  std::string safe;
  for (const char c : text::PrintableLine(text, 1000)) {
    const char before = safe.empty() ? '\0' : safe.back();
    if ((before == '*' && c == '/') || (before == '/' && c == '*') || (before == '?' && c == '?'))
      safe += ' ';
    if (static_cast<unsigned char>(c) < 0x80) {
      safe += c;
    } else {
      safe += fmt::format("\\x{:02X}", static_cast<unsigned char>(c));
    }
  }
  return safe;
}

/// Lines of a comment: the label, and behind it the text, which goes on below itself.
std::string LinesOf(const Remark& remark) {
  const std::string safe = InComment(remark.text);
  constexpr std::size_t indentation = 12;
  const std::size_t width = columns - 3 - indentation;
  std::string lines;
  for (std::string_view rest = safe; !rest.empty() || lines.empty();) {
    std::size_t length = std::min(rest.size(), width);
    if (length < rest.size()) {
      const std::size_t blank = rest.rfind(' ', length);
      if (blank != std::string_view::npos && blank > 0) length = blank;
    }
    lines +=
        fmt::format(" * {:<12}{}\n", lines.empty() ? remark.label : "", rest.substr(0, length));
    rest.remove_prefix(length);
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
  }
  return lines;
}

/// A string literal, in as many pieces as its length takes, those behind the first on lines of
/// their own.
std::string Literal(std::string_view text, std::string_view indentation) {
  constexpr std::size_t most = 80;
  constexpr std::size_t nearMost = 60;
  std::string literal = "\"";
  std::size_t length = 0;
  for (const char c : text) {
    if (length >= most || (length >= nearMost && literal.back() == ' ')) {
      literal += fmt::format("\"\n{}\"", indentation);
      length = 0;
    }
    std::string escaped;
    if (c == '"' || c == '\\' || c == '?') {  // a question mark may belong to a trigraph
      escaped = {'\\', c};
    } else if (c >= ' ' && c <= '~') {
      escaped = c;
    } else {
      escaped = fmt::format("\\{:03o}", static_cast<unsigned char>(c));
    }
    literal += escaped;
    length += escaped.size();
  }
  return literal + '"';
}

std::string LinesOfSource(std::string_view source) {
  std::string lines;
  while (!source.empty()) {
    const std::string_view line = source.substr(0, source.find('\n'));
    const std::size_t length = line.find_last_not_of(' ') + 1;
    lines += fmt::format("    {{{}, {}}},\n", Literal(line.substr(0, length), "     "),
                         line.size() - length);
    source.remove_prefix(std::min(line.size() + 1, source.size()));
  }
  return lines;
}

}  // namespace

std::string HeadOf(const std::vector<Remark>& head) {
  std::string text = "/*\n";
  for (const Remark& remark : head) text += LinesOf(remark);
  return text + " */\n";
}

std::string TextsOf(std::string_view source, std::string_view kernel,
                    std::string_view buildOptions) {
  return "/* The kernel's text: its lines, and the number of blanks behind each. */\n"
         "static const struct {\n  const char* text;\n  int blanks;\n} lines[] = {\n" +
         LinesOfSource(source) + "};\n\n" +
         fmt::format("static const char kernelName[] = {};\n", Literal(kernel, "    ")) +
         fmt::format("static const char* const buildOptions = {};\n\n",
                     buildOptions.empty() ? "NULL" : Literal(buildOptions, "    "));
}

}  // namespace reproducer
