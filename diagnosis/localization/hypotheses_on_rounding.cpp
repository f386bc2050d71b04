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
    {"denormals-kept", "Denormals are kept, where the row expects them flushed.", [](Ways&) {}},
    {"denormals-flushed",
     "Denormals are flushed to zero, though the device reports that it keeps them.", AddFlushes},
    {"rounds-toward-zero", "The conversion to float rounds toward zero.",
     AddConversion<Rounding::towardZero>},
    {"rounds-arithmetic-toward-zero", "The sum or product rounds toward zero.",
     AddArithmetic<Rounding::towardZero>},
    {"rounds-everything-toward-zero",
     "The conversion to float and the sum or product round toward zero.",
     AddEverything<Rounding::towardZero>},
    {"rounds-up", "The conversion to float rounds up.", AddConversion<Rounding::upward>},
    {"rounds-arithmetic-up", "The sum or product rounds up.", AddArithmetic<Rounding::upward>},
    {"rounds-everything-up", "The conversion to float and the sum or product round up.",
     AddEverything<Rounding::upward>},
    {"rounds-down", "The conversion to float rounds down.", AddConversion<Rounding::downward>},
    {"rounds-arithmetic-down", "The sum or product rounds down.",
     AddArithmetic<Rounding::downward>},
    {"rounds-everything-down", "The conversion to float and the sum or product round down.",
     AddEverything<Rounding::downward>},
    {"rounds-to-nearest", "The conversion to float rounds to nearest.",
     AddConversion<Rounding::toNearest>},
    {"rounds-arithmetic-to-nearest", "The sum or product rounds to nearest.",
     AddArithmetic<Rounding::toNearest>},
    {"rounds-everything-to-nearest",
     "The conversion to float and the sum or product round to nearest.",
     AddEverything<Rounding::toNearest>},
    {"sign-of-zero-lost", "A zero may have the wrong sign.",
     [](Ways& ways) { ways.Add({.change = Change::zeroOfEitherSign}); }},
    {"largest-for-infinite", "The largest float stands where the answer is an infinity.",
     [](Ways& ways) { ways.Add({.change = Change::largestForInfinite}); }},
    {"answers-through-half", "The answer goes by way of a float of 16 bits.",
     [](Ways& ways) { ways.Add({.change = Change::throughHalf}); }},
    {"off-by-ulps-{n}", "The answers are off by {n} unit{s} in the last place.",
     [](Ways& ways) {
       AddSteadyUlps(ways);
       AddLostBits(ways);
       AddUlpsAtMost(ways);
     }},
};

}  // namespace

constinit const std::span<const Hypothesis> hypothesesOnRounding = hypotheses;

}  // namespace diagnosis
