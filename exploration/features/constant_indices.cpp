#include "exploration/features/drawing.h"
#include "exploration/features/features.h"
#include "exploration/features/places.h"

namespace exploration {
namespace {

std::vector<Node> Simpler(const Node& node, const Program&) {
  Node first = node;
  first.parts[1].numbers = {0};
  return node.parts[1].construct == &literalConstruct && !(first == node) ? std::vector<Node>{first}
                                                                          : std::vector<Node>{};
}

const Construct elementConstruct = {.name = "element",
                                    .feature = "constant-indices",
                                    .kind = Construct::Kind::place,
                                    .check = CheckElement,
                                    .print = PrintElement,
                                    .place = LocateElement,
                                    .simpler = Simpler};

std::optional<Node> DrawElement(Drawing& drawing, const Node& from) {
  const Type& array = drawing.program.types[from.type];
  if (array.kind != Type::Kind::array) return std::nullopt;
  const Node index = {
      &literalConstruct, TypeOf(Scalar::intType), {}, {drawing.random.Below(array.count)}};
  return Node{&elementConstruct, array.element, {from, index}, {}};
}

}  // namespace

const Feature constantIndicesFeature = {.name = "constant-indices",
                                        .says = "elements of arrays by a number in the text",
                                        .place = DrawElement};

}  // namespace exploration
