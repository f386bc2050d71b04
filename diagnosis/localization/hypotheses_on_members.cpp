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
    {"element-as-unsigned",
     "The element is taken for unsigned.",
     [](Ways& ways) {
       if (ways.row.isSigned) ways.Add({.a = {.sign = Sign::isUnsigned}});
     },
     {"The integers are extended with zeros.", "(float)(char)0xFF is -1\n(float)(uchar)0xFF is 255",
      "sign extension of loads, uitofp in place of sitofp", "*_[35]"}},
    {"element-as-signed",
     "The element is taken for signed.",
     [](Ways& ways) {
       if (!ways.row.isSigned) ways.Add({.a = {.sign = Sign::isSigned}});
     },
     {"The integers are extended with their sign.",
      "(float)(uchar)0xFF is 255\n(float)(char)0xFF is -1",
      "zero extension of loads, sitofp in place of uitofp", "*_[46]"}},
    {"float-view-of-a",
     "The float member of A is read in place of the integer one.",
     [](Ways& ways) { ways.Add({.a = {.view = View::real}}); },
     {"The load is forwarded from the store through the other member, or the wrong member is "
      "loaded.",
      "a.a converted to float\na.h as it is",
      "type-based alias analysis of unions, load forwarding", "*"}},
    {"byte-order",
     "The bytes of a lane are taken in the other order.",
     AddByteOrders,
     {"The lane is loaded in the other byte order.", "0x1234\n0x3412",
      "byte swaps at loads, the data layout of the target", "*_[1-4]"}},
    {"integer-view-of-b",
     "The integer member of B is read in place of the float one.",
     [](Ways& ways) {
       if (!ways.row.twoInputs) return;
       ways.Add({.b = {.view = View::integer}});
       ways.Add({.b = {.view = View::integer}, .formula = Formula::inIntegers},
                {.detail = "and computed with as an integer"});
     },
     {"The first member of the union is taken for the one that is named.",
      "c.r = x + b.b\nc.r = x + b.k",
      "how a member of a union is found: its index in place of its type", "add_* multiply_*"}},
    {"inputs-exchanged",
     "A is read from B's buffer, and B from A's.",
     AddExchange<true, true>,
     {"The two buffers are bound in the other order.", "sum(a, b, c)\nsum(b, a, c)",
      "the order of kernel arguments, in the compiler and in clSetKernelArg", "add_* multiply_*"}},
    {"a-from-b",
     "A is read from B's buffer.",
     AddExchange<true, false>,
     {"Both inputs are read from B's buffer: two arguments are taken for one.",
      "a[tid].a\nb[tid].k", "the merging of equal pointers, alias analysis of arguments",
      "add_* multiply_*"}},
    {"b-from-a",
     "B is read from A's buffer.",
     AddExchange<false, true>,
     {"Both inputs are read from A's buffer: two arguments are taken for one.",
      "b[tid].b\na[tid].h", "the merging of equal pointers, alias analysis of arguments",
      "add_* multiply_*"}},
    {"element-as-int",
     "The element is taken for an int.",
     AddType<4, Sign::isSigned>,
     {"The integer member is loaded as if it were of type int: with its width and its sign.",
      "a.a of the union's own type\n*(int*)&a.a",
      "the type of the load, the union's first or largest member in place of its own",
      "*_[23456]"}},
    {"element-as-uint",
     "The element is taken for a uint.",
     AddType<4, Sign::isUnsigned>,
     {"The integer member is loaded as if it were of type uint: with its width and its sign.",
      "a.a of the union's own type\n*(uint*)&a.a",
      "the type of the load, the union's first or largest member in place of its own",
      "*_[13456]"}},
    {"element-as-short",
     "The element is taken for a short.",
     AddType<2, Sign::isSigned>,
     {"The integer member is loaded as if it were of type short: with its width and its sign.",
      "a.a of the union's own type\n*(short*)&a.a",
      "the type of the load, the union's first or largest member in place of its own",
      "*_[12456]"}},
    {"element-as-ushort",
     "The element is taken for a ushort.",
     AddType<2, Sign::isUnsigned>,
     {"The integer member is loaded as if it were of type ushort: with its width and its sign.",
      "a.a of the union's own type\n*(ushort*)&a.a",
      "the type of the load, the union's first or largest member in place of its own",
      "*_[12356]"}},
    {"element-as-char",
     "The element is taken for a char.",
     AddType<1, Sign::isSigned>,
     {"The integer member is loaded as if it were of type char: with its width and its sign.",
      "a.a of the union's own type\n*(char*)&a.a",
      "the type of the load, the union's first or largest member in place of its own",
      "*_[12346]"}},
    {"element-as-uchar",
     "The element is taken for a uchar.",
     AddType<1, Sign::isUnsigned>,
     {"The integer member is loaded as if it were of type uchar: with its width and its sign.",
      "a.a of the union's own type\n*(uchar*)&a.a",
      "the type of the load, the union's first or largest member in place of its own",
      "*_[12345]"}},
};

}  // namespace

constinit const std::span<const Hypothesis> hypothesesOnMembers = hypotheses;

}  // namespace diagnosis
