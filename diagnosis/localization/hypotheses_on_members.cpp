// Which member of which union is read, and as what.

#include <fmt/format.h>

#include "diagnosis/localization/hypothesis.h"

namespace diagnosis {
namespace {

void AddByteOrders(Ways& ways) {
  const auto add = [&ways](bool a, bool b, bool result, const char* detail) {
    ways.Add({.a = {.reversed = a},
              .b = {.reversed = b},
              .change = result ? Change::reversed : Change::none},
             {.detail = detail});
  };
  add(true, true, true, "in all members");
  add(false, false, true, "in the result");
  add(true, false, false, "in A");
  if (!ways.row.twoInputs) return;
  add(false, true, false, "in B");
  add(true, true, false, "in A and B");
}

template <std::size_t width, Sign sign>
void AddType(Ways& ways) {
  if (width == ways.row.width) return;
  for (const std::size_t step : {width, ways.row.width}) {
    ways.Add({.a = {.place = {.step = static_cast<int>(step)}, .width = width, .sign = sign}},
             {.detail = fmt::format("lanes {} apart", BytesOf(static_cast<std::int64_t>(step)))});
  }
}

template <bool a, bool b>
void AddExchange(Ways& ways) {
  if (ways.row.twoInputs) ways.Add({.a = {.otherInput = a}, .b = {.otherInput = b}});
}

constexpr Hypothesis hypotheses[] = {
    {"element-as-unsigned", "The element is taken for unsigned.",
     [](Ways& ways) {
       if (ways.row.isSigned) ways.Add({.a = {.sign = Sign::isUnsigned}});
     }},
    {"element-as-signed", "The element is taken for signed.",
     [](Ways& ways) {
       if (!ways.row.isSigned) ways.Add({.a = {.sign = Sign::isSigned}});
     }},
    {"float-view-of-a", "The float member of A is read in place of the integer one.",
     [](Ways& ways) { ways.Add({.a = {.view = View::real}}); }},
    {"byte-order", "The bytes of a lane are taken in the other order.", AddByteOrders},
    {"integer-view-of-b", "The integer member of B is read in place of the float one.",
     [](Ways& ways) {
       if (!ways.row.twoInputs) return;
       ways.Add({.b = {.view = View::integer}});
       ways.Add({.b = {.view = View::integer}, .formula = Formula::inIntegers},
                {.detail = "and computed with as an integer"});
     }},
    {"inputs-exchanged", "A is read from B's buffer, and B from A's.", AddExchange<true, true>},
    {"a-from-b", "A is read from B's buffer.", AddExchange<true, false>},
    {"b-from-a", "B is read from A's buffer.", AddExchange<false, true>},
    {"element-as-int", "The element is taken for an int.", AddType<4, Sign::isSigned>},
    {"element-as-uint", "The element is taken for a uint.", AddType<4, Sign::isUnsigned>},
    {"element-as-short", "The element is taken for a short.", AddType<2, Sign::isSigned>},
    {"element-as-ushort", "The element is taken for a ushort.", AddType<2, Sign::isUnsigned>},
    {"element-as-char", "The element is taken for a char.", AddType<1, Sign::isSigned>},
    {"element-as-uchar", "The element is taken for a uchar.", AddType<1, Sign::isUnsigned>},
};

}  // namespace

constinit const std::span<const Hypothesis> hypothesesOnMembers = hypotheses;

}  // namespace diagnosis
