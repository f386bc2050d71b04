#include "exploration/features/drawing.h"
#include "exploration/features/features.h"

namespace exploration {
namespace {

/// If the first part is not zero, the second is executed, and else the third, if there is one.
void Check(const Node& node, const Program& program) {
  Require(node.parts.size() == 2 || node.parts.size() == 3, "a condition without a block");
  const Type& type = program.types[node.parts[0].type];
  Require(type.kind == Type::Kind::scalar && !TraitsOf(type.scalar).isFloat,
          "a condition that is no integer");
  for (std::size_t i = 1; i < node.parts.size(); ++i)
    Require(node.parts[i].construct == &blockConstruct, "a condition without a block");
}
std::string Print(const Node& node, const Printer& printer) {
  std::string text =
      "if (" + printer.Text(node.parts[0]) + ") {\n" + printer.Block(node.parts[1]) + "}";
  if (node.parts.size() == 3) text += " else {\n" + printer.Block(node.parts[2]) + "}";
  return text;
}
void Execute(const Node& node, Machine& machine) {
  const bool holds = KnownInteger(machine.types, machine.Evaluate(node.parts[0])) != 0;
  if (holds) machine.Execute(node.parts[1]);
  if (!holds && node.parts.size() == 3) machine.Execute(node.parts[2]);
}
/// Only one of the blocks, whatever the condition says.
std::vector<Node> Simpler(const Node& node, const Program&) {
  std::vector<Node> simpler;
  if (node.parts.size() == 3) {
    simpler.push_back(node);
    simpler.back().parts.pop_back();
  }
  return simpler;
}

const Construct conditionalConstruct = {.name = "conditional",
                                        .feature = "conditionals",
                                        .kind = Construct::Kind::statement,
                                        .check = Check,
                                        .print = Print,
                                        .execute = Execute,
                                        .simpler = Simpler};

bool Draw(Drawing& drawing) {
  if (!drawing.MayNest()) return false;
  std::vector<std::int64_t> numbers(static_cast<std::size_t>(drawing.program.Items()));
  std::vector<int> those;
  std::vector<int> others;
  for (std::int64_t& number : numbers) number = drawing.random.Chance(60) ? 1 : 0;
  for (const int item : drawing.active)
    (numbers[static_cast<std::size_t>(item)] != 0 ? those : others).push_back(item);
  const Node condition = drawing.NewInput(TypeOf(Scalar::longType), numbers);
  Node node = {&conditionalConstruct, noType, {condition}, {}};
  node.parts.push_back(drawing.NewBlock(drawing.random.Between(1, 3), those));
  if (!others.empty() && drawing.random.Chance(60))
    node.parts.push_back(drawing.NewBlock(drawing.random.Between(1, 3), others));
  if (node.parts[1].parts.empty()) return false;
  drawing.Add(node);
  return true;
}

}  // namespace

const Feature conditionalsFeature = {
    .name = "conditionals", .says = "if and else on a number from outside", .statement = Draw};

}  // namespace exploration
