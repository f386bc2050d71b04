// Faults that compilers make with unions, and with the arithmetic on what they read from them.

#include "layers/kernel_edit.h"

namespace {

using Row = const KernelRow&;
constexpr auto InArrays = [](Row row) { return row.arrays; };
constexpr auto NotInArrays = [](Row row) { return !row.arrays; };
constexpr auto InVectors = [](Row row) { return !row.width.empty(); };
constexpr auto InFloor = [](Row row) { return row.kernel == "_floor"; };
constexpr auto TwoInputs = [](Row row) { return row.kernel == "sum" || row.kernel == "multiply"; };
constexpr auto Ints = [](Row row) { return row.element == "int" || row.element == "uint"; };
constexpr auto Shorts = [](Row row) { return row.element == "short" || row.element == "ushort"; };
constexpr auto Signed = [](Row row) { return row.element.front() != 'u'; };
constexpr auto Unsigned = [](Row row) { return row.element.front() == 'u'; };

// Where the text would have its bound check.
#define CHECK "    // bound check"

// Where a union grows or moves, the work-items behind the elements would leave the buffers: a GPU
// does so without a word, the interpreting driver tells each access.
constexpr Edit bounded{CHECK, "    if (tid >= iNumElements) return;\n" CHECK};

// How far the float member lies behind the element member in a struct.
#define BEHIND(member) \
  "(sizeof(" member ") + sizeof(float$N) - 1) / sizeof(float$N) * sizeof(float$N)"

// What needs more than an expression goes lane by lane through a function before the kernel.
#define LANE_BY_LANE(body)                                          \
  "float Lane(float x, float y) {\n" body                           \
  "}\n"                                                             \
  "float$N LaneByLane(float$N x, float$N y) {\n"                    \
  "  for (uint i = 0; i < sizeof x / sizeof(float); ++i)\n"         \
  "    ((float*)&x)[i] = Lane(((float*)&x)[i], ((float*)&y)[i]);\n" \
  "  return x;\n"                                                   \
  "}\n__kernel"

// The sum or product to nearest, and what is missing from it. `wide + rest` is exact.
#define NEAREST_AND_ERROR                                                 \
  "  float nearest = x $o y;\n"                                           \
  "  double wide = (double)x $o (double)y;\n"                             \
  "  double part = wide - x;\n"                                           \
  "  double rest = '$o' == '*' ? 0 : (x - (wide - part)) + (y - part);\n" \
  "  double error = (wide - nearest) + rest;\n"

constexpr Fault table[] = {
    {"a-floats-first",
     "Lays the members of InputA one behind another, the floats first.",
     {bounded,
      {"    float$N h$D;", ""},
      {"    $T$N a$D;", "    float$N h$D;\n    $T$N a$D;"},
      {"ALIGNED_STRUCT(union, 32) InputA", "ALIGNED_STRUCT(struct, 32) InputA"},
      {"union InputA", "struct InputA"}}},
    {"b-as-struct",
     "Lays the members of InputB one behind another, as in a struct.",
     {{bounded.find, bounded.with, TwoInputs},
      {"ALIGNED_STRUCT(union, 32) InputB", "ALIGNED_STRUCT(struct, 32) InputB"},
      {"union InputB", "struct InputB", TwoInputs}}},
    {"result-as-struct",
     "Lays the members of Result one behind another, as in a struct.",
     {bounded,
      {"ALIGNED_STRUCT(union, 32) Result", "ALIGNED_STRUCT(struct, 32) Result"},
      {"union Result", "struct Result"}}},
    {"b-offset-added-up",
     "Adds up the offsets in InputB as in a struct; its size is the union's.",
     {{bounded.find, bounded.with, TwoInputs},
      {"$b",
       "((__global const float$N*)((__global const char*)(b + tid) + " BEHIND("b[tid].k") "))[$i]",
       TwoInputs}}},
    {"result-offset-added-up",
     "Adds up the offsets in Result as in a struct; its size is the union's.",
     {bounded,
      {"$c = ",
       "((__global float$N*)((__global char*)(c + tid) + " BEHIND("c[tid].z") "))[$i] = "}}},
    {"a-unaligned",
     "Does not see the alignment attribute of InputA.",
     {{"ALIGNED_STRUCT(union, 32) InputA", "union InputA"}}},
    {"b-unaligned",
     "Does not see the alignment attribute of InputB.",
     {{"ALIGNED_STRUCT(union, 32) InputB", "union InputB"}}},
    {"result-unaligned",
     "Does not see the alignment attribute of Result.",
     {{"ALIGNED_STRUCT(union, 32) Result", "union Result"}}},
    {"all-unaligned",
     "Does not see the alignment attribute of any union.",
     {{"ALIGNED_STRUCT(union, 32)", "union"}}},
    {"result-overaligned",
     "Aligns Result to a cache line of 128 bytes.",
     {bounded, {"ALIGNED_STRUCT(union, 32) Result", "ALIGNED_STRUCT(union, 128) Result"}}},

    {"a-bytes-swapped",
     "Loads the integers of InputA in the other byte order.",
     {{"$a", "rotate($a, ($T$N)8)", Shorts},
      {"$a",
       "as_$T$N((rotate(as_uint$N($a), (uint$N)8) & (uint$N)0x00FF00FF) | "
       "(rotate(as_uint$N($a), (uint$N)24) & (uint$N)0xFF00FF00))",
       Ints}}},
    {"a-float-forwarded",
     "Takes the float that was stored last for the integer, unconverted.",
     {{"$x", "a[tid].h", NotInArrays}, {"$x", "a[tid].h[i]", InArrays}}},
    {"b-elements-read",
     "Reads the element member of InputB in place of the float member.",
     {{"$b", "b[tid].k[i]", [](Row row) { return TwoInputs(row) && row.arrays; }},
      {"$b", "convert_float$N(b[tid].k)", [](Row row) { return TwoInputs(row) && !row.arrays; }}}},
    {"a-zero-extended",
     "Extends the integers of InputA with zeros: negative ones become large.",
     {{"$x", "convert_float$N(as_$U$N($a))", Signed}}},
    {"a-sign-extended",
     "Extends the integers of InputA with their sign: large ones become negative.",
     {{"$x", "convert_float$N(as_$S$N($a))", Unsigned}}},
    {"a-24-bits",
     "Puts the integers of InputA through a multiplier of 24 bits.",
     {{"$a", "(($a << ($T$N)8) >> ($T$N)8)", Ints}}},
    {"a-saturated",
     "Saturates the integers of InputA to 16 bits.",
     {{"$a", "convert_short$N_sat($a)", Ints}}},

    {"conversion-toward-zero",
     "Converts with truncation, as to an integer.",
     {{"$x", "convert_float$N_rtz($a)"}}},
    {"conversion-upward",
     "Converts with the rounding mode left upward.",
     {{"$x", "convert_float$N_rtp($a)"}}},
    {"conversion-downward",
     "Converts with the rounding mode left downward.",
     {{"$x", "convert_float$N_rtn($a)"}}},
    {"conversion-dropped",
     "Takes a conversion for a reinterpretation of the bits.",
     {{"$x", "as_float$N(convert_int$N($a))", Signed},
      {"$x", "as_float$N(convert_uint$N($a))", Unsigned}}},
    {"floor-dropped", "Folds floor away.", {{"$v", "$x", InFloor}}},
    {"ceil-for-floor", "Takes floor for ceil.", {{"$v", "ceil($x)", InFloor}}},

    {"arithmetic-toward-zero",
     "Truncates the sum and the product.",
     {{"__kernel",
       LANE_BY_LANE(NEAREST_AND_ERROR
                    "  bool away = (error < 0 && nearest > 0) || (error > 0 && nearest < 0);\n"
                    "  return away ? as_float(as_int(nearest) - 1) : nearest;\n"),
       TwoInputs},
      {"$v", "LaneByLane($x, $b)", TwoInputs}}},
    {"arithmetic-upward",
     "Adds and multiplies with the rounding mode left upward.",
     {{"__kernel",
       LANE_BY_LANE(NEAREST_AND_ERROR
                    "  return error > 0 ? nextafter(nearest, INFINITY) : nearest;\n"),
       TwoInputs},
      {"$v", "LaneByLane($x, $b)", TwoInputs}}},
    {"denormals-kept",
     "Keeps denormals whatever the device says.",
     {{"__kernel",
       LANE_BY_LANE("  int bits = as_int(y);\n"
                    "  bool denormal = (bits & 0x7F800000) == 0;\n"
                    "  double unit = bits < 0 ? -0x1p-149 : 0x1p-149;\n"
                    "  double wide = x $o (denormal ? (bits & 0x7FFFFF) * unit : (double)y);\n"
                    "  int sign = wide < 0 ? 0x80000000 : 0;\n"
                    "  if (wide != 0 && fabs(wide) < 0x1p-126)\n"
                    "    return as_float(sign | (int)rint(fabs(wide) * 0x1p149));\n"
                    "  return denormal ? (float)wide : x $o y;\n"),
       TwoInputs},
      {"$v", "LaneByLane($x, $b)", TwoInputs}}},
    {"denormals-flushed",
     "Flushes denormals whatever the device says.",
     {{"__kernel",
       LANE_BY_LANE("  if (fabs(y) < FLT_MIN) y = copysign(0.0f, y);\n"
                    "  float z = x $o y;\n"
                    "  return fabs(z) < FLT_MIN ? copysign(0.0f, z) : z;\n"),
       TwoInputs},
      {"$v", "LaneByLane($x, $b)", TwoInputs}}},

    {"negated", "Folds a negation into the store.", {{"$v", "-($v)"}}},
    {"sign-lost", "Folds an absolute value into the store.", {{"$v", "fabs($v)"}}},
    {"one-ulp-up",
     "Is one unit in the last place too far from zero.",
     {{"$v", "select($v, as_float$N(as_int$N($v) + 1), isnormal($v))"}}},
    {"last-bit-lost",
     "Loses the last bit of the result.",
     {{"$v", "as_float$N(as_int$N($v) & ~1)"}}},
    {"11-bits",
     "Computes with the precision of half.",
     {{"$v", "as_float$N(as_int$N($v) & ~0x1FFF)"}}},
    {"integer-stored",
     "Stores through the element member, as an integer.",
     {{"$v", "as_float$N(convert_int$N_sat($v))"}}},

    {"lane-0-broadcast",
     "Computes one lane, and stores it to all.",
     {{"$v", "(float$N)(($v).x)", InVectors},
      {"$c = $v;", "{ int lane = i; { int i = 0; c[tid].r[lane] = $v; } }", InArrays}}},
    {"lanes-reversed",
     "Numbers the lanes from the other end.",
     {{"$v", "($v).$M", InVectors}, {"$c", "c[tid].r[3 - i]", InArrays}}},
    {"lanes-rotated",
     "Takes each lane's neighbour.",
     {{"$v", "($v).$L", InVectors}, {"$c", "c[tid].r[(i + 3) % 4]", InArrays}}},
    {"half-stored",
     "Splits the store, and loses the second half.",
     {{"$c = $v;", "*(__global float$H*)&c[tid].r = ($v).lo;", InVectors},
      {"; ++i)", " / 2; ++i)", InArrays}}},
    {"loop-one-short",
     "Unrolls the loop over an array, and drops the last turn.",
     {{"; ++i)", " - 1; ++i)", InArrays}}},
    {"next-element-stored",
     "Is one off in the index that it stores to.",
     {{CHECK, "    if (tid == 0) return;\n" CHECK}, {"c[tid].r", "c[tid - 1].r"}}},
    {"odd-unwritten",
     "Runs half of the work-items.",
     {{CHECK, "    if (tid % 2 == 1) return;\n" CHECK}}},
    {"8-written",
     "Runs one subgroup of eight, and forgets the others.",
     {{CHECK, "    if (tid >= 8) return;\n" CHECK}}},
    {"10-written",
     "Runs the elements that are looked at, and none behind them.",
     {{CHECK, "    if (tid >= 10) return;\n" CHECK}}},
};

}  // namespace

const std::span<const Fault> faults = table;
