// What becomes of an integer on its way to a float.

#include "diagnosis/localization/hypothesis.h"

namespace diagnosis {
namespace {

template <Conversion conversion>
void AddConversion(Ways& ways) {
  ways.Add({.conversion = conversion});
}

constexpr Hypothesis hypotheses[] = {
    {"truncates-to-24-bits",
     "Only the low 24 bits of the integer view count.",
     [](Ways& ways) {
       for (const Conversion conversion :
            {Conversion::low24Bits, Conversion::low24BitsSigned, Conversion::low24BitsOfMagnitude})
         ways.Add({.conversion = conversion});
     },
     {"The integer goes through a multiplier or a path of 24 bits.",
      "convert_float(a)\nconvert_float((a << 8) >> 8)",
      "mul24 and mad24, ranges that are assumed of indices", "*_[12]"}},
    {"integer-sign-lost",
     "The integer view loses its sign.",
     AddConversion<Conversion::positive>,
     {"An absolute value is folded into the conversion.", "convert_float(a)\nconvert_float(abs(a))",
      "source modifiers of the conversion instruction", "*_[35]"}},
    {"converts-through-half",
     "The integer is converted by way of a float of 16 bits.",
     AddConversion<Conversion::throughHalf>,
     {"The conversion is made in two steps, by way of 16 bits.",
      "convert_float(a)\n(float)convert_half(a)",
      "conversions of small integers, packed arithmetic", "*"}},
    {"conversion-left-out",
     "The bits of the integer are taken for a float's.",
     AddConversion<Conversion::leftOut>,
     {"The conversion is taken for a reinterpretation: the union invites it.",
      "convert_float(a.a)\nas_float((int)a.a)",
      "the lowering of loads through a union, bitcasts in place of sitofp", "*"}},
    {"integer-complemented",
     "The bits of the integer are inverted.",
     AddConversion<Conversion::complemented>,
     {"A bitwise not is folded into the load or the conversion.",
      "convert_float(a)\nconvert_float(~a)", "source modifiers of integer instructions", "*"}},
    {"element-as-bool",
     "The element is taken for a truth value: 0 or 1.",
     AddConversion<Conversion::truth>,
     {"The value is taken for a truth value on its way.", "convert_float(a)\nconvert_float(a != 0)",
      "comparisons with zero that are folded into the conversion", "*"}},
    {"saturates-to-int",
     "The integer is cut to the range of int.",
     AddConversion<Conversion::saturatedToInt>,
     {"The integer is narrowed to int with saturation before it is converted.",
      "convert_float(a)\nconvert_float(convert_int_sat(a))",
      "packing instructions, the width that the backend gives the value", "*_2"}},
    {"saturates-to-short",
     "The integer is cut to the range of short.",
     AddConversion<Conversion::saturatedToShort>,
     {"The integer is narrowed to short with saturation before it is converted.",
      "convert_float(a)\nconvert_float(convert_short_sat(a))",
      "packing instructions, the width that the backend gives the value", "*_[124]"}},
    {"saturates-to-ushort",
     "The integer is cut to the range of ushort.",
     AddConversion<Conversion::saturatedToUshort>,
     {"The integer is narrowed to ushort with saturation before it is converted.",
      "convert_float(a)\nconvert_float(convert_ushort_sat(a))",
      "packing instructions, the width that the backend gives the value", "*_[1235]"}},
    {"saturates-to-char",
     "The integer is cut to the range of char.",
     AddConversion<Conversion::saturatedToChar>,
     {"The integer is narrowed to char with saturation before it is converted.",
      "convert_float(a)\nconvert_float(convert_char_sat(a))",
      "packing instructions, the width that the backend gives the value", "*_[12346]"}},
    {"saturates-to-uchar",
     "The integer is cut to the range of uchar.",
     AddConversion<Conversion::saturatedToUchar>,
     {"The integer is narrowed to uchar with saturation before it is converted.",
      "convert_float(a)\nconvert_float(convert_uchar_sat(a))",
      "packing instructions, the width that the backend gives the value", "*_[12345]"}},
};

}  // namespace

constinit const std::span<const Hypothesis> hypothesesOnConversion = hypotheses;

}  // namespace diagnosis
