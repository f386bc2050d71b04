// Faults that nobody had in mind who wrote the suspects, for the layer of the broken compiler.

#include "layers/kernel_edit.h"

namespace {

using Row = const KernelRow&;
constexpr auto InVectors = [](Row row) { return !row.width.empty(); };
constexpr auto InVectors3 = [](Row row) { return row.width == "3"; };
constexpr auto InArrays = [](Row row) { return row.arrays; };
constexpr auto InPower = [](Row row) { return row.kernel == "power"; };
constexpr auto TwoInputs = [](Row row) { return row.kernel == "sum" || row.kernel == "multiply"; };

constexpr auto InMultiply = [](Row row) { return row.kernel == "multiply"; };
constexpr auto InAdd = [](Row row) { return row.kernel == "sum"; };
constexpr auto Ints = [](Row row) { return row.element == "int" || row.element == "uint"; };
constexpr auto UnsignedShorts = [](Row row) { return row.element == "ushort"; };
constexpr auto Shorts = [](Row row) { return row.element == "short"; };
constexpr auto Signed = [](Row row) { return row.element.front() != 'u'; };

// Where the text would have its bound check.
#define CHECK "    // bound check"

constexpr Fault table[] = {
    {"third-lane-doubled",
     "Loads the third lane of three from the second one's register.",
     {{"$v", "($v).xyy", InVectors3}}},
    {"last-lane-negated",
     "Gives the last lane's register a sign of its own.",
     {{"$c = $v;", "float$N v = $v; v.even = -v.even; $c = v;", InVectors}}},
    {"a-plus-one", "Counts the integers of InputA from one.", {{"$x", "($x + 1.0f)"}}},
    {"a-as-bool",
     "Takes the integers of InputA for truth values.",
     {{"$x", "fmin(fabs(convert_float$N($a)), 1.0f)"}}},
    {"b-truncated", "Makes the floats of InputB whole.", {{"$b", "trunc($b)", TwoInputs}}},
    {"b-rounded-to-12-bits",
     "Keeps the floats of InputB in half of their digits.",
     {{"$b", "as_float$N(as_uint$N($b) & 0xFFFFF000u)", TwoInputs}}},
    {"twice",
     "Executes the operation twice, the second time on the first result.",
     {{"$v", "($v $o $b)", TwoInputs}}},
    {"exponent-plus-one", "Counts the exponents from one.", {{"$v", "($v * $x)", InPower}}},
    {"a-element-shared",
     "Loads the integers of InputA once for two work-items.",
     {{"a[tid].a", "a[tid & ~1].a"}}},
    {"one-element-zero",
     "Clears a register that is still in use, in one work-item.",
     {{"$v", "(tid == 3 ? ($v) * 0.0f : ($v))"}}},
    {"three-packed",
     "Packs the vectors of three of InputB behind one another.",
     {{"$b", "vload3(tid, (__global const float*)b)",
       [](Row row) { return TwoInputs(row) && InVectors3(row); }}}},
    {"result-saturated",
     "Saturates the result to 16 bits.",
     {{"$v", "clamp($v, -32768.0f, 32767.0f)"}}},
    {"result-through-int",
     "Keeps the result as an integer on its way, and converts it back.",
     {{"$v", "convert_float$N(convert_int$N_sat($v))"}}},
    {"multiplied-in-24-bits",
     "Multiplies integers of 24 bits.",
     {{"$v", "convert_float$N(mul24(convert_int$N($a), convert_int$N_sat($b)))", InMultiply}}},
    {"low-half-multiplied",
     "Multiplies the low half of the integer alone.",
     {{"$x", "convert_float$N($a & ($T$N)0xFFFF)",
       [](Row row) { return InMultiply(row) && Ints(row); }}}},
    {"first-lanes-swapped",
     "Swaps the first two lanes.",
     {{"$v", "($v).yxz", InVectors3},
      {"$v", "($v).yxzw", [](Row row) { return row.width == "4"; }},
      {"$v", "($v).s10234567", [](Row row) { return row.width == "8"; }}}},
    {"b-lanes-swapped",
     "Swaps the lanes of InputB in pairs.",
     {{"$b", "($b).yxwz", [](Row row) { return TwoInputs(row) && row.width == "4"; }},
      {"$b", "b[tid].b[i ^ 1]", [](Row row) { return TwoInputs(row) && row.arrays; }}}},
    {"nine-elements",
     "Is one off in the number of work-items.",
     {{CHECK, "    if (tid >= 9) return;\n" CHECK}}},
    {"from-element-1",
     "Starts with the second work-item.",
     {{CHECK, "    if (tid == 0) return;\n" CHECK}}},
    {"from-lane-1",
     "Starts the loop over an array with the second turn.",
     {{"int i = 0;", "int i = 1;", InArrays}}},
    {"elements-modulo-8",
     "Keeps three bits of the index.",
     {{CHECK, "    if (tid >= 10) return;\n" CHECK}, {"a[tid].a", "a[tid & 7].a"}}},
    {"ushort-with-sign",
     "Extends ushorts with a sign.",
     {{"$x", "convert_float$N(as_short$N($a))", UnsignedShorts}}},
    {"short-sign-cut",
     "Loads shorts without their highest bit.",
     {{"$x", "convert_float$N($a & ($T$N)0x7FFF)", Shorts}}},
    {"halves-swapped",
     "Swaps the halves of an integer.",
     {{"$a", "as_$T$N(rotate(as_uint$N($a), (uint$N)16))", Ints}}},
    {"sum-rounded-once",
     "Adds the integer unrounded.",
     {{"$v", "convert_float$N(convert_double$N($a) + convert_double$N($b))", InAdd}}},
    {"product-rounded-once",
     "Multiplies the integer unrounded.",
     {{"$v", "convert_float$N(convert_double$N($a) * convert_double$N($b))", InMultiply}}},
    {"results-flushed",
     "Flushes what is tiny on its way to memory.",
     {{"$v", "select($v, $v * 0.0f, isless(fabs($v), (float$N)FLT_MIN))"}}},
    {"power-by-exp2",
     "Takes a power for the exp2 of a product.",
     {{"$v", "exp2(log2($x) * (float$N)tid)",
       [](Row row) { return InPower(row) && !row.arrays; }}}},
    {"power-of-magnitude",
     "Takes the sign from a power's base.",
     {{"$v", "pow(fabs($x), (float$N)tid)", [](Row row) { return InPower(row) && !row.arrays; }}}},
    {"power-in-half-digits",
     "Has the precision of half_powr.",
     {{"$v", "as_float$N((as_int$N($v) + 200) & ~0x3FF)", InPower}}},
    {"large-toward-zero",
     "Rounds integers toward zero where they need all of their bits.",
     {{"$x",
       "select(convert_float$N($a), convert_float$N_rtz($a), as_int$N($a) > (int$N)0x4EC00000)",
       Ints}}},
    {"ties-away",
     "Rounds ties away from zero.",
     {{"$x",
       "select(convert_float$N($a), convert_float$N_rtp($a), convert_float$N(as_int$N($a) - "
       "as_int$N(convert_int$N_sat(convert_float$N_rtz($a)))) * 2.0f == "
       "convert_float$N(as_int$N(convert_int$N_sat(convert_float$N_rtp($a))) - "
       "as_int$N(convert_int$N_sat(convert_float$N_rtz($a)))))",
       Ints}}},
    {"four-written", "Runs four work-items.", {{CHECK, "    if (tid >= 4) return;\n" CHECK}}},
    {"last-lane-cleared",
     "Stores a zero in the last lane of three.",
     {{"$v", "($v) * (float3)(1.0f, 1.0f, 0.0f)", InVectors3}}},
    {"last-lane-anything",
     "Stores what is in a register in the last lane of three.",
     {{"$c = $v;",
       "float3 v = $v; v.z = as_float((tid * 2654435761u + as_uint(v.x)) >> 2); $c = v;",
       InVectors3}}},
    {"third-lane-negated",
     "Negates the third lane.",
     {{"$v", "($v) * (float3)(1.0f, 1.0f, -1.0f)", InVectors3}}},
    {"doubled", "Is off by one in the exponent.", {{"$v", "($v) * 2.0f"}}},
    {"a-shifted", "Loads the integers of InputA shifted.", {{"$a", "($a >> ($T$N)1)"}}},
    {"a-complemented", "Complements the integers of InputA.", {{"$a", "(~$a)"}}},
    {"a-low-byte", "Loads a byte of the integers of InputA.", {{"$a", "($a & ($T$N)0x7F)"}}},
    {"a-magnitude",
     "Loads the integers of InputA without a sign.",
     {{"$x", "fabs(convert_float$N($a))", Signed}}},
    {"neighbours-swapped",
     "Swaps the elements of InputB in pairs.",
     {{"b[tid].b", "b[tid ^ 1].b", TwoInputs}}},
    {"alternately-negated",
     "Negates the results of every other work-item.",
     {{"$v", "(tid & 1 ? -($v) : ($v))"}}},
    {"one-ulp-in-odd-lanes",
     "Is one unit in the last place off in every other work-item.",
     {{"$v", "as_float$N(as_int$N($v) + (tid & 1))"}}},
    {"wrong-alone",
     "Is wrong in groups of one work-item.",
     {{"$v", "(get_local_size(0) == 1 ? -($v) : ($v))"}}},
};

}  // namespace

const std::span<const Fault> faults = table;
