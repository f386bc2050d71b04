#include <algorithm>

#include "exploration/features/drawing.h"
#include "exploration/features/features.h"
#include "exploration/features/places.h"

namespace exploration {
namespace {

/// "u1 = f1(...);", "f1(...);", or with the result of a new variable.
void Check(const Node& node, const Program& program) {
  Require(!node.parts.empty() && node.parts.size() <= 2, "a call is missing");
  Require(node.parts.back().construct == &callConstruct, "no call");
  if (node.parts.size() == 1) return;
  RequireParts(node, 2);
  Require(node.parts[0].construct->kind == Construct::Kind::place &&
              node.parts[0].type == node.parts[1].type &&
              !(program.types[node.parts[0].type].kind == Type::Kind::array),
          "a result of another type");
}
std::string Print(const Node& node, const Printer& printer) {
  const std::string call = printer.Text(node.parts.back()) + ";";
  return node.parts.size() == 1 ? call : printer.Text(node.parts[0]) + " = " + call;
}
void Execute(const Node& node, Machine& machine) {
  const Value value = machine.Evaluate(node.parts.back());
  if (node.parts.size() == 2) machine.StoreTo(machine.Locate(node.parts[0]), value);
}

const Construct callStatementConstruct = {.name = "call statement",
                                          .kind = Construct::Kind::statement,
                                          .check = Check,
                                          .print = Print,
                                          .execute = Execute};

using Result = std::function<std::optional<Node>(const std::vector<Node>&)>;

bool HasParameter(const Program& program, Type::Kind kind, Type::Kind orKind) {
  return std::any_of(
      program.functions.begin(), program.functions.end(), [&](const Function& function) {
        return std::any_of(function.parameters.begin(), function.parameters.end(), [&](int one) {
          const TypeId type = program.variables[static_cast<std::size_t>(one)].type;
          return program.types[type].kind == kind || program.types[type].kind == orKind;
        });
      });
}

/// Passes a record, and answers with a value of it.
bool DrawParameter(Drawing& drawing) {
  const std::optional<Node> passed = drawing.KnownRecord();
  if (!passed || drawing.IsInFunction()) return false;
  std::optional<Node> leaf;
  const Result result = [&](const std::vector<Node>&) { return leaf = drawing.KnownLeaf(); };
  const Node call = drawing.NewCall({*passed}, result);
  if (!leaf) return false;
  drawing.AddAnswer(call);
  return true;
}

/// Passes a record, and stores what comes back where there is a place for it.
bool DrawResult(Drawing& drawing) {
  const std::optional<Node> passed = drawing.KnownRecord();
  if (!passed || drawing.IsInFunction()) return false;
  const Result result = [&](const std::vector<Node>& parameters) {
    const std::optional<Node> known = drawing.KnownRecord();
    return known ? known : std::optional(parameters[0]);
  };
  const Node call = drawing.NewCall({*passed}, result);
  for (int attempt = 0; attempt < 6; ++attempt) {
    const std::optional<Node> to = drawing.TargetRecord();
    if (!to || to->type != call.type) continue;
    drawing.Add({&callStatementConstruct, noType, {*to, call}, {}});
    return true;
  }
  return false;
}

bool DrawPointerParameter(Drawing& drawing) {
  const std::optional<Node> pointed = drawing.TargetRecord();
  if (!pointed || drawing.IsInFunction()) return false;
  const Node call = drawing.NewCall({AddressOf(drawing.program, *pointed)},
                                    [](const std::vector<Node>&) { return std::nullopt; });
  drawing.Add({&callStatementConstruct, noType, {call}, {}});
  return true;
}

}  // namespace

const Feature parametersFeature = {.name = "parameters",
                                   .says = "structs and unions passed by value",
                                   .statement = DrawParameter,
                                   .isUsed = [](const Program& program) {
                                     return HasParameter(program, Type::Kind::unionType,
                                                         Type::Kind::structure);
                                   }};

const Feature resultsFeature = {
    .name = "results",
    .says = "structs and unions returned by value",
    .statement = DrawResult,
    .isUsed = [](const Program& program) {
      return std::any_of(
          program.functions.begin(), program.functions.end(), [&](const Function& function) {
            return !function.result.empty() && program.types[function.result[0].type].IsRecord();
          });
    }};

const Feature pointerParametersFeature = {.name = "pointer-parameters",
                                          .says = "helper functions that take a pointer",
                                          .statement = DrawPointerParameter,
                                          .isUsed = [](const Program& program) {
                                            return HasParameter(program, Type::Kind::pointer,
                                                                Type::Kind::pointer);
                                          }};

}  // namespace exploration
