#include <fmt/format.h>

#include "exploration/features/features.h"
#include "exploration/features/vector_memory.h"
#include "exploration/model/arithmetic.h"

namespace exploration {
namespace {

void Check(const Node& node, const Program& program) {
  RequireParts(node, 1);
  CheckVectorMemory(node, program, node.type);
}
std::string Print(const Node& node, const Printer& printer) {
  return fmt::format("vload{}({})", printer.program.types[node.type].count,
                     VectorMemoryText(node, printer, node.type));
}
Value Evaluate(const Node& node, Machine& machine) {
  Value value = EmptyValue(machine.types, node.type);
  int component = 0;
  for (const Place& place : LocateVectorMemory(node, machine, node.type))
    SetComponent(machine.types, value, component++,
                 ComponentOf(machine.types, machine.Load(place), 0));
  return value;
}

const Construct loadConstruct = {
    .name = "vloadN", .feature = "vector-loads", .check = Check, .print = Print, .value = Evaluate};

std::optional<Node> DrawLoad(Drawing& drawing) {
  const std::optional<VectorMemory> memory = DrawVectorMemory(drawing, false);
  if (!memory) return std::nullopt;
  const Node node = {&loadConstruct, memory->vector, {memory->place}, memory->numbers};
  return drawing.IsKnown(node) ? std::optional(node) : std::nullopt;
}

std::optional<Node> DrawValue(Drawing& drawing, TypeId type) {
  const std::optional<Node> load = DrawLoad(drawing);
  return load && load->type == type ? load : std::nullopt;
}

bool DrawAnswer(Drawing& drawing) {
  const std::optional<Node> load = DrawLoad(drawing);
  if (!load || drawing.IsInFunction()) return false;
  drawing.AddAnswer(*load);
  return true;
}

}  // namespace

const Feature vectorLoadsFeature = {.name = "vector-loads",
                                    .says = "vloadN from arrays and bytes",
                                    .needs = {&arraysFeature},
                                    .statement = DrawAnswer,
                                    .value = DrawValue};

}  // namespace exploration
