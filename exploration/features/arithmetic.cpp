#include "exploration/model/arithmetic.h"

#include <fmt/format.h>

#include "exploration/features/drawing.h"
#include "exploration/features/features.h"

namespace exploration {
namespace {

constexpr std::string_view signs[] = {"+", "-", "*", "&", "|", "^", "<<", ">>"};
constexpr int operators = static_cast<int>(std::size(signs));

Operator OperatorOf(const Node& node) { return static_cast<Operator>(node.numbers.at(0)); }

void Check(const Node& node, const Program& program) {
  RequireParts(node, 2);
  Require(program.types[node.type].IsLeaf(), "arithmetic on no simple type");
  Require(node.parts[0].type == node.type && node.parts[1].type == node.type,
          "arithmetic on different types");
  Require(node.numbers.at(0) >= 0 && node.numbers[0] < operators, "no such operator");
  const ScalarTraits& traits = TraitsOf(program.types[node.type].scalar);
  Require(!traits.isFloat || OperatorOf(node) < Operator::both, "bits of a float");
}
/// What is narrower than an int was promoted; a vector's components are not.
std::string Print(const Node& node, const Printer& printer) {
  const Type& type = printer.program.types[node.type];
  const std::string text =
      fmt::format("({} {} {})", printer.Text(node.parts[0]),
                  signs[static_cast<std::size_t>(node.numbers[0])], printer.Text(node.parts[1]));
  const ScalarTraits& traits = TraitsOf(type.scalar);
  const bool isPromoted = type.count == 1 && traits.size < 4 && !traits.isFloat;
  return isPromoted ? fmt::format("({}){}", traits.name, text) : text;
}
Value Evaluate(const Node& node, Machine& machine) {
  const Value left = machine.Evaluate(node.parts[0]);
  const Value right = machine.Evaluate(node.parts[1]);
  Value value = EmptyValue(machine.types, node.type);
  for (int i = 0; i < machine.types[node.type].count; ++i)
    SetComponent(machine.types, value, i,
                 Computed(OperatorOf(node), ComponentOf(machine.types, left, i),
                          ComponentOf(machine.types, right, i)));
  return value;
}

const Construct arithmeticConstruct = {.name = "arithmetic",
                                       .feature = "arithmetic",
                                       .check = Check,
                                       .print = Print,
                                       .value = Evaluate};

/// A shift's distance: for each component one that is less than its width.
Node Distance(Drawing& drawing, TypeId type) {
  const Type& of = drawing.program.types[type];
  Node literal = {&literalConstruct, type, {}, {}};
  for (int i = 0; i < of.count; ++i)
    literal.numbers.push_back(drawing.random.Below(8 * TraitsOf(of.scalar).size));
  return literal;
}

/// One half, 2 or 4 in each component, by which everything is multiplied exactly.
Node PowerOfTwo(Drawing& drawing, TypeId type) {
  const Type& of = drawing.program.types[type];
  Node literal = {&literalConstruct, type, {}, {}};
  for (int i = 0; i < of.count; ++i) {
    const std::int64_t exponent = drawing.random.Between(-1, 2);
    literal.numbers.push_back(of.scalar == Scalar::floatType ? (127 + exponent) << 23
                                                             : (1023 + exponent) << 52);
  }
  return literal;
}

std::optional<Node> Draw(Drawing& drawing, TypeId type) {
  const ScalarTraits& traits = TraitsOf(drawing.program.types[type].scalar);
  if (drawing.program.types[type].scalar == Scalar::halfType) return std::nullopt;
  const Node left = drawing.NewValue(type);
  auto by = static_cast<Operator>(drawing.random.Below(operators));
  if (traits.isFloat) by = static_cast<Operator>(drawing.random.Below(3));
  const bool isShift = by == Operator::left || by == Operator::right;
  const bool isScaled = traits.isFloat && by == Operator::multiply;
  const Node right = isShift    ? Distance(drawing, type)
                     : isScaled ? PowerOfTwo(drawing, type)
                                : drawing.NewValue(type);
  Node node = {&arithmeticConstruct, type, {left, right}, {static_cast<std::int64_t>(by)}};
  if (!drawing.IsKnown(node) && !traits.isFloat)
    node.numbers = {static_cast<std::int64_t>(Operator::differ)};
  return node;
}

}  // namespace

const Feature arithmeticFeature = {
    .name = "arithmetic",
    .says = "+ - * & | ^ << >>, where nothing overflows and nothing is rounded",
    .value = Draw};

}  // namespace exploration
