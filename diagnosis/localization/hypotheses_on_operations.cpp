// Another operation than the row's, and what is made of its result.

#include "diagnosis/localization/hypothesis.h"

namespace diagnosis {
namespace {

template <Formula formula>
void AddOfTwo(Ways& ways) {
  if (ways.row.twoInputs) ways.Add({.formula = formula});
}

template <Formula formula>
void AddOfPower(Ways& ways) {
  if (ways.row.operation == Operation::power) ways.Add({.formula = formula});
}

void AddIntegersStored(Ways& ways) {
  const auto add = [&ways](Change change, OverflowPolicy policy) {
    Fault fault{.change = change, .amount = static_cast<std::int64_t>(policy)};
    ways.Add(fault);
    const auto width = static_cast<int>(ways.row.width);
    if (width == sizeof(float)) return;
    fault.resultWidth = fault.result.step = width;
    ways.Add(fault, {.detail = "through the element member"});
  };
  for (const OverflowPolicy policy :
       {OverflowPolicy::intNearest, OverflowPolicy::intLowest, OverflowPolicy::uintNearest,
        OverflowPolicy::uintHighest, OverflowPolicy::lowBitsOfLong}) {
    add(Change::integerTruncated, policy);
    add(Change::integerRounded, policy);
  }
  add(Change::integerComputed, OverflowPolicy::lowBitsOfLong);
}

constexpr Hypothesis hypotheses[] = {
    {"negated", "Every answer has the other sign.",
     [](Ways& ways) { ways.Add({.change = Change::negated}); }},
    {"no-floor", "The floor is left out.",
     [](Ways& ways) {
       if (ways.row.operation == Operation::floor) ways.Add({.formula = Formula::copy});
     }},
    {"integer-stored", "The bits of the result are those of an integer.", AddIntegersStored},
    {"sign-lost", "Every answer is positive.",
     [](Ways& ways) { ways.Add({.change = Change::magnitude}); }},
    {"answers-a", "The converted integer is the answer.",
     [](Ways& ways) {
       if (ways.row.twoInputs || ways.row.operation == Operation::power)
         ways.Add({.formula = Formula::copy});
     }},
    {"answers-b", "The float of B is the answer.", AddOfTwo<Formula::onlyB>},
    {"other-operation", "A sum in place of a product, or a product of a sum.",
     [](Ways& ways) {
       if (!ways.row.twoInputs) return;
       const bool isSum = ways.row.operation == Operation::add;
       ways.Add({.formula = isSum ? Formula::product : Formula::sum});
     }},
    {"difference", "The float of B is subtracted.", AddOfTwo<Formula::difference>},
    {"b-truncated", "The float of B is made an integer, and that a float.",
     [](Ways& ways) {
       if (ways.row.twoInputs) ways.Add({.truncatedB = true});
     }},
    {"conversion-too-late",
     "The integer takes part as it is, and the sum or product is rounded once.",
     AddOfTwo<Formula::unconverted>},
    {"computes-in-integers",
     "The float of B is made an integer, and the result of integers converted.",
     AddOfTwo<Formula::inIntegers>},
    {"power-by-logarithm", "The power of a negative base is a NaN.",
     AddOfPower<Formula::byLogarithm>},
    {"exponent-exchanged",
     "The exponent is the lane in place of the element, or the element in place of the lane.",
     AddOfPower<Formula::exponentOfLane>},
};

}  // namespace

constinit const std::span<const Hypothesis> hypothesesOnOperations = hypotheses;

}  // namespace diagnosis
