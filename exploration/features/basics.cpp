#include "exploration/features/basics.h"

#include <fmt/format.h>

#include <cstring>
#include <utility>

#include "exploration/model/arithmetic.h"

namespace exploration {
namespace {

const Type& TypeOf(const Node& node, const Program& program) { return program.types[node.type]; }

// Blocks are printed by what they are the blocks of, and executed by the machine.

std::string PrintVariable(const Node& node, const Printer& printer) {
  return printer.VariableName(node.numbers.at(0));
}
void CheckVariable(const Node& node, const Program& program) {
  Require(program.variables[static_cast<std::size_t>(node.numbers[0])].type == node.type,
          "a variable of another type");
}
Place LocateVariable(const Node& node, Machine& machine) {
  return machine.PlaceOf(node.numbers.at(0));
}

void CheckLiteral(const Node& node, const Program& program) {
  Require(node.type != noType && TypeOf(node, program).IsLeaf(), "a literal of no simple type");
  Require(node.numbers.size() == static_cast<std::size_t>(TypeOf(node, program).count),
          "a literal of another width");
}
std::string PrintLiteral(const Node& node, const Printer& printer) {
  const Type& type = printer.program.types[node.type];
  std::vector<std::string> components;
  for (const std::int64_t bits : node.numbers)
    components.push_back(LiteralText(type.scalar, static_cast<std::uint64_t>(bits)));
  return VectorText(printer.TypeName(node.type), components);
}
Value EvaluateLiteral(const Node& node, Machine& machine) {
  Value value = EmptyValue(machine.types, node.type);
  const int size = TraitsOf(machine.types[node.type].scalar).size;
  for (std::size_t c = 0; c < node.numbers.size(); ++c)
    for (int i = 0; i < size; ++i)
      value.bytes[c * static_cast<std::size_t>(size) + static_cast<std::size_t>(i)] = {
          static_cast<std::uint8_t>(static_cast<std::uint64_t>(node.numbers[c]) >> (8 * i)),
          Knowledge::known};
  // For a float that is not ordinary this throws.
  for (int c = 0; c < machine.types[node.type].count; ++c)
    SetComponent(machine.types, value, c, ComponentOf(machine.types, value, c));
  return value;
}
std::vector<Node> SimplerLiteral(const Node& node, const Program&) {
  std::vector<Node> simpler;
  for (const std::int64_t plain : {1, 0}) {
    Node one = node;
    for (std::int64_t& bits : one.numbers) bits = plain;
    if (one.numbers != node.numbers) simpler.push_back(std::move(one));
  }
  return simpler;
}

void CheckInput(const Node& node, const Program& program) {
  Require(node.type != noType && TypeOf(node, program).IsLeaf(), "an input of no simple type");
  for (const auto& own : program.inputs)
    Require(static_cast<std::size_t>(node.numbers[0] + TypeOf(node, program).count) <= own.size(),
            "no such input");
}
std::string PrintInput(const Node& node, const Printer& printer) {
  const Type& type = printer.program.types[node.type];
  const std::string name = printer.TypeName(node.type);
  const ScalarTraits& traits = TraitsOf(type.scalar);
  const auto first = node.numbers[0];
  // A floating-point number comes as the bits of an integer, and a ulong as those of a long.
  const bool isReinterpreted = traits.isFloat || type.scalar == Scalar::ulongType;
  const std::string_view carrier = traits.size == 2 ? "short" : traits.size == 4 ? "int" : "long";
  const std::string scalar(isReinterpreted ? carrier : traits.name);
  const std::string width = type.count == 1 ? "" : std::to_string(type.count);
  std::string text;
  if (type.count > 4) {
    text = fmt::format("vload{}(0, in + {})", type.count, first);
    if (scalar != "long") text = fmt::format("convert_{}{}({})", scalar, width, text);
  } else {
    std::vector<std::string> components;
    for (int i = 0; i < type.count; ++i)
      components.push_back((scalar == "long" ? "" : "(" + scalar + ")") +
                           fmt::format("in[{}]", first + i));
    text = VectorText(scalar + width, components);
  }
  return isReinterpreted ? fmt::format("as_{}({})", name, text) : text;
}
Value EvaluateInput(const Node& node, Machine& machine) {
  Node literal = node;
  literal.numbers.clear();
  for (int i = 0; i < machine.types[node.type].count; ++i) {
    const std::int64_t number = machine.Input(node.numbers[0] + i);
    const ScalarTraits& traits = TraitsOf(machine.types[node.type].scalar);
    // As it is cast in the text; the host gives nothing else.
    const int unused = 64 - 8 * traits.size;
    const auto bits = static_cast<std::uint64_t>(number) << unused;
    const bool extends = traits.isSigned || traits.isFloat;
    Require(number == (extends || unused == 0 ? static_cast<std::int64_t>(bits) >> unused
                                              : static_cast<std::int64_t>(bits >> unused)),
            "an input that does not fit");
    literal.numbers.push_back(number);
  }
  return EvaluateLiteral(literal, machine);
}

std::string PrintDeclaration(const Node& node, const Printer& printer) {
  const Variable& variable =
      printer.program.variables.at(static_cast<std::size_t>(node.numbers[0]));
  const std::string space = variable.space == Space::localSpace ? "__local " : "";
  return space + printer.Declared(variable.type, variable.name) + ";";
}
void ExecuteDeclaration(const Node& node, Machine& machine) { machine.Declare(node.numbers[0]); }

void CheckAssignment(const Node& node, const Program& program) {
  RequireParts(node, 2);
  Require(node.parts[0].construct->kind == Construct::Kind::place, "an assignment to a value");
  Require(node.parts[0].type == node.parts[1].type, "an assignment of another type");
  Require(TypeOf(node.parts[0], program).IsLeaf(), "an assignment of no simple type");
}
std::string PrintAssignment(const Node& node, const Printer& printer) {
  return printer.Text(node.parts[0]) + " = " + printer.Text(node.parts[1]) + ";";
}
// C99 6.5.16.1, paragraph 3: what is stored may not have been read from an object that overlaps the
// one it is stored to, unless they are the same. Whether that holds for what was computed from it
// too need not be settled.
void ExecuteAssignment(const Node& node, Machine& machine) {
  std::vector<Place> loads;
  const Value value = machine.Evaluate(node.parts[1], loads);
  const Place to = machine.Locate(node.parts[0]);
  for (const Place& from : loads)
    Require(!Overlap(machine.types, from, to), "an assignment to what overlaps");
  machine.StoreTo(to, value);
}

void CheckAnswer(const Node& node, const Program& program) {
  RequireParts(node, 1);
  const Type& type = TypeOf(node.parts[0], program);
  Require(type.IsLeaf(), "an answer of no simple type");
  Require(node.numbers[0] + type.count <= program.answers, "no such answer");
}
/// An integer is extended to a long with its sign, if it has one; of all others the bits are.
std::string PrintAnswer(const Node& node, const Printer& printer) {
  const Node& part = node.parts[0];
  const Type& type = printer.program.types[part.type];
  const ScalarTraits& traits = TraitsOf(type.scalar);
  const std::string width = type.count == 1 ? "" : std::to_string(type.count);
  std::string text = printer.Text(part);
  if (traits.isFloat && traits.size < 8)
    text = fmt::format("as_{}{}({})", traits.size == 2 ? "short" : "int", width, text);
  if (type.scalar == Scalar::doubleType || type.scalar == Scalar::ulongType)
    text = fmt::format("as_long{}({})", width, text);
  if (type.count == 1) return fmt::format("out[{}] = {};", node.numbers[0], text);
  if (traits.size < 8) text = fmt::format("convert_long{}({})", width, text);
  return fmt::format("vstore{}({}, 0, out + {});", type.count, text, node.numbers[0]);
}
void ExecuteAnswer(const Node& node, Machine& machine) {
  const Value value = machine.Evaluate(node.parts[0]);
  const Scalar scalar = machine.types[value.type].scalar;
  const auto size = static_cast<std::size_t>(TraitsOf(scalar).size);
  const bool extends = TraitsOf(scalar).isSigned;
  for (int c = 0; c < machine.types[value.type].count; ++c) {
    const auto begin = value.bytes.begin() + c * static_cast<std::ptrdiff_t>(size);
    std::vector<Byte> bytes(begin, begin + static_cast<std::ptrdiff_t>(size));
    const bool isNegative = extends && (bytes.back().value & 0x80) != 0;
    bytes.resize(8, {static_cast<std::uint8_t>(isNegative ? 0xFF : 0), bytes.back().knowledge});
    machine.Answer(node.numbers[0] + c, bytes);
  }
}

}  // namespace

const Construct blockConstruct = {.name = "block", .kind = Construct::Kind::block};
const Construct variableConstruct = {.name = "variable",
                                     .kind = Construct::Kind::place,
                                     .names = Construct::Names::variable,
                                     .check = CheckVariable,
                                     .print = PrintVariable,
                                     .place = LocateVariable};
const Construct literalConstruct = {.name = "literal",
                                    .check = CheckLiteral,
                                    .print = PrintLiteral,
                                    .value = EvaluateLiteral,
                                    .simpler = SimplerLiteral};
const Construct inputConstruct = {.name = "input",
                                  .names = Construct::Names::input,
                                  .where = Construct::Where::kernel,
                                  .check = CheckInput,
                                  .print = PrintInput,
                                  .value = EvaluateInput};
const Construct declarationConstruct = {.name = "declaration",
                                        .kind = Construct::Kind::statement,
                                        .names = Construct::Names::declaration,
                                        .print = PrintDeclaration,
                                        .execute = ExecuteDeclaration};
const Construct assignmentConstruct = {.name = "assignment",
                                       .kind = Construct::Kind::statement,
                                       .check = CheckAssignment,
                                       .print = PrintAssignment,
                                       .execute = ExecuteAssignment};
const Construct answerConstruct = {.name = "answer",
                                   .kind = Construct::Kind::statement,
                                   .names = Construct::Names::answer,
                                   .where = Construct::Where::kernel,
                                   .check = CheckAnswer,
                                   .print = PrintAnswer,
                                   .execute = ExecuteAnswer};

Node Block(std::vector<Node> statements) {
  return {&blockConstruct, noType, std::move(statements), {}};
}

Node NameOf(const Program& program, std::int64_t variable) {
  return {&variableConstruct,
          program.variables.at(static_cast<std::size_t>(variable)).type,
          {},
          {variable}};
}

Node Assignment(Node place, Node value) {
  return {&assignmentConstruct, noType, {std::move(place), std::move(value)}, {}};
}

std::string LiteralText(Scalar scalar, std::uint64_t bits) {
  const ScalarTraits& traits = TraitsOf(scalar);
  const int unused = 64 - 8 * traits.size;
  if (scalar == Scalar::halfType) return fmt::format("as_half((ushort)0x{:x})", bits & 0xFFFFU);
  if (scalar == Scalar::floatType) {
    float number = 0;
    std::memcpy(&number, &bits, sizeof number);
    return fmt::format("{:a}f", number);
  }
  if (scalar == Scalar::doubleType) {
    double number = 0;
    std::memcpy(&number, &bits, sizeof number);
    return fmt::format("{:a}", number);
  }
  if (!traits.isSigned) {
    const std::uint64_t number = bits << unused >> unused;
    if (traits.size < 4) return fmt::format("({}){}", traits.name, number);
    return fmt::format("{}{}", number, traits.size == 4 ? "u" : "UL");
  }
  const std::int64_t number = static_cast<std::int64_t>(bits << unused) >> unused;
  const std::string_view suffix = traits.size == 8 ? "L" : "";
  // What is the least has no literal: its digits are those of a positive number with no room for
  // it.
  std::string text = number == static_cast<std::int64_t>(std::uint64_t{1} << 63U) >> unused
                         ? fmt::format("({}{} - 1)", number + 1, suffix)
                         : fmt::format("{}{}", number, suffix);
  return traits.size < 4 ? fmt::format("({}){}", traits.name, text) : text;
}

void RequireParts(const Node& node, std::size_t count) {
  Require(node.parts.size() == count, "parts are missing");
  for (const Node& part : node.parts) Require(part.type != noType, "a part without a value");
}

std::string VectorText(const std::string& type, const std::vector<std::string>& components) {
  if (components.size() == 1) return components.front();
  return fmt::format("({})({})", type, fmt::join(components, ", "));
}

}  // namespace exploration
