#include <utility>

#include "exploration/features/drawing.h"
#include "exploration/features/features.h"
#include "exploration/features/places.h"

namespace exploration {
namespace {

void Check(const Node& node, const Program& program, Type::Kind kind) {
  RequireParts(node, 2);
  Require(node.parts[0].construct->kind == Construct::Kind::place, "an assignment to a value");
  Require(node.parts[0].type == node.parts[1].type, "an assignment of another type");
  const Type& record = program.types[node.parts[0].type];
  Require(record.kind == kind && !record.name.empty(), "an assignment of another kind");
}
void CheckUnion(const Node& node, const Program& program) {
  Check(node, program, Type::Kind::unionType);
}
void CheckStruct(const Node& node, const Program& program) {
  Check(node, program, Type::Kind::structure);
}
std::string Print(const Node& node, const Printer& printer) {
  return printer.Text(node.parts[0]) + " = " + printer.Text(node.parts[1]) + ";";
}
void Execute(const Node& node, Machine& machine) {
  std::vector<Place> loads;
  const Value value = machine.Evaluate(node.parts[1], loads);
  const Place to = machine.Locate(node.parts[0]);
  for (const Place& from : loads)
    Require(!Overlap(machine.types, from, to), "an assignment to what overlaps");
  machine.StoreTo(to, value);
}

const Construct unionConstruct = {.name = "whole union",
                                  .feature = "whole-unions",
                                  .kind = Construct::Kind::statement,
                                  .check = CheckUnion,
                                  .print = Print,
                                  .execute = Execute};
const Construct structConstruct = {.name = "whole struct",
                                   .feature = "whole-structs",
                                   .kind = Construct::Kind::statement,
                                   .check = CheckStruct,
                                   .print = Print,
                                   .execute = Execute};

bool Draw(Drawing& drawing, const Construct& construct, Type::Kind kind) {
  for (int attempt = 0; attempt < 12; ++attempt) {
    const std::optional<Node> from = drawing.KnownRecord();
    const std::optional<Node> to = drawing.TargetRecord();
    if (!from || !to || from->type != to->type || *from == *to) continue;
    if (drawing.program.types[from->type].kind != kind) continue;
    drawing.Add({&construct, noType, {*to, *from}, {}});
    for (int i = 0; i < 2; ++i)
      if (const std::optional<Node> leaf = drawing.KnownLeaf()) drawing.AddAnswer(*leaf);
    return true;
  }
  return false;
}

}  // namespace

Node WholeAssignment(const Program& program, Node to, Node from) {
  const bool isUnion = program.types[to.type].kind == Type::Kind::unionType;
  return {
      isUnion ? &unionConstruct : &structConstruct, noType, {std::move(to), std::move(from)}, {}};
}

const Feature wholeUnionsFeature = {.name = "whole-unions",
                                    .says = "assignment of whole unions",
                                    .statement = [](Drawing& drawing) {
                                      return Draw(drawing, unionConstruct, Type::Kind::unionType);
                                    }};

const Feature wholeStructsFeature = {.name = "whole-structs",
                                     .says = "assignment of whole structs",
                                     .needs = {&nestedStructsFeature},
                                     .statement = [](Drawing& drawing) {
                                       return Draw(drawing, structConstruct, Type::Kind::structure);
                                     }};

}  // namespace exploration
