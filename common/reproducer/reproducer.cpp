#include "common/reproducer/reproducer.h"

#include <fmt/format.h>

#include "common/reproducer/c_text.h"
#include "common/text/text.h"

namespace reproducer {

namespace {

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

std::string TextOf(const Case& made) {
  std::string text = TextsOf(made.source, made.kernel, made.buildOptions);
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
  return HeadOf(made.head).append(text.substr(includes, example - includes)) +
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
