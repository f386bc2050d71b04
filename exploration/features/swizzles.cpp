#include <utility>

#include "exploration/features/drawing.h"
#include "exploration/features/features.h"
#include "exploration/features/vector_parts.h"

namespace exploration {
namespace {

std::vector<int> Components(const Node& node) { return {node.numbers.begin(), node.numbers.end()}; }

void Check(const Node& node, const Program& program) {
  CheckPart(node, program, Components(node));
  Require(node.numbers.size() > 1, "a swizzle of one component");
}
std::string Print(const Node& node, const Printer& printer) {
  return printer.Operand(node.parts[0]) +
         ComponentNames(printer.program.types[node.parts[0].type].count, node.numbers);
}
Place Locate(const Node& node, Machine& machine) {
  return LocatePart(node, machine, Components(node));
}
/// In their own order.
std::vector<Node> Simpler(const Node& node, const Program&) {
  Node ordered = node;
  for (std::size_t i = 0; i < node.numbers.size(); ++i)
    ordered.numbers[i] = static_cast<std::int64_t>(i);
  return ordered == node ? std::vector<Node>{} : std::vector<Node>{ordered};
}

const Construct swizzleConstruct = {.name = "swizzle",
                                    .feature = "swizzles",
                                    .kind = Construct::Kind::place,
                                    .check = Check,
                                    .print = Print,
                                    .place = Locate,
                                    .simpler = Simpler};

std::optional<Node> Draw(Drawing& drawing, const Node& from) {
  if (!HasParts(from, drawing.program)) return std::nullopt;
  const Type& vector = drawing.program.types[from.type];
  std::vector<int> fitting;
  for (const int width : widths)
    if (width > 1 && width <= vector.count) fitting.push_back(width);
  std::vector<std::int64_t> components(static_cast<std::size_t>(vector.count));
  for (std::size_t i = 0; i < components.size(); ++i) {
    components[i] = static_cast<std::int64_t>(i);
    const int other = drawing.random.Below(static_cast<int>(i) + 1);
    std::swap(components[i], components[static_cast<std::size_t>(other)]);
  }
  const int width = drawing.random.OneOf(fitting);
  components.resize(static_cast<std::size_t>(width));
  return Node{&swizzleConstruct, VectorOf(vector.scalar, width), {from}, components};
}

}  // namespace

const Feature swizzlesFeature = {.name = "swizzles",
                                 .says = "several components of a vector in any order: .zx, .s50",
                                 .needs = {&vectorsFeature},
                                 .place = Draw};

}  // namespace exploration
