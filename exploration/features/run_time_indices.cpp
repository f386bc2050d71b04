#include "exploration/features/drawing.h"
#include "exploration/features/features.h"
#include "exploration/features/places.h"

namespace exploration {
namespace {

const Construct elementConstruct = {.name = "run-time element",
                                    .feature = "run-time-indices",
                                    .kind = Construct::Kind::place,
                                    .check = CheckElement,
                                    .print = PrintElement,
                                    .place = LocateElement};

/// A loop's counter, or a number from outside.
std::optional<Node> DrawElement(Drawing& drawing, const Node& from) {
  const Type& array = drawing.program.types[from.type];
  if (array.kind != Type::Kind::array) return std::nullopt;
  std::vector<Node> counters;
  for (const Drawing::Index& index : drawing.indices)
    if (index.end <= array.count) counters.push_back(index.node);
  if (!counters.empty() && drawing.random.Chance(80))
    return Node{&elementConstruct, array.element, {from, drawing.random.OneOf(counters)}, {}};
  std::vector<std::int64_t> numbers;
  for (int item = 0; item < drawing.program.Items(); ++item)
    numbers.push_back(drawing.random.Below(array.count));
  const Node index = drawing.NewInput(TypeOf(Scalar::longType), numbers);
  return Node{&elementConstruct, array.element, {from, index}, {}};
}

}  // namespace

const Feature runTimeIndicesFeature = {.name = "run-time-indices",
                                       .says = "elements of arrays by a number from outside",
                                       .needs = {&arraysFeature},
                                       .place = DrawElement};

}  // namespace exploration
