#include "exploration/features/drawing.h"
#include "exploration/features/features.h"
#include "exploration/features/vector_parts.h"

namespace exploration {
namespace {

struct Half {
  std::string_view name;
  bool isUpper;   ///< Begins in the middle, and else with the first.
  bool isSpread;  ///< Every other component.
  bool isOdd;
};
constexpr Half halves[] = {{".lo", false, false, false},
                           {".hi", true, false, false},
                           {".even", false, true, false},
                           {".odd", false, true, true}};

const Half& HalfOf(const Node& node) {
  return halves[static_cast<std::size_t>(node.numbers.at(0)) % std::size(halves)];
}

std::vector<int> Components(const Node& node, const Types& types) {
  const Half& half = HalfOf(node);
  const int count = types[node.parts.at(0).type].count / 2;
  std::vector<int> components;
  for (int i = 0; i < count; ++i)
    components.push_back((half.isSpread ? 2 * i : i) + (half.isOdd ? 1 : 0) +
                         (half.isUpper ? count : 0));
  return components;
}

// The upper half of three components has one that is not there.
void Check(const Node& node, const Program& program) {
  CheckPart(node, program, Components(node, program.types));
  Require(program.types[node.parts[0].type].count != 3, "a half of three components");
}
std::string Print(const Node& node, const Printer& printer) {
  return printer.Operand(node.parts[0]) + std::string(HalfOf(node).name);
}
Place Locate(const Node& node, Machine& machine) {
  return LocatePart(node, machine, Components(node, machine.types));
}
std::vector<Node> Simpler(const Node& node, const Program&) {
  if (node.numbers[0] == 0) return {};
  Node low = node;
  low.numbers = {0};
  return {low};
}

const Construct halfConstruct = {.name = "vector half",
                                 .feature = "vector-halves",
                                 .kind = Construct::Kind::place,
                                 .check = Check,
                                 .print = Print,
                                 .place = Locate,
                                 .simpler = Simpler};

std::optional<Node> Draw(Drawing& drawing, const Node& from) {
  if (!HasParts(from, drawing.program)) return std::nullopt;
  const Type& vector = drawing.program.types[from.type];
  if (vector.count == 3) return std::nullopt;
  return Node{&halfConstruct,
              VectorOf(vector.scalar, vector.count / 2),
              {from},
              {drawing.random.Below(static_cast<int>(std::size(halves)))}};
}

}  // namespace

const Feature vectorHalvesFeature = {.name = "vector-halves",
                                     .says = ".lo, .hi, .even and .odd of vectors",
                                     .needs = {&vectorsFeature},
                                     .place = Draw};

}  // namespace exploration
