#include <fmt/format.h>

#include <cmath>
#include <string_view>

#include "exploration/features/drawing.h"
#include "exploration/features/features.h"
#include "exploration/features/places.h"
#include "exploration/model/arithmetic.h"

// vload_half and vstore_half read and write a half as a float, on devices too that have no other
// use for half. What they reach through a pointer to half is a buffer, where the bytes have no
// other type but that of what was last stored.

namespace exploration {
namespace {

/// The bits of an ordinary half as a number: a sign, five bits of an exponent, ten of a fraction.
double RealOf(std::int64_t bits) {
  const double fraction = 1 + static_cast<double>(bits & 0x3FF) / 1024;
  const double magnitude = std::ldexp(fraction, static_cast<int>((bits >> 10) & 0x1F) - 15);
  return (bits & 0x8000) != 0 ? -magnitude : magnitude;
}

/// The bits of a number that half has. Throws Invalid for one that would be rounded, and for zero,
/// which is not worth a case.
std::int64_t HalfOf(double real) {
  int exponent = 0;
  const double fraction = 2 * std::frexp(std::fabs(real), &exponent) - 1;
  const double scaled = fraction * 1024;
  const int biased = exponent - 1 + 15;
  Require(real != 0 && biased > 0 && biased < 31 && scaled == std::floor(scaled),
          "a float that half has not");
  return static_cast<std::int64_t>(scaled) | (std::int64_t{biased} << 10) | (real < 0 ? 0x8000 : 0);
}

/// parts[0] is a structure or union in a buffer; numbers[0] the first argument, in elements of all
/// components, numbers[1] where the pointer points, in halves.
void CheckMemory(const Node& node, const Program& program, TypeId floats) {
  const Node& place = node.parts.at(0);
  const Type& of = program.types[floats];
  Require(of.IsLeaf() && of.scalar == Scalar::floatType, "a half is read and written as a float");
  Require(node.numbers.size() >= 2 && node.numbers[0] >= 0 && node.numbers[1] >= 0,
          "no place of a half");
  Require(place.construct->kind == Construct::Kind::place && program.types[place.type].IsRecord(),
          "a half in no structure or union");
  const Space space = SpaceOf(place, program);
  Require(space == Space::globalSpace || space == Space::constantSpace, "a half in no buffer");
}

/// "4" of a vector of four; nothing of a scalar.
std::string Width(const Program& program, TypeId floats) {
  const int count = program.types[floats].count;
  return count == 1 ? "" : std::to_string(count);
}

std::string MemoryText(const Node& node, const Printer& printer) {
  std::string pointer =
      fmt::format("({} half *)&{}", NameOf(SpaceOf(node.parts[0], printer.program)),
                  printer.Operand(node.parts[0]));
  if (node.numbers[1] != 0) pointer += fmt::format(" + {}", node.numbers[1]);
  return fmt::format("{}, {}", node.numbers[0], pointer);
}

std::vector<Place> Locate(const Node& node, Machine& machine, TypeId floats) {
  const Place object = machine.Locate(node.parts[0]);
  const int count = machine.types[floats].count;
  std::vector<Place> places;
  for (int i = 0; i < count; ++i) {
    const auto index = static_cast<std::size_t>(node.numbers[1] + node.numbers[0] * count + i);
    Require(2 * index + 2 <= SizeOf(machine.types, object.type), "a half beyond the object");
    Place place = object;
    place.offset += 2 * index;
    place.type = TypeOf(Scalar::halfType);
    place.path.clear();
    place.throughPointer = true;
    RequireAligned(machine, place);
    places.push_back(place);
  }
  return places;
}

void CheckLoad(const Node& node, const Program& program) {
  RequireParts(node, 1);
  CheckMemory(node, program, node.type);
}
std::string PrintLoad(const Node& node, const Printer& printer) {
  return fmt::format("vload_half{}({})", Width(printer.program, node.type),
                     MemoryText(node, printer));
}
Value Load(const Node& node, Machine& machine) {
  Value value = EmptyValue(machine.types, node.type);
  int component = 0;
  for (const Place& place : Locate(node, machine, node.type)) {
    Number number = ComponentOf(machine.types, machine.Load(place), 0);
    number.real = RealOf(number.integer);
    number.scalar = Scalar::floatType;
    SetComponent(machine.types, value, component++, number);
  }
  return value;
}
const Construct loadConstruct = {.name = "vload_half",
                                 .feature = "half-storage",
                                 .check = CheckLoad,
                                 .print = PrintLoad,
                                 .value = Load};

/// numbers[2] is how it would round what half has not.
constexpr std::string_view roundings[] = {"", "_rte", "_rtz", "_rtp", "_rtn"};

void CheckStore(const Node& node, const Program& program) {
  RequireParts(node, 2);
  CheckMemory(node, program, node.parts[1].type);
  Require(node.numbers.size() == 3 && node.numbers[2] >= 0 &&
              node.numbers[2] < static_cast<std::int64_t>(std::size(roundings)),
          "no rounding");
  Require(SpaceOf(node.parts[0], program) == Space::globalSpace, "a store to what is constant");
}
std::string PrintStore(const Node& node, const Printer& printer) {
  return fmt::format("vstore_half{}{}({}, {});", Width(printer.program, node.parts[1].type),
                     roundings[static_cast<std::size_t>(node.numbers[2])],
                     printer.Text(node.parts[1]), MemoryText(node, printer));
}
void Store(const Node& node, Machine& machine) {
  const Value value = machine.Evaluate(node.parts[1]);
  int component = 0;
  for (const Place& place : Locate(node, machine, node.parts[1].type)) {
    Number number = ComponentOf(machine.types, value, component++);
    number.integer = HalfOf(number.real);
    number.scalar = Scalar::halfType;
    machine.StoreTo(place, ValueOf(machine.types, number));
  }
}
std::vector<Node> SimplerStore(const Node& node, const Program&) {
  Node plain = node;
  plain.numbers.at(2) = 0;
  return {plain};
}
const Construct storeConstruct = {.name = "vstore_half",
                                  .feature = "half-storage",
                                  .kind = Construct::Kind::statement,
                                  .check = CheckStore,
                                  .print = PrintStore,
                                  .execute = Store,
                                  .simpler = SimplerStore};

/// So many halves of an object in a buffer; nothing if there is no such object.
std::optional<Node> DrawMemory(Drawing& drawing, int count, bool forStore) {
  const Types& types = drawing.program.types;
  for (int attempt = 0; attempt < 8 && !drawing.roots.empty(); ++attempt) {
    const Node& root = drawing.random.OneOf(drawing.roots);
    if (!types[root.type].IsRecord() || types[root.type].name.empty()) continue;
    const Space space = SpaceOf(root, drawing.program);
    if (space != Space::globalSpace && (forStore || space != Space::constantSpace)) continue;
    const int most = static_cast<int>(SizeOf(types, root.type)) / 2 - count;
    if (most < 0) continue;
    const int begin = drawing.random.Below(most + 1);
    const int offset = drawing.random.Below(begin / count + 1);
    return Node{nullptr, noType, {root}, {offset, begin - offset * count}};
  }
  return std::nullopt;
}

int DrawWidth(Drawing& drawing) {
  if (drawing.Has(threeComponentsFeature) && drawing.random.Chance(25)) return 3;
  return drawing.Has(vectorsFeature) ? drawing.random.OneOf<int>({1, 2, 4, 8}) : 1;
}

std::optional<Node> DrawLoad(Drawing& drawing, TypeId type) {
  const Type& of = drawing.program.types[type];
  if (of.scalar != Scalar::floatType) return std::nullopt;
  std::optional<Node> load = DrawMemory(drawing, of.count, false);
  if (!load) return std::nullopt;
  load->construct = &loadConstruct;
  load->type = type;
  return drawing.IsKnown(*load) ? load : std::nullopt;
}

/// A store and, as no member may be used for it, a load and the bytes.
bool Draw(Drawing& drawing) {
  const TypeId floats = VectorOf(Scalar::floatType, DrawWidth(drawing));
  std::optional<Node> store = DrawMemory(drawing, drawing.program.types[floats].count, true);
  if (!store) return false;
  Node load = {&loadConstruct, floats, store->parts, store->numbers};
  store->construct = &storeConstruct;
  store->parts.push_back(drawing.NewInput(floats));
  store->numbers.push_back(drawing.random.Below(static_cast<int>(std::size(roundings))));
  drawing.Add(*store);
  if (!drawing.IsInFunction() && drawing.IsKnown(load)) drawing.AddAnswer(load);
  return true;
}

}  // namespace

const Feature halfStorageFeature = {.name = "half-storage",
                                    .says = "vload_half and vstore_half in buffers",
                                    .needs = {&floatsFeature, &globalMemoryFeature},
                                    .statement = Draw,
                                    .value = DrawLoad};

}  // namespace exploration
