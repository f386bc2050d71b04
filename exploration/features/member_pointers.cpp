#include <fmt/format.h>

#include "exploration/features/drawing.h"
#include "exploration/features/features.h"
#include "exploration/features/places.h"

namespace exploration {
namespace {

/// Declares numbers[0], with the address that is the part.
void Check(const Node& node, const Program& program) {
  RequireParts(node, 1);
  const Variable& variable = program.variables[static_cast<std::size_t>(node.numbers[0])];
  Require(program.types[variable.type].kind == Type::Kind::pointer &&
              node.parts[0].construct->kind == Construct::Kind::value &&
              node.parts[0].type == variable.type,
          "a pointer of another type");
}
std::string Print(const Node& node, const Printer& printer) {
  const Variable& variable =
      printer.program.variables.at(static_cast<std::size_t>(node.numbers[0]));
  return fmt::format("{} = {};", printer.Declared(variable.type, variable.name),
                     printer.Text(node.parts[0]));
}
void Execute(const Node& node, Machine& machine) {
  machine.Bind(node.numbers[0], machine.Evaluate(node.parts[0]));
}

const Construct pointerConstruct = {.name = "pointer",
                                    .feature = "member-pointers",
                                    .kind = Construct::Kind::statement,
                                    .names = Construct::Names::declaration,
                                    .check = Check,
                                    .print = Print,
                                    .execute = Execute};

bool Draw(Drawing& drawing) {
  const std::optional<Node> place =
      drawing.random.Chance(70) ? drawing.TargetLeaf() : drawing.TargetRecord();
  if (!place) return false;
  const Node address = AddressOf(drawing.program, *place);
  const int variable =
      drawing.NewVariable('p', address.type, Space::privateSpace, Variable::Role::object);
  drawing.Add({&pointerConstruct, noType, {address}, {variable}});
  const Node pointee = Pointee(drawing.program, NameOf(drawing.program, variable));
  drawing.roots.push_back(pointee);
  if (!drawing.program.types[pointee.type].IsLeaf()) return true;
  // Pointers are soon of no use, for what they point to is stored otherwise.
  if (drawing.random.Chance(70)) drawing.Add(Assignment(pointee, drawing.NewValue(pointee.type)));
  if (drawing.IsKnown(pointee)) drawing.AddAnswer(pointee);
  return true;
}

}  // namespace

const Feature memberPointersFeature = {
    .name = "member-pointers", .says = "pointers to members and to elements", .statement = Draw};

}  // namespace exploration
