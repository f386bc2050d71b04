#include <fmt/format.h>

#include "exploration/features/drawing.h"
#include "exploration/features/features.h"
#include "exploration/model/arithmetic.h"

namespace exploration {
namespace {

void Check(const Node& node, const Program& program) {
  RequireParts(node, 1);
  const Type& from = program.types[node.parts[0].type];
  const Type& to = program.types[node.type];
  Require(from.IsLeaf() && to.IsLeaf() && from.count == to.count, "a conversion to another width");
}
/// numbers[0]: a scalar as convert_T(x) rather than as (T)x.
std::string Print(const Node& node, const Printer& printer) {
  const std::string name = printer.TypeName(node.type);
  if (printer.program.types[node.type].count > 1 || node.numbers.at(0) != 0)
    return fmt::format("convert_{}({})", name, printer.Text(node.parts[0]));
  return fmt::format("({}){}", name, printer.Text(node.parts[0]));
}
Value Evaluate(const Node& node, Machine& machine) {
  const Value from = machine.Evaluate(node.parts[0]);
  Value value = EmptyValue(machine.types, node.type);
  const Type& to = machine.types[node.type];
  for (int i = 0; i < to.count; ++i)
    SetComponent(machine.types, value, i,
                 Converted(ComponentOf(machine.types, from, i), to.scalar));
  return value;
}

const Construct conversionConstruct = {.name = "conversion",
                                       .feature = "conversions",
                                       .check = Check,
                                       .print = Print,
                                       .value = Evaluate};

std::optional<Node> Draw(Drawing& drawing, TypeId type) {
  for (int attempt = 0; attempt < 4; ++attempt) {
    const std::optional<Node> leaf = drawing.KnownLeaf();
    if (!leaf || leaf->type == type) continue;
    if (drawing.program.types[leaf->type].count != drawing.program.types[type].count) continue;
    Node node = {&conversionConstruct, type, {*leaf}, {drawing.random.Below(2)}};
    if (drawing.IsKnown(node)) return node;
  }
  return std::nullopt;
}

}  // namespace

const Feature conversionsFeature = {.name = "conversions",
                                    .says = "casts and convert_T of numbers that the type has",
                                    .value = Draw};

}  // namespace exploration
