#include <algorithm>
#include <cctype>
#include <cstring>
#include <string_view>

#include "exploration/faults/fault.h"

namespace exploration {
namespace {

using Kind = Outcome::Kind;

/// What a compiler or driver says of its own fault, or of the text, in a line: without what differs
/// from program to program, which are names in quotes, numbers and places. Empty if it says
/// nothing.
std::string Complaint(std::string_view text) {
  std::string line;
  for (const std::string_view sign :
       {"Assertion `", "LLVM ERROR", "UNREACHABLE", "FATAL ERROR", "fatal error: ", "error: "}) {
    const std::size_t at = text.find(sign);
    if (at == std::string_view::npos) continue;
    line = text.substr(at, std::min(text.find('\n', at), text.size()) - at);
    // A heading, with a place in the driver's source, before what it is.
    if (sign == "FATAL ERROR") {
      const std::size_t next = std::min(text.find('\n', at), text.size() - 1) + 1;
      line = text.substr(next, std::min(text.find('\n', next), text.size()) - next);
    }
    break;
  }
  std::string plain;
  bool isQuoted = false;
  for (const char letter : line.substr(0, 160)) {
    const bool isDigit = std::isdigit(static_cast<unsigned char>(letter)) != 0;
    if (letter == '\'') isQuoted = !isQuoted;
    if (letter == '\'' && isQuoted) plain += "'...'";
    if (letter == '\'' || isQuoted) continue;
    if (!isDigit) plain += letter;
    if (isDigit && !plain.ends_with('N')) plain += 'N';
  }
  return plain;
}

using Bytes = std::vector<std::uint8_t>;

Bytes At(const Bytes& bytes, std::size_t offset, std::size_t size) {
  Bytes part;
  for (std::size_t i = offset; i < std::min(offset + size, bytes.size()); ++i)
    part.push_back(bytes[i]);
  return part;
}

/// Whether the low bytes are right and what they were extended with is not.
bool IsExtendedWrongly(const Bytes& expected, const Bytes& actual) {
  for (const std::ptrdiff_t size : {1, 2, 4}) {
    if (actual.size() != 8 ||
        !std::equal(expected.begin(), expected.begin() + size, actual.begin()))
      continue;
    const auto isExtension = [](std::uint8_t byte) { return byte == 0 || byte == 0xFF; };
    if (std::all_of(actual.begin() + size, actual.end(), isExtension) &&
        std::all_of(expected.begin() + size, expected.end(), isExtension))
      return true;
  }
  return false;
}

/// Whether bytes of the value are there, but some bytes further on.
bool IsShifted(const Bytes& expected, const Bytes& actual) {
  if (expected.size() != 8 || actual.size() != 8) return false;
  std::uint64_t right = 0;
  std::uint64_t wrong = 0;
  std::memcpy(&right, expected.data(), 8);
  std::memcpy(&wrong, actual.data(), 8);
  for (unsigned bytes = 1; bytes < 8; ++bytes)
    if (wrong != 0 && (wrong == right << 8 * bytes || wrong == right >> 8 * bytes)) return true;
  return false;
}

bool IsSomewhere(const Bytes& value, const Bytes& in, std::size_t except) {
  for (std::size_t offset = 0; offset + value.size() <= in.size(); offset += value.size())
    if (offset != except && At(in, offset, value.size()) == value) return true;
  return false;
}

/// How the first value differs that does: eight bytes of `out`, four of another buffer.
std::string HowItDiffers(const RunnableProgram& program, const Outcome& outcome) {
  const std::vector<Difference> differences = DifferencesOf(program, outcome);
  if (differences.empty()) return "other";
  std::vector<const RunnableBuffer*> answers;
  for (const RunnableBuffer& buffer : program.buffers)
    if (buffer.isAnswer) answers.push_back(&buffer);
  const Difference& first = differences.front();
  const RunnableBuffer& buffer = *answers.at(first.buffer);
  const std::size_t size = buffer.name == "out" ? 8 : 4;
  const std::size_t offset = first.offset / size * size;
  const Bytes expected = At(buffer.expected, offset, size);
  const Bytes before = At(buffer.bytes, offset, size);
  const Bytes actual = At(outcome.answers[first.buffer], offset, size);
  const auto differAs = [&](const auto& is) {
    for (std::size_t i = 0; i < actual.size(); ++i)
      if (actual[i] != expected[i] && !is(i)) return false;
    return true;
  };
  if (differAs([&](std::size_t i) { return actual[i] == before[i]; })) return "not stored";
  if (IsExtendedWrongly(expected, actual)) return "wrongly extended";
  if (differAs([&](std::size_t i) { return actual[i] == 0; })) return "zero";
  for (const RunnableBuffer& other : program.buffers)
    if (IsSomewhere(actual, other.isAnswer ? other.expected : other.bytes,
                    &other == &buffer ? offset : other.bytes.size()))
      return "another value's";
  return IsShifted(expected, actual) ? "shifted" : "other";
}

}  // namespace

Symptom SymptomOf(const RunnableProgram& program, const Outcome& outcome) {
  if (!outcome.IsFinding()) return {outcome.kind, "", false};
  const std::string complaint = Complaint(outcome.text);
  if (!complaint.empty()) return {outcome.kind, complaint, true};
  if (outcome.kind == Kind::unsteady) return {outcome.kind, "", false};
  return {outcome.kind,
          outcome.kind == Kind::wrongAnswer ? HowItDiffers(program, outcome) : Told(outcome),
          false};
}

}  // namespace exploration
