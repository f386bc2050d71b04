#include <fmt/format.h>

#include "exploration/features/braces.h"
#include "exploration/features/drawing.h"
#include "exploration/features/features.h"
#include "exploration/features/places.h"

namespace exploration {
namespace {

/// Declares numbers[0] with the part as its initializer, which may be a record that is there
/// already.
void Check(const Node& node, const Program& program) {
  RequireParts(node, 1);
  const Variable& variable = program.variables[static_cast<std::size_t>(node.numbers[0])];
  Require(variable.type == node.parts[0].type, "an initializer of another type");
  Require(variable.space == Space::privateSpace, "local memory has no initializer");
  Require(program.types[variable.type].IsRecord(), "an initializer of no structure or union");
}
std::string Print(const Node& node, const Printer& printer) {
  const Variable& variable =
      printer.program.variables.at(static_cast<std::size_t>(node.numbers[0]));
  return fmt::format("{} = {};", printer.Declared(variable.type, variable.name),
                     printer.Text(node.parts[0]));
}
void Execute(const Node& node, Machine& machine) {
  const Value value = machine.Evaluate(node.parts[0]);
  machine.Declare(node.numbers[0]);
  machine.StoreTo(machine.PlaceOf(node.numbers[0]), value);
}

const Construct initializedConstruct = {.name = "initialized",
                                        .feature = "initializers",
                                        .kind = Construct::Kind::statement,
                                        .names = Construct::Names::declaration,
                                        .check = Check,
                                        .print = Print,
                                        .execute = Execute};

bool Draw(Drawing& drawing) {
  const std::optional<Node> known = drawing.KnownRecord();
  const std::optional<Node> target = drawing.TargetRecord();
  if (!target || !drawing.Has(privateMemoryFeature)) return false;
  Node value;
  if (known && drawing.random.Chance(40)) {
    value = *known;
  } else {
    value = DrawBraces(drawing, target->type,
                       [&drawing](TypeId type) { return drawing.NewValue(type); });
  }
  const int variable =
      drawing.NewVariable('w', value.type, Space::privateSpace, Variable::Role::object);
  drawing.Add({&initializedConstruct, noType, {value}, {variable}});
  drawing.roots.push_back(NameOf(drawing.program, variable));
  return true;
}

}  // namespace

const Feature initializersFeature = {
    .name = "initializers",
    .says = "variables with initializers: braces, a member by name, another variable",
    .statement = Draw};

}  // namespace exploration
