#include <fmt/format.h>

#include "exploration/features/features.h"
#include "exploration/features/vector_memory.h"
#include "exploration/model/arithmetic.h"

namespace exploration {
namespace {

/// The parts are the array or object, and the vector.
void Check(const Node& node, const Program& program) {
  RequireParts(node, 2);
  CheckVectorMemory(node, program, node.parts[1].type);
}
std::string Print(const Node& node, const Printer& printer) {
  const TypeId vector = node.parts[1].type;
  return fmt::format("vstore{}({}, {});", printer.program.types[vector].count,
                     printer.Text(node.parts[1]), VectorMemoryText(node, printer, vector));
}
void Execute(const Node& node, Machine& machine) {
  const Value value = machine.Evaluate(node.parts[1]);
  int component = 0;
  for (const Place& place : LocateVectorMemory(node, machine, node.parts[1].type))
    machine.StoreTo(place, ValueOf(machine.types, ComponentOf(machine.types, value, component++)));
}

const Construct storeConstruct = {.name = "vstoreN",
                                  .feature = "vector-stores",
                                  .kind = Construct::Kind::statement,
                                  .check = Check,
                                  .print = Print,
                                  .execute = Execute};

bool Draw(Drawing& drawing) {
  const std::optional<VectorMemory> memory = DrawVectorMemory(drawing, true);
  if (!memory) return false;
  drawing.Add({&storeConstruct,
               noType,
               {memory->place, drawing.NewValue(memory->vector)},
               memory->numbers});
  return true;
}

}  // namespace

const Feature vectorStoresFeature = {.name = "vector-stores",
                                     .says = "vstoreN to arrays and bytes",
                                     .needs = {&arraysFeature},
                                     .statement = Draw};

}  // namespace exploration
