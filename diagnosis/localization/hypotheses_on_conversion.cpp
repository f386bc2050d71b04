// What becomes of an integer on its way to a float.

#include "diagnosis/localization/hypothesis.h"

namespace diagnosis {
namespace {

template <Conversion conversion>
void AddConversion(Ways& ways) {
  ways.Add({.conversion = conversion});
}

constexpr Hypothesis hypotheses[] = {
    {"truncates-to-24-bits", "Only the low 24 bits of the integer view count.",
     [](Ways& ways) {
       for (const Conversion conversion :
            {Conversion::low24Bits, Conversion::low24BitsSigned, Conversion::low24BitsOfMagnitude})
         ways.Add({.conversion = conversion});
     }},
    {"integer-sign-lost", "The integer view loses its sign.", AddConversion<Conversion::positive>},
    {"converts-through-half", "The integer is converted by way of a float of 16 bits.",
     AddConversion<Conversion::throughHalf>},
    {"conversion-left-out", "The bits of the integer are taken for a float's.",
     AddConversion<Conversion::leftOut>},
    {"integer-complemented", "The bits of the integer are inverted.",
     AddConversion<Conversion::complemented>},
    {"element-as-bool", "The element is taken for a truth value: 0 or 1.",
     AddConversion<Conversion::truth>},
    {"saturates-to-int", "The integer is cut to the range of int.",
     AddConversion<Conversion::saturatedToInt>},
    {"saturates-to-short", "The integer is cut to the range of short.",
     AddConversion<Conversion::saturatedToShort>},
    {"saturates-to-ushort", "The integer is cut to the range of ushort.",
     AddConversion<Conversion::saturatedToUshort>},
    {"saturates-to-char", "The integer is cut to the range of char.",
     AddConversion<Conversion::saturatedToChar>},
    {"saturates-to-uchar", "The integer is cut to the range of uchar.",
     AddConversion<Conversion::saturatedToUchar>},
};

}  // namespace

constinit const std::span<const Hypothesis> hypothesesOnConversion = hypotheses;

}  // namespace diagnosis
