#include "common/reproducer/reproducer.h"

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

std::string BytesOf(const std::vector<std::uint8_t>& bytes, std::size_t stride) {
  std::string text = "  {";
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const std::size_t at = i % stride;
    if (at == 0) text += fmt::format("\n    /* element {} */", i / stride);
    text += fmt::format("{}0x{:02X},", at % 16 == 0 ? "\n    " : " ", bytes[i]);
  }
  return text + "\n  },\n";
}

std::string NumbersOf(const Case& made) {
  const struct {
    const char* name;
    std::uint64_t value;
    const char* meaning;
  } numbers[] = {
      {"sourceSize", made.source.size(), ""},
      {"inputCount", made.inputs.size(), "buffers that are read; one more is written"},
      {"elements", static_cast<std::uint64_t>(made.elements), "that are filled and looked at"},
      {"lanes", static_cast<std::uint64_t>(made.lanes),
       "words of 32 bits in an element that are looked at"},
      {"stride", made.stride, "bytes from one element to the next"},
      {"globalSize", made.globalSize, "work-items, and elements that a buffer has room for"},
      {"repetitions", static_cast<std::uint64_t>(made.repetitions),
       "at most: the first wrong one ends it"},
      {"countArgument", made.countArgument ? 1U : 0U,
       "whether the kernel's last argument is the number of elements"},
      {"floatAnswers", made.floatAnswers ? 1U : 0U, "whether an answer is shown as a float too"},
  };
  std::string text = "enum {\n";
  for (const auto& [name, value, meaning] : numbers) {
    const std::string number = fmt::format("{} = {},", name, value);
    text += *meaning == '\0' ? fmt::format("  {}\n", number)
                             : fmt::format("  {:<18} /* {} */\n", number, meaning);
  }
  return text + "};\n";
}

std::string HeadOf(const Case& made) {
  std::string text = "/*\n";
  for (const Remark& remark : made.head) text += LinesOf(remark);
  return text + " */\n";
}

std::string TextOf(const Case& made) {
  std::string text =
      "/* The kernel's text: its lines, and the number of blanks behind each. */\n"
      "static const struct {\n  const char* text;\n  int blanks;\n} lines[] = {\n" +
      LinesOfSource(made.source) + "};\n\n";
  text += fmt::format("static const char kernelName[] = {};\n", Literal(made.kernel, "    "));
  text += fmt::format("static const char* const buildOptions = {};\n\n",
                      made.buildOptions.empty() ? "NULL" : Literal(made.buildOptions, "    "));
  text += NumbersOf(made);
  text += fmt::format("static const size_t localSize = {}U; /* 0 leaves it to the driver */\n\n",
                      made.localSize);
  text += fmt::format(
      "/* CL_DEVICE_SINGLE_FP_CONFIG of the device that the answers are for, and its bits on "
      "which\n"
      "   they depend. */\n"
      "static const cl_device_fp_config assumed = 0x{:X};\n"
      "static const cl_device_fp_config assumedBits = 0x{:X};\n\n",
      made.assumed, made.assumedBits);
  text +=
      "/* The elements as they go to the device, input by input. What lies behind them is zero. "
      "*/\n"
      "static const unsigned char inputs[inputCount + 1][elements * stride] = {\n";
  for (const std::vector<std::uint8_t>& input : made.inputs) text += BytesOf(input, made.stride);
  if (made.inputs.empty()) text += "    {0},\n";
  text +=
      "};\n\n/* The answers that are right: bits from `first` to `last`. Of a lane's lines any "
      "will "
      "do. */\n"
      "static const struct {\n  int element, lane;\n  cl_uint first, last;\n} right[] = {\n";
  for (const Right& one : made.right)
    text += fmt::format("    {{{}, {}, 0x{:08X}, 0x{:08X}}}, /* {} */\n", one.element, one.lane,
                        one.first, one.last, one.value);
  return text + "};\n";
}

}  // namespace

std::string ProgramOf(const Case& made) {
  // The frame's own head, its includes, its example, and what is the same in every program.
  constexpr std::string_view behindHead = " */\n";
  constexpr std::string_view beforeCase = "/* ---- the case ---- */\n";
  constexpr std::string_view behindCase = "/* ---- the frame ---- */\n";
  const std::string_view text = frame;
  const std::size_t includes = text.find(behindHead) + behindHead.size();
  const std::size_t example = text.find(beforeCase);
  const std::size_t rest = text.find(behindCase) + behindCase.size();
  return HeadOf(made).append(text.substr(includes, example - includes)) +
         TextOf(made).append(text.substr(rest));
}

Remark HowToCompile(std::string_view file) {
  std::string name(file.substr(file.rfind('/') + 1));
  // Else it would be an option.
  if (name.starts_with('-')) name.insert(0, "./");
  constexpr std::string_view suffix = ".c";
  const bool isC = name.size() > suffix.size() && name.ends_with(suffix);
  const std::string program = isC ? name.substr(0, name.size() - suffix.size()) : name + ".out";
  std::vector<std::string> words = {"cc", "-std=c99", "-o", program};
  if (!isC) words.insert(words.end(), {"-x", "c"});
  words.insert(words.end(), {name, "-lOpenCL"});
  return {"Compile:", text::ShellWords(words)};
}

}  // namespace reproducer
