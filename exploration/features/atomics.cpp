#include <fmt/format.h>

#include "exploration/features/drawing.h"
#include "exploration/features/features.h"
#include "exploration/features/places.h"
#include "exploration/model/arithmetic.h"

namespace exploration {
namespace {

struct Atomic {
  std::string_view name;
  Operator by;
};
constexpr Atomic atomics[] = {{"atomic_add", Operator::add},
                              {"atomic_sub", Operator::subtract},
                              {"atomic_and", Operator::both},
                              {"atomic_or", Operator::either},
                              {"atomic_xor", Operator::differ}};

/// The parts are a place and a value, an int or uint in local or global memory.
void Check(const Node& node, const Program& program) {
  RequireParts(node, 2);
  const TypeId type = node.parts[0].type;
  Require(node.parts[0].construct->kind == Construct::Kind::place &&
              (type == TypeOf(Scalar::intType) || type == TypeOf(Scalar::uintType)) &&
              node.parts[1].type == type,
          "an atomic function of another type");
  const Space space = SpaceOf(node.parts[0], program);
  Require(space == Space::localSpace || space == Space::globalSpace,
          "an atomic function in another address space");
  Require(node.numbers.at(0) >= 0 && static_cast<std::size_t>(node.numbers[0]) < std::size(atomics),
          "no such function");
}
std::string Print(const Node& node, const Printer& printer) {
  return fmt::format("{}(&{}, {});", atomics[static_cast<std::size_t>(node.numbers[0])].name,
                     printer.Text(node.parts[0]), printer.Text(node.parts[1]));
}
// In whichever order they come, what is left is the same.
void Execute(const Node& node, Machine& machine) {
  const Value value = machine.Evaluate(node.parts[1]);
  Place place = machine.Locate(node.parts[0]);
  Require(place.components.empty(), "the address of a component");
  RequireAligned(machine, place);
  place.throughPointer = true;
  const int atomic = static_cast<int>(node.numbers[0]);
  const Value before = machine.Load(place, atomic);
  const Number after =
      Computed(atomics[static_cast<std::size_t>(node.numbers[0])].by,
               ComponentOf(machine.types, before, 0), ComponentOf(machine.types, value, 0));
  machine.StoreTo(place, ValueOf(machine.types, after), atomic);
}

std::vector<Node> Simpler(const Node& node, const Program&) {
  return {Assignment(node.parts[0], node.parts[1])};
}

const Construct atomicConstruct = {.name = "atomic",
                                   .feature = "atomics",
                                   .kind = Construct::Kind::statement,
                                   .check = Check,
                                   .print = Print,
                                   .execute = Execute,
                                   .simpler = Simpler};

/// A member of some element of a buffer, the same for every work-item or chosen at run time.
std::optional<Node> DrawShared(Drawing& drawing) {
  std::vector<int> arrays;
  for (std::size_t i = 0; i < drawing.program.variables.size(); ++i) {
    const Variable& variable = drawing.program.variables[i];
    if (variable.role == Variable::Role::buffer && variable.space == Space::globalSpace)
      arrays.push_back(static_cast<int>(i));
  }
  if (arrays.empty() || drawing.IsInFunction()) return std::nullopt;
  std::optional<Node> place = NameOf(drawing.program, drawing.random.OneOf(arrays));
  while (place && !drawing.program.types[place->type].IsLeaf()) place = drawing.Step(*place);
  return place;
}

bool Draw(Drawing& drawing) {
  const bool isShared = drawing.program.Items() > 1 && drawing.random.Chance(50);
  for (int attempt = 0; attempt < 12; ++attempt) {
    const std::optional<Node> leaf = isShared ? DrawShared(drawing) : drawing.KnownLeaf();
    if (!leaf) continue;
    const Space space = SpaceOf(*leaf, drawing.program);
    if (space != Space::localSpace && space != Space::globalSpace) continue;
    if (leaf->type != TypeOf(Scalar::intType) && leaf->type != TypeOf(Scalar::uintType)) continue;
    const Node value = drawing.NewValue(leaf->type);
    drawing.Add({&atomicConstruct,
                 noType,
                 {*leaf, value},
                 {drawing.random.Below(static_cast<int>(std::size(atomics)))}});
    return true;
  }
  return false;
}

}  // namespace

const Feature atomicsFeature = {.name = "atomics",
                                .says = "atomic functions on a member that is an int or uint",
                                .needs = {&globalMemoryFeature},
                                .statement = Draw};

}  // namespace exploration
