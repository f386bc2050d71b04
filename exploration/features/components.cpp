#include "exploration/features/drawing.h"
#include "exploration/features/features.h"
#include "exploration/features/vector_parts.h"

namespace exploration {
namespace {

void Check(const Node& node, const Program& program) {
  CheckPart(node, program, {static_cast<int>(node.numbers.at(0))});
}
std::string Print(const Node& node, const Printer& printer) {
  return printer.Operand(node.parts[0]) +
         ComponentNames(printer.program.types[node.parts[0].type].count, node.numbers);
}
Place Locate(const Node& node, Machine& machine) {
  return LocatePart(node, machine, {static_cast<int>(node.numbers[0])});
}
std::vector<Node> Simpler(const Node& node, const Program&) {
  if (node.numbers[0] == 0) return {};
  Node first = node;
  first.numbers = {0};
  return {first};
}

const Construct componentConstruct = {.name = "component",
                                      .feature = "components",
                                      .kind = Construct::Kind::place,
                                      .check = Check,
                                      .print = Print,
                                      .place = Locate,
                                      .simpler = Simpler};

std::optional<Node> Draw(Drawing& drawing, const Node& from) {
  if (!HasParts(from, drawing.program)) return std::nullopt;
  const Type& vector = drawing.program.types[from.type];
  return Node{
      &componentConstruct, TypeOf(vector.scalar), {from}, {drawing.random.Below(vector.count)}};
}

}  // namespace

const Feature componentsFeature = {.name = "components",
                                   .says = "single components of vectors: .x, .s3",
                                   .needs = {&vectorsFeature},
                                   .place = Draw};

}  // namespace exploration
