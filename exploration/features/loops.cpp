#include <fmt/format.h>

#include <algorithm>

#include "exploration/features/drawing.h"
#include "exploration/features/features.h"
#include "exploration/model/arithmetic.h"

namespace exploration {
namespace {

/// Declares and counts numbers[0] from 0 to below the first part, and executes the second each
/// time.
void Check(const Node& node, const Program& program) {
  RequireParts({node.construct, noType, {node.parts.at(0)}, {}}, 1);
  const Type& end = program.types[node.parts[0].type];
  Require(node.parts.size() == 2 && node.parts[1].construct == &blockConstruct,
          "a loop without a block");
  Require(end.kind == Type::Kind::scalar && !TraitsOf(end.scalar).isFloat &&
              TraitsOf(end.scalar).isSigned,
          "a loop with another end");
  Require(
      program.variables[static_cast<std::size_t>(node.numbers[0])].type == TypeOf(Scalar::intType),
      "a counter of another type");
}
std::string Print(const Node& node, const Printer& printer) {
  return fmt::format("for (int {0} = 0; {0} < {1}; ++{0}) {{\n{2}}}",
                     printer.VariableName(node.numbers[0]), printer.Operand(node.parts[0]),
                     printer.Block(node.parts[1]));
}
void Execute(const Node& node, Machine& machine) {
  machine.Declare(node.numbers[0]);
  const Place counter = machine.PlaceOf(node.numbers[0]);
  Number number;
  for (;; ++number.integer) {
    machine.StoreTo(counter, ValueOf(machine.types, number));
    if (number.integer >= KnownInteger(machine.types, machine.Evaluate(node.parts[0]))) return;
    machine.Execute(node.parts[1]);
    // The block may not count.
    Require(KnownInteger(machine.types, machine.Load(counter)) == number.integer, "a counter");
  }
}

const Construct loopConstruct = {.name = "loop",
                                 .feature = "loops",
                                 .kind = Construct::Kind::statement,
                                 .names = Construct::Names::declaration,
                                 .check = Check,
                                 .print = Print,
                                 .execute = Execute};

// The block is drawn as it is executed for the first time, and then tried as often as it will be.
bool Draw(Drawing& drawing) {
  if (!drawing.MayNest()) return false;
  std::vector<std::int64_t> numbers;
  std::vector<int> items;
  const int least = drawing.random.Chance(30) ? 0 : 1;
  for (int item = 0; item < drawing.program.Items(); ++item)
    numbers.push_back(drawing.random.Between(least, 4));
  std::int64_t most = 0;
  for (const int item : drawing.active) {
    const std::int64_t end = numbers[static_cast<std::size_t>(item)];
    most = std::max(most, end);
    if (end > 0) items.push_back(item);
  }
  if (items.empty()) return false;
  const Node end = drawing.NewInput(TypeOf(Scalar::longType), numbers);
  const int counter = drawing.NewVariable('i', TypeOf(Scalar::intType), Space::privateSpace,
                                          Variable::Role::counter);
  for (const int item : items) {
    drawing.machine.SetItem(item);
    drawing.machine.Declare(counter);
    drawing.machine.StoreTo(drawing.machine.PlaceOf(counter),
                            ValueOf(drawing.program.types, Number()));
  }
  drawing.indices.push_back({NameOf(drawing.program, counter), static_cast<int>(most)});
  const Node block = drawing.NewBlock(drawing.random.Between(1, 3), items);
  drawing.indices.pop_back();
  if (block.parts.empty()) return false;
  drawing.Add({&loopConstruct, noType, {end, block}, {counter}});
  return true;
}

}  // namespace

const Feature loopsFeature = {
    .name = "loops", .says = "for loops that end by a number from outside", .statement = Draw};

}  // namespace exploration
