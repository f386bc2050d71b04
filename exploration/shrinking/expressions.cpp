#include <fmt/format.h>

#include <utility>

#include "exploration/features/basics.h"
#include "exploration/shrinking/edits.h"
#include "exploration/shrinking/steps.h"

namespace exploration {
namespace {

/// What could stand in place of the node, the plainest first.
std::vector<Node> PlainerThan(const Node& node, const Program& program) {
  std::vector<Node> plainer;
  if (node.construct->simpler != nullptr) plainer = node.construct->simpler(node, program);
  if (Is(node, "braces") && node.parts.size() > 1) {
    plainer.push_back(node);
    plainer.back().parts.pop_back();
    plainer.back().numbers.pop_back();
  }
  if (node.construct->kind == Construct::Kind::statement) {
    if (node.construct->names == Construct::Names::declaration && !Is(node, "declaration"))
      plainer.push_back({&declarationConstruct, noType, {}, {node.numbers[0]}});
    return plainer;
  }
  for (const Node& part : node.parts)
    if (node.type != noType && part.type == node.type) plainer.push_back(part);
  // A place too, unless something is stored there.
  const bool isLeaf = node.type != noType && program.types[node.type].IsLeaf();
  if (isLeaf && !Is(node, "literal")) {
    const auto count = static_cast<std::size_t>(program.types[node.type].count);
    plainer.push_back({&literalConstruct, node.type, {}, std::vector<std::int64_t>(count, 1)});
    const bool isNone = program.inputs.empty() || program.inputs.front().size() < count;
    if (!Is(node, "input") && !isNone) plainer.push_back({&inputConstruct, node.type, {}, {0}});
  }
  return plainer;
}

}  // namespace

/// A variable of its own in place of what is reached by a longer way.
std::optional<Program> WithOwnVariable(const Program& program, std::size_t number) {
  Program left = program;
  const auto replace = [&](Node& block) {
    Node* found = nullptr;
    Visit(block, [&](Node& node) {
      const bool isWay = node.construct->kind == Construct::Kind::place && node.type != noType &&
                         program.types[node.type].IsLeaf() && !Is(node, "variable");
      if (isWay && number-- == 0) found = &node;
    });
    if (found == nullptr) return false;
    const auto variable = static_cast<std::int64_t>(left.variables.size());
    left.variables.push_back(
        {fmt::format("a{}", variable), found->type, Space::privateSpace, Variable::Role::object});
    *found = NameOf(left, variable);
    block.parts.insert(block.parts.begin(), {&declarationConstruct, noType, {}, {variable}});
    return true;
  };
  for (Function& function : left.functions)
    if (replace(function.body)) return left;
  if (replace(left.body)) return left;
  return std::nullopt;
}

std::optional<Program> WithPlainerNode(const Program& program, std::size_t number) {
  Program left = program;
  for (Node* const node : NodesOf(left)) {
    std::vector<Node> plainer = PlainerThan(*node, program);
    if (number < plainer.size()) {
      Node chosen = std::move(plainer[number]);
      *node = std::move(chosen);
      return left;
    }
    number -= plainer.size();
  }
  return std::nullopt;
}

}  // namespace exploration
