#include <fmt/format.h>

#include "exploration/features/drawing.h"
#include "exploration/features/features.h"
#include "exploration/features/places.h"

namespace exploration {
namespace {

void Check(const Node& node, const Program& program) {
  RequireParts(node, 2);
  const Node& object = node.parts[0];
  const Type& index = program.types[node.parts[1].type];
  Require(object.construct->kind == Construct::Kind::place &&
              program.types[object.type].kind != Type::Kind::pointer,
          "bytes of no object");
  Require(node.type == TypeOf(Scalar::ucharType), "a byte of another type");
  Require(index.kind == Type::Kind::scalar && !TraitsOf(index.scalar).isFloat,
          "an index that is no integer");
}
std::string Print(const Node& node, const Printer& printer) {
  return fmt::format("((__{} uchar *)&{})[{}]",
                     NameOf(SpaceOf(node.parts[0], printer.program)).substr(2),
                     printer.Text(node.parts[0]), printer.Text(node.parts[1]));
}
// C99 6.5, paragraph 7: characters may be read and written in any object, and no other byte
// changes.
Place Locate(const Node& node, Machine& machine) {
  const std::int64_t index = KnownInteger(machine.types, machine.Evaluate(node.parts[1]));
  Place place = machine.Locate(node.parts[0]);
  Require(place.components.empty(), "the address of a component");
  Require(index >= 0 && static_cast<std::size_t>(index) < SizeOf(machine.types, place.type),
          "a byte beyond the object");
  place.offset += static_cast<std::size_t>(index);
  place.type = node.type;
  place.path.clear();
  return place;
}

const Construct byteConstruct = {.name = "byte",
                                 .feature = "bytes",
                                 .kind = Construct::Kind::place,
                                 .check = Check,
                                 .print = Print,
                                 .place = Locate};

/// Of a structure or union; of simple types seldom, for they have `as_type` for the same.
std::optional<Node> DrawByte(Drawing& drawing, const Node& from) {
  const Type& type = drawing.program.types[from.type];
  if (!type.IsRecord() || type.name.empty() || drawing.random.Chance(60)) return std::nullopt;
  const int size = static_cast<int>(SizeOf(drawing.program.types, from.type));
  Node index = {&literalConstruct, TypeOf(Scalar::intType), {}, {drawing.random.Below(size)}};
  if (drawing.Has(runTimeIndicesFeature) && drawing.random.Chance(50)) {
    std::vector<std::int64_t> numbers;
    for (int item = 0; item < drawing.program.Items(); ++item)
      numbers.push_back(drawing.random.Below(size));
    index = drawing.NewInput(TypeOf(Scalar::longType), numbers);
  }
  return Node{&byteConstruct, TypeOf(Scalar::ucharType), {from, index}, {}};
}

}  // namespace

const Feature bytesFeature = {.name = "bytes",
                              .says = "single bytes of an object through a pointer to uchar",
                              .place = DrawByte};

}  // namespace exploration
