#include <utility>

#include "exploration/features/basics.h"
#include "exploration/shrinking/edits.h"
#include "exploration/shrinking/steps.h"

namespace exploration {
namespace {

/// The first of the variable's type that is none of those and declared the same way, behind which
/// `number` others come; -1 if there is none.
std::int64_t OtherVariable(const Program& program, std::size_t variable, std::size_t& number) {
  const Variable& of = program.variables[variable];
  for (std::size_t other = 0; other < program.variables.size(); ++other) {
    const Variable& one = program.variables[other];
    if (other != variable && one.type == of.type && one.space == of.space && number-- == 0)
      return static_cast<std::int64_t>(other);
  }
  return -1;
}

}  // namespace

/// Another variable of the type in its place.
std::optional<Program> WithOneVariable(const Program& program, std::size_t number) {
  for (std::size_t v = 0; v < program.variables.size(); ++v) {
    const std::int64_t other = OtherVariable(program, v, number);
    if (other < 0) continue;
    const auto named = static_cast<std::int64_t>(v);
    Program left = program;
    std::vector<bool> declares;
    for (const StatementAt& at : StatementsOf(left))
      declares.push_back(at.Statement().construct->names == Construct::Names::declaration &&
                         at.Statement().numbers[0] == named);
    Visit(left, [&](Node& node) {
      if (node.construct->names == Construct::Names::variable && node.numbers[0] == named)
        node.numbers[0] = other;
    });
    Erase(left, declares);
    return left;
  }
  return std::nullopt;
}

/// What a pointer points to, in place of the pointer.
std::optional<Program> WithoutPointer(const Program& program, std::size_t number) {
  Program left = program;
  std::vector<bool> declares(StatementsOf(left).size());
  std::size_t index = 0;
  for (const StatementAt& at : StatementsOf(left)) {
    ++index;
    const Node statement = at.Statement();
    if (!Is(statement, "pointer") || !Is(statement.parts[0], "address") || number-- != 0) continue;
    declares[index - 1] = true;
    Visit(left, [&statement](Node& node) {
      if (!Is(node, "pointee") || !Is(node.parts[0], "variable") ||
          node.parts[0].numbers[0] != statement.numbers[0])
        return;
      node = statement.parts[0].parts[0];
    });
    Erase(left, declares);
    return left;
  }
  return std::nullopt;
}

}  // namespace exploration
