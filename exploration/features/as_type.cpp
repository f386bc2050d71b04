#include <fmt/format.h>

#include "exploration/features/drawing.h"
#include "exploration/features/features.h"
#include "exploration/model/arithmetic.h"

namespace exploration {
namespace {

// OpenCL C 1.2, 6.2.4.2: the sizes must be equal. What becomes of the fourth component where one of
// the types has three is left to the implementation, unless both have.
void Check(const Node& node, const Program& program) {
  RequireParts(node, 1);
  const Type& from = program.types[node.parts[0].type];
  const Type& to = program.types[node.type];
  Require(from.IsLeaf() && to.IsLeaf(), "as_type of no simple type");
  Require(SizeOf(program.types, node.parts[0].type) == SizeOf(program.types, node.type),
          "as_type to another size");
  Require((from.count == 3) == (to.count == 3), "as_type to a component that is not there");
}
std::string Print(const Node& node, const Printer& printer) {
  return fmt::format("as_{}({})", printer.TypeName(node.type), printer.Text(node.parts[0]));
}
Value Evaluate(const Node& node, Machine& machine) {
  Value value = machine.Evaluate(node.parts[0]);
  value.type = node.type;
  const Type& to = machine.types[node.type];
  // A component is made of bytes, and known only as far as the least known of them.
  for (int i = 0; i < to.count; ++i)
    SetComponent(machine.types, value, i, ComponentOf(machine.types, value, i));
  return value;
}

const Construct asTypeConstruct = {
    .name = "as_type", .feature = "as-type", .check = Check, .print = Print, .value = Evaluate};

std::optional<Node> Draw(Drawing& drawing, TypeId type) {
  const std::size_t size = SizeOf(drawing.program.types, type);
  const bool isThree = drawing.program.types[type].count == 3;
  for (int attempt = 0; attempt < 10; ++attempt) {
    const TypeId from = drawing.NewLeafType();
    const bool fits = SizeOf(drawing.program.types, from) == size && from != type &&
                      (drawing.program.types[from].count == 3) == isThree;
    if (fits) return Node{&asTypeConstruct, type, {drawing.NewValue(from)}, {}};
  }
  return std::nullopt;
}

}  // namespace

const Feature asTypeFeature = {
    .name = "as-type", .says = "as_T of a value of another type of that size", .value = Draw};

}  // namespace exploration
