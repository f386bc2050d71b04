// Denormals, rounding and precision.

#include <fmt/format.h>

#include <algorithm>

#include "diagnosis/localization/hypothesis.h"

namespace diagnosis {
namespace {

void AddFlushes(Ways& ways) {
  if (ways.data.mode.results != Denormals::kept) return;
  for (const Denormals denormals : {Denormals::flushed, Denormals::mayBeFlushed})
    ways.Add({.denormalOperands = denormals, .denormalResults = denormals});
  ways.Add({.denormalOperands = Denormals::flushed}, {.detail = "operands alone"});
  ways.Add({.denormalResults = Denormals::flushed}, {.detail = "results alone"});
}

template <Rounding rounding>
void AddConversion(Ways& ways) {
  if (rounding != ways.data.mode.conversion) ways.Add({.conversionRounding = rounding});
}

template <Rounding rounding>
void AddArithmetic(Ways& ways) {
  if (rounding != ways.data.mode.conversion && ways.row.twoInputs)
    ways.Add({.arithmeticRounding = rounding});
}

template <Rounding rounding>
void AddEverything(Ways& ways) {
  if (rounding != ways.data.mode.conversion && ways.row.twoInputs)
    ways.Add({.conversionRounding = rounding, .arithmeticRounding = rounding},
             {.rank = Rank::general});
}

struct Direction {
  Change change;
  const char* words;
};

/// As far off as the first wrong answer, and always so.
void AddSteadyUlps(Ways& ways) {
  const auto ulps = UlpsOfWrongLane(ways.data, 0);
  constexpr std::int64_t most = 1 << 20;
  if (!ulps || *ulps == 0 || *ulps > most) return;
  constexpr Direction directions[] = {{Change::ulpsOutward, "always, away from zero"},
                                      {Change::ulpsInward, "always, toward zero"},
                                      {Change::ulpsUpward, "always, up"},
                                      {Change::ulpsDownward, "always, down"}};
  for (const auto& [change, words] : directions)
    ways.Add({.change = change, .amount = *ulps}, {.number = *ulps, .detail = words});
}

/// Fewer bits of precision than a float has.
void AddLostBits(Ways& ways) {
  constexpr int mostBits = 16;
  for (int bits = 1; bits <= mostBits; ++bits) {
    const auto add = [&](Change change, std::int64_t ulps, const char* how) {
      ways.Add({.change = change, .amount = bits},
               {.number = ulps,
                .detail = fmt::format("at most: the low {} of the significand are {}",
                                      bits == 1 ? "bit" : fmt::format("{} bits", bits), how)});
    };
    add(Change::bitsLost, (std::int64_t{1} << bits) - 1, "lost");
    add(Change::bitsRounded, std::int64_t{1} << (bits - 1), "rounded away");
  }
}

/// No more than how far off the answers are.
void AddUlpsAtMost(Ways& ways) {
  constexpr std::int64_t mostUlps = 1024;
  std::int64_t most = 0;
  for (std::size_t n = 0; n < ways.data.wrongLanes; ++n) {
    const auto ulps = UlpsOfWrongLane(ways.data, n);
    if (!ulps || *ulps > mostUlps) return;
    most = std::max(most, *ulps);
  }
  if (most == 0) return;
  constexpr Direction directions[] = {{Change::ulpsAtMostOutward, "at most, away from zero"},
                                      {Change::ulpsAtMostInward, "at most, toward zero"},
                                      {Change::ulpsAround, "at most"}};
  for (const auto& [change, words] : directions)
    ways.Add({.change = change, .amount = most},
             {.rank = Rank::vague, .number = most, .detail = words});
}

constexpr Hypothesis hypotheses[] = {
    // Of a row that fails though it is right, which no way of being wrong explains.
    {"denormals-kept",
     "Denormals are kept, where the row expects them flushed.",
     [](Ways&) {},
     {"The device computes with denormals, and says so; the suite's reference has them as zero. "
      "Right by OpenCL: nothing to mend in the compiler.",
      "1e-40f * 1.0f is 0 for the suite\n1e-40f * 1.0f is 1e-40f here",
      "CL_FP_DENORM in CL_DEVICE_SINGLE_FP_CONFIG, and whether it is meant", "multiply_*"}},
    {"denormals-flushed",
     "Denormals are flushed to zero, though the device reports that it keeps them.",
     AddFlushes,
     {"The flush-to-zero bit is set for all kernels, or the instructions have no denormals, though "
      "the device reports CL_FP_DENORM.",
      "1e-40f * 1.0f should be 1e-40f\n1e-40f * 1.0f is 0",
      "the mode register at a kernel's start, CL_DEVICE_SINGLE_FP_CONFIG", "add_* multiply_*"}},
    {"rounds-toward-zero",
     "The conversion to float rounds toward zero.",
     AddConversion<Rounding::towardZero>,
     {"The conversion is emitted, or folded, with the mode for rounding toward zero, as a cast to "
      "an integer has it.",
      "convert_float(16777219)\nconvert_float_rtz, _rtp, _rtn or _rte in its place",
      "the expansion of convert_float and of the implicit conversion, the rounding mode in the "
      "status register",
      "*_[12]"}},
    {"rounds-arithmetic-toward-zero",
     "The sum or product rounds toward zero.",
     AddArithmetic<Rounding::towardZero>,
     {"The sum or product is computed with the mode for rounding toward zero: an instruction with "
      "that mode in it, or a status register that was left so.",
      "c = x + b, correctly rounded\nc = x + b, rounded toward zero",
      "the selection of the instruction for + and *, the rounding mode in the status register",
      "add_* multiply_*"}},
    {"rounds-everything-toward-zero",
     "The conversion to float and the sum or product round toward zero.",
     AddEverything<Rounding::towardZero>,
     {"The rounding mode is toward zero for the whole kernel: the status register is set so, or "
      "never set.",
      "convert_float(a) + b, to the default mode\nboth steps rounded toward zero",
      "where the driver sets the mode before a kernel, and what a kernel before it has left",
      "add_*_[12] multiply_*_[12]"}},
    {"rounds-up",
     "The conversion to float rounds up.",
     AddConversion<Rounding::upward>,
     {"The conversion is emitted, or folded, with the mode for rounding up, as a cast to an "
      "integer has it.",
      "convert_float(16777219)\nconvert_float_rtz, _rtp, _rtn or _rte in its place",
      "the expansion of convert_float and of the implicit conversion, the rounding mode in the "
      "status register",
      "*_[12]"}},
    {"rounds-arithmetic-up",
     "The sum or product rounds up.",
     AddArithmetic<Rounding::upward>,
     {"The sum or product is computed with the mode for rounding up: an instruction with that mode "
      "in it, or a status register that was left so.",
      "c = x + b, correctly rounded\nc = x + b, rounded up",
      "the selection of the instruction for + and *, the rounding mode in the status register",
      "add_* multiply_*"}},
    {"rounds-everything-up",
     "The conversion to float and the sum or product round up.",
     AddEverything<Rounding::upward>,
     {"The rounding mode is up for the whole kernel: the status register is set so, or never set.",
      "convert_float(a) + b, to the default mode\nboth steps rounded up",
      "where the driver sets the mode before a kernel, and what a kernel before it has left",
      "add_*_[12] multiply_*_[12]"}},
    {"rounds-down",
     "The conversion to float rounds down.",
     AddConversion<Rounding::downward>,
     {"The conversion is emitted, or folded, with the mode for rounding down, as a cast to an "
      "integer has it.",
      "convert_float(16777219)\nconvert_float_rtz, _rtp, _rtn or _rte in its place",
      "the expansion of convert_float and of the implicit conversion, the rounding mode in the "
      "status register",
      "*_[12]"}},
    {"rounds-arithmetic-down",
     "The sum or product rounds down.",
     AddArithmetic<Rounding::downward>,
     {"The sum or product is computed with the mode for rounding down: an instruction with that "
      "mode in it, or a status register that was left so.",
      "c = x + b, correctly rounded\nc = x + b, rounded down",
      "the selection of the instruction for + and *, the rounding mode in the status register",
      "add_* multiply_*"}},
    {"rounds-everything-down",
     "The conversion to float and the sum or product round down.",
     AddEverything<Rounding::downward>,
     {"The rounding mode is down for the whole kernel: the status register is set so, or never "
      "set.",
      "convert_float(a) + b, to the default mode\nboth steps rounded down",
      "where the driver sets the mode before a kernel, and what a kernel before it has left",
      "add_*_[12] multiply_*_[12]"}},
    {"rounds-to-nearest",
     "The conversion to float rounds to nearest.",
     AddConversion<Rounding::toNearest>,
     {"The conversion is emitted, or folded, with the mode for rounding to nearest, as a cast to "
      "an integer has it.",
      "convert_float(16777219)\nconvert_float_rtz, _rtp, _rtn or _rte in its place",
      "the expansion of convert_float and of the implicit conversion, the rounding mode in the "
      "status register",
      "*_[12]"}},
    {"rounds-arithmetic-to-nearest",
     "The sum or product rounds to nearest.",
     AddArithmetic<Rounding::toNearest>,
     {"The sum or product is computed with the mode for rounding to nearest: an instruction with "
      "that mode in it, or a status register that was left so.",
      "c = x + b, correctly rounded\nc = x + b, rounded to nearest",
      "the selection of the instruction for + and *, the rounding mode in the status register",
      "add_* multiply_*"}},
    {"rounds-everything-to-nearest",
     "The conversion to float and the sum or product round to nearest.",
     AddEverything<Rounding::toNearest>,
     {"The rounding mode is to nearest for the whole kernel: the status register is set so, or "
      "never set.",
      "convert_float(a) + b, to the default mode\nboth steps rounded to nearest",
      "where the driver sets the mode before a kernel, and what a kernel before it has left",
      "add_*_[12] multiply_*_[12]"}},
    {"sign-of-zero-lost",
     "A zero may have the wrong sign.",
     [](Ways& ways) { ways.Add({.change = Change::zeroOfEitherSign}); },
     {"A negation or a multiplication is folded as if -0 and +0 were one, as -cl-no-signed-zeros "
      "permits.",
      "-0.0f * 5.0f is -0.0f\n0.0f in its place",
      "fast-math flags that are set where no build option asks for them", "multiply_*"}},
    {"largest-for-infinite",
     "The largest float stands where the answer is an infinity.",
     [](Ways& ways) { ways.Add({.change = Change::largestForInfinite}); },
     {"An overflow saturates: the arithmetic clamps, or rounds toward zero.",
      "3e38f * 10.0f is infinity\n3.4028235e38f in its place",
      "clamp modifiers on the instruction, the rounding mode on overflow", "multiply_* power_*"}},
    {"answers-through-half",
     "The answer goes by way of a float of 16 bits.",
     [](Ways& ways) { ways.Add({.change = Change::throughHalf}); },
     {"The result is computed, or spilled, in 16 bits.", "c.r = x\nc.r = (float)(half)x",
      "relaxed precision, the width of spilled or packed registers", "*"}},
    {"off-by-ulps-{n}",
     "The answers are off by {n} unit{s} in the last place.",
     [](Ways& ways) {
       AddSteadyUlps(ways);
       AddLostBits(ways);
       AddUlpsAtMost(ways);
     },
     {"The operation is less precise than it has to be: an approximate instruction, a fused or a "
      "split sequence, bits that are cut.",
      "c = x * b, correctly rounded\nc = x * b, {n} units in the last place beside it",
      "the instruction that is chosen for the operation, fast-math flags, the library's function",
      "*"}},
};

}  // namespace

constinit const std::span<const Hypothesis> hypothesesOnRounding = hypotheses;

}  // namespace diagnosis
