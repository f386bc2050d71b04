#include "exploration/shrinking/edits.h"
#include "exploration/shrinking/steps.h"

namespace exploration {
namespace {

bool IsAnswer(const Node& node) { return node.construct->names == Construct::Names::answer; }

std::optional<Program> WithoutChunk(const Program& program, std::size_t number,
                                    bool (*which)(const Node&)) {
  Program left = program;
  std::vector<std::size_t> those;
  const std::vector<StatementAt> statements = StatementsOf(left);
  for (std::size_t i = 0; i < statements.size(); ++i)
    if (which(statements[i].Statement())) those.push_back(i);
  const std::optional<std::vector<bool>> chunk = Chunk(those.size(), number);
  if (!chunk) return std::nullopt;
  std::vector<bool> erased(statements.size());
  for (std::size_t i = 0; i < those.size(); ++i) erased[those[i]] = (*chunk)[i];
  Erase(left, erased);
  return left;
}

}  // namespace

// Of many answers most are right.
std::optional<Program> WithoutAnswers(const Program& program, std::size_t number) {
  return WithoutChunk(program, number, IsAnswer);
}

std::optional<Program> WithoutStatements(const Program& program, std::size_t number) {
  return WithoutChunk(program, number, [](const Node&) { return true; });
}

/// What is declared in no statement, with all that uses it: buffers and constant data.
std::optional<Program> WithoutVariable(const Program& program, std::size_t number) {
  if (number >= program.variables.size()) return std::nullopt;
  Program left = program;
  const auto variable = static_cast<std::int64_t>(number);
  EraseUsersOf(left, [variable](const Node& node) {
    return (node.construct->names == Construct::Names::variable ||
            node.construct->names == Construct::Names::declaration) &&
           node.numbers.at(0) == variable;
  });
  return left;
}

}  // namespace exploration
