#include <fmt/format.h>

#include <algorithm>

#include "exploration/features/drawing.h"
#include "exploration/features/features.h"
#include "exploration/features/places.h"

namespace exploration {
namespace {

const Variable& VariableOf(const Node& node, const Program& program) {
  return program.variables.at(static_cast<std::size_t>(node.numbers.at(0)));
}

/// Copies the group's elements of the second part to those of the first, one of which is an array
/// in local memory and the other a buffer.
void Check(const Node& node, const Program& program) {
  RequireParts(node, 2);
  for (const Node& part : node.parts)
    Require(
        part.construct == &variableConstruct && program.types[part.type].kind == Type::Kind::array,
        "a copy of no array");
  const Node& to = node.parts[0];
  const Node& from = node.parts[1];
  const Space toSpace = VariableOf(to, program).space;
  const Space fromSpace = VariableOf(from, program).space;
  Require((toSpace == Space::localSpace && fromSpace == Space::globalSpace) ||
              (toSpace == Space::globalSpace && fromSpace == Space::localSpace),
          "a copy between other address spaces");
  Require(program.types[to.type].element == program.types[from.type].element,
          "a copy to another type");
  for (const Node& part : node.parts) {
    const bool isLocal = VariableOf(part, program).space == Space::localSpace;
    Require(program.types[part.type].count >= (isLocal ? program.localSize : program.Items()),
            "a copy of too much");
  }
}

std::string Pointer(const Node& part, const Printer& printer) {
  const Variable& variable = VariableOf(part, printer.program);
  const bool isLocal = variable.space == Space::localSpace;
  std::string text = variable.name;
  if (!isLocal && printer.program.groups > 1)
    text = fmt::format("({} + {} * get_group_id(0))", text, printer.program.localSize);
  return fmt::format("({} uchar *){}", NameOf(variable.space), text);
}
std::string Print(const Node& node, const Printer& printer) {
  const Program& program = printer.program;
  const TypeId element = program.types[node.parts[0].type].element;
  constexpr std::string_view barrier = "barrier(CLK_LOCAL_MEM_FENCE | CLK_GLOBAL_MEM_FENCE);";
  return fmt::format(
      "{0}\n{{\n  event_t event = async_work_group_copy({1}, {2}, {3} * sizeof({4}), 0);\n"
      "  wait_group_events(1, &event);\n}}\n{0}",
      barrier, Pointer(node.parts[0], printer),
      // What is copied from is constant for the function.
      [&] {
        std::string pointer = Pointer(node.parts[1], printer);
        return pointer.insert(1, "const ");
      }(),
      program.localSize, printer.TypeName(element));
}
void Execute(const Node& node, Machine& machine) {
  machine.Barrier();
  if (machine.LocalId() == 0) {
    const auto placeAt = [&machine](const Node& part, std::size_t index) {
      const bool isLocal = VariableOf(part, machine.program).space == Space::localSpace;
      Place place = machine.PlaceOf(part.numbers[0]);
      const std::size_t size = SizeOf(machine.types, machine.types[place.type].element);
      place.offset = index + (isLocal ? 0 : static_cast<std::size_t>(machine.Item()) * size);
      place.type = TypeOf(Scalar::ucharType);
      return place;
    };
    const TypeId element = machine.types[node.parts[0].type].element;
    const std::size_t size =
        SizeOf(machine.types, element) * static_cast<std::size_t>(machine.program.localSize);
    for (std::size_t i = 0; i < size; ++i) {
      const Place from = placeAt(node.parts[1], i);
      Value byte;
      byte.type = from.type;
      byte.bytes = {machine.ObjectOf(from).cells.at(from.offset).byte};
      machine.StoreTo(placeAt(node.parts[0], i), byte);
    }
  }
  machine.BarrierBehind();
}

/// Each work-item copies its own.
std::vector<Node> Simpler(const Node& node, const Program& program) {
  const auto own = [&](const Node& part) {
    return OwnElement(program, static_cast<int>(part.numbers.at(0)));
  };
  const Node to = own(node.parts.at(0));
  const Node from = own(node.parts.at(1));
  return {program.types[to.type].IsRecord() ? WholeAssignment(program, to, from)
                                            : Assignment(to, from)};
}

const Construct copyConstruct = {.name = "async copy",
                                 .feature = "async-copies",
                                 .kind = Construct::Kind::statement,
                                 .where = Construct::Where::kernelOutermost,
                                 .check = Check,
                                 .print = Print,
                                 .execute = Execute,
                                 .simpler = Simpler};

bool Draw(Drawing& drawing) {
  if (!drawing.IsOutermost()) return false;
  const Program& program = drawing.program;
  std::vector<std::pair<int, int>> pairs;
  const auto count = static_cast<int>(program.variables.size());
  const auto at = [&program](int variable) -> const Variable& {
    return program.variables[static_cast<std::size_t>(variable)];
  };
  for (int local = 0; local < count; ++local)
    for (int global = 0; global < count; ++global)
      if (at(local).space == Space::localSpace && at(local).role == Variable::Role::object &&
          at(global).space == Space::globalSpace && at(global).role == Variable::Role::buffer &&
          program.types[at(local).type].element == program.types[at(global).type].element)
        pairs.emplace_back(local, global);
  if (pairs.empty()) return false;
  const auto pair = drawing.random.OneOf(pairs);
  Node to = NameOf(program, pair.first);
  Node from = NameOf(program, pair.second);
  if (drawing.random.Chance(40)) std::swap(to, from);
  drawing.Add({&copyConstruct, noType, {to, from}, {}});
  for (int i = 0; i < 2; ++i)
    if (const std::optional<Node> leaf = drawing.KnownLeaf()) drawing.AddAnswer(*leaf);
  return true;
}

}  // namespace

const Feature asyncCopiesFeature = {.name = "async-copies",
                                    .says = "async_work_group_copy between local and global memory",
                                    .needs = {&localMemoryFeature, &globalMemoryFeature},
                                    .statement = Draw};

}  // namespace exploration
