#include "exploration/views/told.h"

#include <fmt/format.h>

#include <sstream>
#include <string_view>

#include "common/text/text.h"

namespace exploration {
namespace {

constexpr std::size_t mostLines = 8;

std::string NameOfAnswer(const RunnableProgram& program, std::size_t index) {
  for (const RunnableBuffer& buffer : program.buffers)
    if (buffer.isAnswer && index-- == 0) return buffer.name;
  return "";
}

}  // namespace

std::vector<std::string> DifferenceLines(const RunnableProgram& program, const Outcome& outcome,
                                         std::size_t most, bool customary) {
  const std::vector<Difference> all = DifferencesOf(program, outcome, customary);
  std::vector<std::string> lines;
  for (const Difference& one : all) {
    if (lines.size() == most) {
      lines.push_back(fmt::format("and {} more", text::Counted(all.size() - most, "byte")));
      break;
    }
    lines.push_back(fmt::format("{}, byte {}: the answer is 0x{:02X}, {} is 0x{:02X}",
                                NameOfAnswer(program, one.buffer), one.offset, one.actual,
                                customary ? "customary" : "right", one.expected));
  }
  return lines;
}

std::string DetailsTold(const RunnableProgram& program, const Outcome& outcome) {
  std::vector<std::string> lines;
  if (outcome.kind == Outcome::Kind::wrongAnswer) {
    lines = DifferenceLines(program, outcome, mostLines);
  } else if (outcome.kind != Outcome::Kind::right) {
    std::istringstream printed(outcome.text);
    for (std::string line; lines.size() < mostLines && std::getline(printed, line);)
      if (!line.empty()) lines.push_back(text::PrintableLine(line));
  }
  std::string told;
  for (const std::string& line : lines) told += "  " + line + "\n";
  return told;
}

std::string FaultTold(const Fault& fault) {
  return fmt::format("{} (first in {}:{})\n\n{}\n{}\n", fault.title, fault.first.program.seed,
                     fault.first.program.number, fault.shrunken.runnable.text,
                     DetailsTold(fault.shrunken.runnable, fault.shrunken.outcome));
}

}  // namespace exploration
