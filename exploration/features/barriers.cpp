#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "exploration/features/drawing.h"
#include "exploration/features/features.h"
#include "exploration/features/places.h"

namespace exploration {
namespace {

std::string PrintBarrier(const Node&, const Printer&) {
  return "barrier(CLK_LOCAL_MEM_FENCE | CLK_GLOBAL_MEM_FENCE);";
}
void ExecuteBarrier(const Node&, Machine& machine) { machine.Barrier(); }

/// The element of the work-item that is numbers[1] further on in the group, of an array in local
/// memory with one for each.
void CheckNeighbour(const Node& node, const Program& program) {
  const Variable& variable = program.variables[static_cast<std::size_t>(node.numbers[0])];
  const Type& array = program.types[variable.type];
  Require(variable.space == Space::localSpace && array.kind == Type::Kind::array &&
              array.count >= program.localSize && array.element == node.type,
          "a neighbour in another array");
  Require(node.numbers.size() == 2 && node.numbers[1] >= 0, "no neighbour");
}
std::string PrintNeighbour(const Node& node, const Printer& printer) {
  return fmt::format("{}[(get_local_id(0) + {}) % {}]", printer.VariableName(node.numbers[0]),
                     node.numbers[1], printer.program.localSize);
}
Place LocateNeighbour(const Node& node, Machine& machine) {
  return ElementAt(machine, machine.PlaceOf(node.numbers[0]),
                   (machine.LocalId() + node.numbers[1]) % machine.program.localSize);
}
std::vector<Node> SimplerNeighbour(const Node& node, const Program& program) {
  return {OwnElement(program, static_cast<int>(node.numbers[0]))};
}

const Construct barrierConstruct = {.name = "barrier",
                                    .feature = "barriers",
                                    .kind = Construct::Kind::statement,
                                    .where = Construct::Where::kernelOutermost,
                                    .print = PrintBarrier,
                                    .execute = ExecuteBarrier};
const Construct neighbourConstruct = {.name = "neighbour",
                                      .feature = "barriers",
                                      .kind = Construct::Kind::place,
                                      .names = Construct::Names::variable,
                                      .check = CheckNeighbour,
                                      .print = PrintNeighbour,
                                      .place = LocateNeighbour,
                                      .simpler = SimplerNeighbour};

/// Between two barriers everyone reads what a neighbour has.
bool Draw(Drawing& drawing) {
  const Program& program = drawing.program;
  if (!drawing.IsOutermost() || program.localSize < 2) return false;
  std::vector<int> arrays;
  for (std::size_t i = 0; i < program.variables.size(); ++i)
    if (program.variables[i].space == Space::localSpace &&
        program.types[program.variables[i].type].kind == Type::Kind::array)
      arrays.push_back(static_cast<int>(i));
  if (arrays.empty()) return false;
  const int array = drawing.random.OneOf(arrays);
  const TypeId element =
      program.types[program.variables[static_cast<std::size_t>(array)].type].element;
  const Node neighbour = {
      &neighbourConstruct, element, {}, {array, drawing.random.Between(1, program.localSize - 1)}};
  const Node barrier = {&barrierConstruct, noType, {}, {}};
  drawing.Add(barrier);
  auto others = std::exchange(drawing.roots, {neighbour});
  int found = 0;
  for (int i = 0; i < 3; ++i) {
    const std::optional<Node> leaf = drawing.KnownLeaf();
    if (!leaf) continue;
    drawing.AddAnswer(*leaf);
    ++found;
  }
  drawing.roots = std::move(others);
  drawing.Add(barrier);
  return found > 0;
}

}  // namespace

const Feature barriersFeature = {.name = "barriers",
                                 .says = "elements of other work-items, read between two barriers",
                                 .needs = {&localMemoryFeature, &workItemsFeature},
                                 .statement = Draw};

}  // namespace exploration
