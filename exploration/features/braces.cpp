#include "exploration/features/braces.h"

#include <fmt/format.h>

#include <algorithm>

#include "exploration/features/drawing.h"
#include "exploration/model/arithmetic.h"

namespace exploration {
namespace {

TypeId TypeAt(const Types& types, TypeId aggregate, std::int64_t number) {
  const Type& type = types[aggregate];
  if (type.kind == Type::Kind::array) return type.element;
  return type.members.at(static_cast<std::size_t>(number)).type;
}

std::size_t OffsetAt(const Types& types, TypeId aggregate, std::int64_t number) {
  const Type& type = types[aggregate];
  if (type.kind == Type::Kind::array)
    return static_cast<std::size_t>(number) * SizeOf(types, type.element);
  return OffsetOf(types, aggregate, static_cast<int>(number));
}

/// In order and from the first; but one member of a union, and that by its name if it isn't the
/// first.
void Check(const Node& node, const Program& program) {
  const Type& type = program.types[node.type];
  const bool isUnion = type.kind == Type::Kind::unionType;
  const std::size_t most = isUnion                          ? 1
                           : type.kind == Type::Kind::array ? static_cast<std::size_t>(type.count)
                                                            : type.members.size();
  Require(!type.IsLeaf() && type.kind != Type::Kind::pointer, "braces around a simple type");
  Require(
      !node.parts.empty() && node.parts.size() <= most && node.parts.size() == node.numbers.size(),
      "too many initializers");
  RequireParts(node, node.numbers.size());
  for (std::size_t i = 0; i < node.parts.size(); ++i) {
    const std::int64_t number = node.numbers[i];
    Require(isUnion ? number >= 0 && static_cast<std::size_t>(number) < type.members.size()
                    : number == static_cast<std::int64_t>(i),
            "initializers in disorder");
    Require(!isUnion || number == 0 || !type.members[static_cast<std::size_t>(number)].name.empty(),
            "an initializer by no name");
    Require(TypeAt(program.types, node.type, number) == node.parts[i].type,
            "an initializer of another type");
  }
}

std::string Print(const Node& node, const Printer& printer) {
  const Type& type = printer.program.types[node.type];
  std::vector<std::string> texts;
  for (const Node& part : node.parts) texts.push_back(printer.Text(part));
  if (type.kind == Type::Kind::unionType && node.numbers[0] != 0)
    return fmt::format("{{.{} = {}}}",
                       type.members.at(static_cast<std::size_t>(node.numbers[0])).name, texts[0]);
  return fmt::format("{{{}}}", fmt::join(texts, ", "));
}

/// What is left out is zero (C99 6.7.8, paragraphs 10 and 21): of a union the first member.
void MakeZero(const Types& types, TypeId id, std::size_t offset, std::vector<Byte>& bytes) {
  const Type& type = types[id];
  if (type.IsLeaf())
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(offset),
                TraitsOf(type.scalar).size * type.count, Byte{0, Knowledge::known});
  const int count = type.kind == Type::Kind::array       ? type.count
                    : type.kind == Type::Kind::unionType ? 1
                                                         : static_cast<int>(type.members.size());
  for (int i = 0; i < count && !type.IsLeaf(); ++i)
    MakeZero(types, TypeAt(types, id, i), offset + OffsetAt(types, id, i), bytes);
}

// The bytes of a union beyond its initialized member are nowhere promised to be zero, nor is
// padding.
Value Evaluate(const Node& node, Machine& machine) {
  const Types& types = machine.types;
  Value value;
  value.type = node.type;
  value.bytes.resize(SizeOf(types, node.type));
  if (types[node.type].kind != Type::Kind::unionType) MakeZero(types, node.type, 0, value.bytes);
  for (std::size_t i = 0; i < node.parts.size(); ++i) {
    const Value part = machine.Evaluate(node.parts[i]);
    const std::vector<bool> isValue = ValueBytesOf(types, part.type);
    const std::size_t offset = OffsetAt(types, node.type, node.numbers[i]);
    for (std::size_t b = 0; b < part.bytes.size(); ++b)
      value.bytes[offset + b] = isValue[b] ? part.bytes[b] : Byte{};
  }
  return value;
}

}  // namespace

const Construct bracesConstruct = {
    .name = "braces", .check = Check, .print = Print, .value = Evaluate};

Node DrawBraces(Drawing& drawing, TypeId id, const std::function<Node(TypeId)>& leaf) {
  const Type type = drawing.program.types[id];
  if (type.IsLeaf()) return leaf(id);
  const bool isUnion = type.kind == Type::Kind::unionType;
  const int all =
      type.kind == Type::Kind::array ? type.count : static_cast<int>(type.members.size());
  Node braces = {&bracesConstruct, id, {}, {}};
  const int first = isUnion ? drawing.random.Below(all) : 0;
  const bool isNamed = isUnion && !type.members[static_cast<std::size_t>(first)].name.empty();
  int count = isUnion ? 1 : all;
  if (count > 1 && drawing.random.Chance(15)) count = drawing.random.Between(1, count);
  for (int i = 0; i < count; ++i) {
    const int number = isNamed ? first : i;
    braces.numbers.push_back(number);
    braces.parts.push_back(DrawBraces(drawing, TypeAt(drawing.program.types, id, number), leaf));
  }
  return braces;
}

}  // namespace exploration
