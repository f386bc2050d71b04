#include "exploration/program/program_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <sstream>

#include "common/text/bad_use.h"

namespace exploration {
namespace {

constexpr std::string_view behindText = "\n/* Features: ";

constexpr std::size_t bytesOfLine = 16;
constexpr std::size_t fewestTogether = 16;

std::string Token(const std::vector<std::uint8_t>& bytes, const std::vector<std::uint8_t>& known,
                  std::size_t i) {
  return known.empty() || known[i] != 0 ? fmt::format("{:02X}", bytes[i]) : "??";
}

template <class Number>
bool IsNumber(std::string_view text, Number& number, int base) {
  const char* const end = text.data() + text.size();
  const auto [behind, error] = std::from_chars(text.data(), end, number, base);
  return error == std::errc() && behind == end;
}

/// Reads one comment line by line, and refuses what does not belong there.
class Reader {
 public:
  Reader(const std::string& ofName, std::string_view file) : name(ofName) {
    const std::size_t text = file.find(behindText);
    if (text == std::string_view::npos) Refuse("it ends in no comment with buffers");
    program.text = file.substr(0, text);
    program.needsDouble = program.text.find("cl_khr_fp64 : enable") != std::string::npos;
    program.needsHalf = program.text.find("cl_khr_fp16 : enable") != std::string::npos;
    std::istringstream comment{std::string(file.substr(text + behindText.size()))};
    std::string line;
    std::getline(comment, line);
    ReadFeatures(line);
    while (std::getline(comment, line) && line != "*/") ReadLine(line);
    if (line != "*/") Refuse("its comment doesn't end");
    for (RunnableBuffer& buffer : program.buffers) {
      if (buffer.isAnswer && buffer.expected.size() != buffer.bytes.size())
        Refuse("before and after, " + buffer.name + " is not of one size");
      buffer.customary.resize(buffer.expected.size());
    }
    if (program.buffers.empty() || program.globalSize % program.localSize != 0)
      Refuse("it has no buffers, or no whole work-groups");
  }

  RunnableProgram program;

 private:
  [[noreturn]] void Refuse(const std::string& why) const {
    throw text::BadUse(fmt::format("{} is no program: {}", name, why));
  }

  void ReadFeatures(const std::string& line) {
    std::istringstream words(line);
    for (std::string word; words >> word;) {
      if (word.ends_with(',')) word.pop_back();
      program.features.push_back(word);
    }
  }

  void ReadLine(const std::string& line) {
    std::istringstream words(line);
    std::vector<std::string> all;
    for (std::string word; words >> word;) all.push_back(word);
    if (line.starts_with("  ")) {
      for (const std::string& word : all) AddBytes(word);
    } else if (all.size() == 2 && all[1] == "before:") {
      program.buffers.emplace_back().name = all[0];
    } else if (all.size() == 2 && all[1] == "after:" && !program.buffers.empty() &&
               program.buffers.back().name == all[0] && !program.buffers.back().bytes.empty()) {
      program.buffers.back().isAnswer = true;
    } else if (all.size() != 6 || all[0] != "Work-items:" ||
               !IsNumber(all[1], program.globalSize, 10) ||
               !IsNumber(all[5], program.localSize, 10) || program.localSize == 0) {
      Refuse("it says '" + line + "'");
    }
  }

  void AddBytes(const std::string& word) {
    constexpr std::size_t most = 1 << 16;
    if (program.buffers.empty()) Refuse("bytes of no buffer");
    RunnableBuffer& buffer = program.buffers.back();
    const std::string byte = word.substr(0, 2);
    std::uint8_t value = 0;
    std::size_t count = 1;
    const bool isKnown = byte != "??";
    if ((isKnown && (byte.size() != 2 || !IsNumber(byte, value, 16))) ||
        (!isKnown && !buffer.isAnswer) ||
        (word.size() > 2 && (word[2] != '*' || !IsNumber(word.substr(3), count, 10))) ||
        count > most)
      Refuse("'" + word + "' is no byte");
    std::vector<std::uint8_t>& bytes = buffer.isAnswer ? buffer.expected : buffer.bytes;
    bytes.insert(bytes.end(), count, value);
    if (buffer.isAnswer) buffer.known.insert(buffer.known.end(), count, isKnown ? 0xFF : 0);
  }

  const std::string& name;
};

}  // namespace

std::string HexOf(const std::vector<std::uint8_t>& bytes, const std::vector<std::uint8_t>& known) {
  std::string text;
  std::size_t inLine = 0;
  for (std::size_t i = 0; i < bytes.size();) {
    const std::string token = Token(bytes, known, i);
    std::size_t end = i;
    while (end < bytes.size() && Token(bytes, known, end) == token) ++end;
    const bool isLong = end - i >= fewestTogether;
    text += (inLine == 0 ? "  " : " ") + token;
    if (isLong) text += fmt::format("*{}", end - i);
    i = isLong ? end : i + 1;
    inLine = isLong ? bytesOfLine : inLine + 1;
    if (inLine == bytesOfLine || i == bytes.size()) {
      text += '\n';
      inLine = 0;
    }
  }
  return text;
}

std::string FileOf(const RunnableProgram& program) {
  std::string file =
      fmt::format("{}{}{}\nWork-items: {} in groups of {}\n", program.text, behindText,
                  fmt::join(program.features, ", "), program.globalSize, program.localSize);
  for (const RunnableBuffer& buffer : program.buffers) {
    file += buffer.name + " before:\n" + HexOf(buffer.bytes, {});
    if (buffer.isAnswer) file += buffer.name + " after:\n" + HexOf(buffer.expected, buffer.known);
  }
  return file + "*/\n";
}

RunnableProgram FromFile(const std::string& name, std::string_view file) {
  return Reader(name, file).program;
}

}  // namespace exploration
