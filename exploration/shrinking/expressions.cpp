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
  const bool isValue = node.construct->kind == Construct::Kind::value && node.type != noType &&
                       program.types[node.type].IsLeaf();
  if (isValue && !Is(node, "literal")) {
    const auto count = static_cast<std::size_t>(program.types[node.type].count);
    plainer.push_back({&literalConstruct, node.type, {}, std::vector<std::int64_t>(count, 1)});
    if (!Is(node, "input")) plainer.push_back({&inputConstruct, node.type, {}, {0}});
  }
  return plainer;
}

}  // namespace

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
