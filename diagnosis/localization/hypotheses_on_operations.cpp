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
    {"negated",
     "Every answer has the other sign.",
     [](Ways& ways) { ways.Add({.change = Change::negated}); },
     {"A negation is folded into the store, or a modifier of the instruction has the wrong bit.",
      "c.r = v\nc.r = -v", "source and destination modifiers, the folding of fneg", "*"}},
    {"no-floor",
     "The floor is left out.",
     [](Ways& ways) {
       if (ways.row.operation == Operation::floor) ways.Add({.formula = Formula::copy});
     },
     {"The floor is taken for superfluous. Only where what is converted need not be whole can this "
      "be seen; the suite's own rows convert integers.",
      "c.r = floor(x)\nc.r = x", "the folding of floor, of functions that are called _floor",
      "floor_*"}},
    {"integer-stored",
     "The bits of the result are those of an integer.",
     AddIntegersStored,
     {"The result goes through the integer member: it is converted back, and these bits are "
      "stored.",
      "c.r = v\nc.z = (int)v",
      "type-based alias analysis, the member that a store is taken to name", "*"}},
    {"sign-lost",
     "Every answer is positive.",
     [](Ways& ways) { ways.Add({.change = Change::magnitude}); },
     {"An absolute value is folded into the result, or the sign bit is masked out.",
      "c.r = v\nc.r = fabs(v)", "source and destination modifiers, masks on the sign bit", "*"}},
    {"answers-a",
     "The converted integer is the answer.",
     [](Ways& ways) {
       if (ways.row.twoInputs || ways.row.operation == Operation::power)
         ways.Add({.formula = Formula::copy});
     },
     {"The operation is folded away: its second operand is taken for its neutral element.",
      "c.r = a.a + b.b\nc.r = a.a",
      "the value that B's load is taken to have: an uninitialized or constant buffer",
      "add_* multiply_* power_*"}},
    {"answers-b",
     "The float of B is the answer.",
     AddOfTwo<Formula::onlyB>,
     {"The operation is folded away: its first operand is taken for its neutral element.",
      "c.r = a.a + b.b\nc.r = b.b", "the value that A's load is taken to have",
      "add_* multiply_*"}},
    {"other-operation",
     "A sum in place of a product, or a product of a sum.",
     [](Ways& ways) {
       if (!ways.row.twoInputs) return;
       const bool isSum = ways.row.operation == Operation::add;
       ways.Add({.formula = isSum ? Formula::product : Formula::sum});
     },
     {"The instruction of the other operation is chosen.", "c.r = x + b\nc.r = x * b",
      "the tables of the instruction selection, a cache of programs that mixes two up",
      "add_* multiply_*"}},
    {"difference",
     "The float of B is subtracted.",
     AddOfTwo<Formula::difference>,
     {"The second operand of the sum or product is subtracted.", "c.r = x + b\nc.r = x - b",
      "the negation modifier of the second operand", "add_* multiply_*"}},
    {"b-truncated",
     "The float of B is made an integer, and that a float.",
     [](Ways& ways) {
       if (ways.row.twoInputs) ways.Add({.truncatedB = true});
     },
     {"B's float goes through an integer, as if its member were the integer one.",
      "c.r = x + b.b\nc.r = x + (float)(int)b.b",
      "implicit conversions at the operator, the type of the member B", "add_* multiply_*"}},
    {"conversion-too-late",
     "The integer takes part as it is, and the sum or product is rounded once.",
     AddOfTwo<Formula::unconverted>,
     {"The integer is not rounded to a float before the operation: it takes part in higher "
      "precision.",
      "c.r = (float)a + b\nc.r = (float)((double)a + b)",
      "contraction of conversion and arithmetic, excess precision", "add_* multiply_*"}},
    {"computes-in-integers",
     "The float of B is made an integer, and the result of integers converted.",
     AddOfTwo<Formula::inIntegers>,
     {"The usual conversions go the wrong way: the float becomes an integer.",
      "c.r = (float)a + b\nc.r = (float)(a + (int)b)", "the common type of int and float operands",
      "add_* multiply_*"}},
    {"power-by-logarithm",
     "The power of a negative base is a NaN.",
     AddOfPower<Formula::byLogarithm>,
     {"pow is expanded to exp2(y * log2(x)), which has no value for a negative base.",
      "pow(-2.0f, 3.0f) is -8\nexp2(3.0f * log2(-2.0f)) is NaN",
      "the library's pow, native or fast-math versions of it", "power_*"}},
    {"exponent-exchanged",
     "The exponent is the lane in place of the element, or the element in place of the lane.",
     AddOfPower<Formula::exponentOfLane>,
     {"The loop's index and the work-item's number are exchanged.",
      "pow(x, (float)i)\npow(x, (float)tid)",
      "the registers of get_global_id and of the induction variable", "power_*"}},
};

}  // namespace

constinit const std::span<const Hypothesis> hypothesesOnOperations = hypotheses;

}  // namespace diagnosis
