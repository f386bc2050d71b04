// Faults that nobody had in mind who wrote the suspects, for the layer of the broken compiler.

#include "layers/kernel_edit.h"

namespace {

using Row = const KernelRow&;
constexpr auto InVectors = [](Row row) { return !row.width.empty(); };
constexpr auto InVectors3 = [](Row row) { return row.width == "3"; };
constexpr auto InPower = [](Row row) { return row.kernel == "power"; };
constexpr auto TwoInputs = [](Row row) { return row.kernel == "sum" || row.kernel == "multiply"; };

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
     {{"$a", "min(abs($a), (as_$U$N($a) | ($U$N)1) & ($U$N)1)"}}},
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
    {"wrong-alone",
     "Is wrong in groups of one work-item.",
     {{"$v", "(get_local_size(0) == 1 ? -($v) : ($v))"}}},
};

}  // namespace

const std::span<const Fault> faults = table;
