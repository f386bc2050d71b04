#include "exploration/features/vector_memory.h"

#include <fmt/format.h>

#include "exploration/features/features.h"
#include "exploration/features/places.h"

namespace exploration {
namespace {

bool IsArrayOf(const Types& types, TypeId array, Scalar scalar) {
  return types[array].kind == Type::Kind::array && types[array].element == TypeOf(scalar);
}

}  // namespace

void CheckVectorMemory(const Node& node, const Program& program, TypeId vector) {
  const Node& place = node.parts.at(0);
  const Type& of = program.types[vector];
  Require(of.kind == Type::Kind::vector && node.numbers.size() == 2 && node.numbers[0] >= 0 &&
              node.numbers[1] >= 0,
          "vloadN or vstoreN of no vector");
  Require(place.construct->kind == Construct::Kind::place, "no address");
  Require(IsArrayOf(program.types, place.type, of.scalar) ||
              (of.scalar == Scalar::ucharType && program.types[place.type].IsRecord()),
          "vloadN or vstoreN of another type");
}

std::string VectorMemoryText(const Node& node, const Printer& printer, TypeId vector) {
  const Node& place = node.parts[0];
  const Types& types = printer.program.types;
  std::string pointer = printer.Operand(place);
  if (!IsArrayOf(types, place.type, types[vector].scalar))
    pointer = fmt::format("({} uchar *)&{}", NameOf(SpaceOf(place, printer.program)), pointer);
  if (node.numbers[1] != 0) pointer += fmt::format(" + {}", node.numbers[1]);
  return fmt::format("{}, {}", node.numbers[0], pointer);
}

// OpenCL C 1.2, 6.12.7: vloadN(offset, p) reads N elements from p + offset * N, which must be
// aligned as the elements are. Three components are three elements.
std::vector<Place> LocateVectorMemory(const Node& node, Machine& machine, TypeId vector) {
  const Types& types = machine.types;
  const Type& of = types[vector];
  const Place object = machine.Locate(node.parts[0]);
  Require(object.components.empty(), "the address of a component");
  std::vector<Place> places;
  for (int i = 0; i < of.count; ++i) {
    const std::int64_t index = node.numbers[1] + node.numbers[0] * of.count + i;
    Place place = object;
    if (IsArrayOf(types, object.type, of.scalar)) {
      place = ElementAt(machine, object, index);
      RequireAligned(machine, place);
    } else {
      Require(static_cast<std::size_t>(index) < SizeOf(types, object.type),
              "a byte beyond the object");
      place.offset += static_cast<std::size_t>(index);
      place.type = TypeOf(of.scalar);
      place.path.clear();
    }
    place.throughPointer = true;
    places.push_back(place);
  }
  return places;
}

std::optional<VectorMemory> DrawVectorMemory(Drawing& drawing, bool forStore) {
  const Types& types = drawing.program.types;
  for (int attempt = 0; attempt < 8 && !drawing.roots.empty(); ++attempt) {
    std::optional<Node> place = drawing.random.OneOf(drawing.roots);
    if (forStore && SpaceOf(*place, drawing.program) == Space::constantSpace) continue;
    const auto isArray = [&types](const Node& node) {
      const Type& type = types[node.type];
      return type.kind == Type::Kind::array && types[type.element].kind == Type::Kind::scalar;
    };
    bool isBytes = false;
    while (place && !isArray(*place) && !types[place->type].IsLeaf()) {
      const Type& type = types[place->type];
      isBytes = type.IsRecord() && !type.name.empty() && drawing.Has(bytesFeature) &&
                drawing.random.Chance(20);
      if (isBytes) break;
      place = drawing.Step(*place);
    }
    if (!place || types[place->type].IsLeaf()) continue;
    const Scalar scalar = isBytes ? Scalar::ucharType : types[types[place->type].element].scalar;
    const int count =
        isBytes ? static_cast<int>(SizeOf(types, place->type)) : types[place->type].count;
    std::vector<int> fitting;
    for (const int width : widths)
      if (width > 1 && width <= count) fitting.push_back(width);
    if (fitting.empty()) continue;
    const int width = drawing.random.OneOf(fitting);
    const int begin = drawing.random.Below(count - width + 1);
    const int offset = drawing.random.Below(begin / width + 1);
    return VectorMemory{VectorOf(scalar, width), *place, {offset, begin - offset * width}};
  }
  return std::nullopt;
}

}  // namespace exploration
