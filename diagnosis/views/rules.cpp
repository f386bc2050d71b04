#include "diagnosis/views/rules.h"

#include <CL/cl.h>
#include <fmt/format.h>

#include <cmath>
#include <optional>
#include <vector>

#include "common/text/text.h"
#include "diagnosis/record/row_facts.h"
#include "diagnosis/verdict/ledger.h"
#include "harness/ulp.h"

namespace diagnosis {

namespace {

bool ComparesAnyLane(const Row& row) {
  return (row.operation == Operation::copy || row.operation == Operation::floor) &&
         row.shape != Shape::arrays && row.shape != Shape::scalar;
}

/// What the suite's rule makes of a lane, if it looks at it.
struct Ruling {
  bool rejects;
  std::string words;
};

Ruling RuleOn(const Lane& place) {
  const Row& row = place.row;
  const float c = ReferenceOf(place);
  const float d = place.Answer();
  if (ComparesAnyLane(row)) {
    for (int lane = 0; lane < row.lanes; ++lane) {
      const Lane other = place.At(place.element, lane);
      if (other.Answer() == ReferenceOf(other))
        return {false, fmt::format("lane {} of the element is equal to its reference, and one such "
                                   "lane is enough",
                                   lane)};
    }
    return {true, "no lane of the element is equal to its reference"};
  }
  if (!row.twoInputs && row.operation != Operation::power) {
    if (c == d) return {false, "the answer is equal to the reference"};
    return {true, "the answer is not equal to the reference"};
  }
  if (!std::isfinite(c)) return {false, "where the reference is not finite, any answer passes"};
  const std::uint32_t tolerance = FactsOf(row.name)->tolerance;
  if (row.operation == Operation::power && !std::isfinite(d))
    return {false, "an answer that is not finite passes"};
  if (std::isnan(d)) return {false, "a NaN lies within any bounds"};
  const std::string units = text::Counted(UlpsBetween(std::fabs(c), std::fabs(d)), "unit");
  if (WithinUlps(c, d, tolerance))
    return {false, fmt::format("{} in the last place from the reference in magnitude, and {} pass; "
                               "signs are not compared",
                               units, tolerance)};
  return {true, fmt::format("{} in the last place from the reference in magnitude, where {} pass",
                            units, tolerance)};
}

/// The first lane that the rule rejects. The suite's check ends there.
std::optional<Lane> FirstRejected(const Lane& place) {
  for (int element = 0; element < elementsOfRow; ++element) {
    for (int lane = 0; lane < place.row.lanes; ++lane) {
      const Lane at = place.At(element, lane);
      if (RuleOn(at).rejects) return at;
    }
  }
  return std::nullopt;
}

}  // namespace

bool IsRejected(const Lane& place) { return RuleOn(place).rejects; }

std::string SuiteRuleOn(const Lane& place) {
  const Ruling ruling = RuleOn(place);
  if (FoundMismatch(place.repetition)) {
    const std::optional<Lane> first = FirstRejected(place);
    const auto order = [](const Lane& one) { return one.element * one.row.lanes + one.lane; };
    if (first && order(*first) < order(place) &&
        !(ComparesAnyLane(place.row) && first->element == place.element)) {
      return fmt::format(
          "not looked at: the check ended at element {}, lane {} ({} all the same: {})",
          first->element, first->lane, ruling.rejects ? "rejected" : "passed", ruling.words);
    }
  } else if (ruling.rejects) {
    return "not looked at: the row leaves this element out (else rejected: " + ruling.words + ")";
  }
  return (ruling.rejects ? "rejected: " : "passed: ") + ruling.words;
}

std::string OpenClRuleOn(const Lane& place) {
  const FloatMode& mode = place.mode;
  const Row& row = place.row;
  const RightAnswers answers =
      RightAnswersOf(row, place.repetition, place.element, place.lane, mode);
  std::vector<std::string> allowed;
  bool isDenormal = row.twoInputs && IsDenormal(place.B());
  bool isSpan = false;
  for (const RightAnswer& answer : answers.Floats()) {
    isDenormal = isDenormal || IsDenormal(answer.value);
    if (answer.first == answer.last) {
      allowed.push_back(BitsAndNumber(answer.value));
    } else {
      isSpan = true;
      allowed.push_back(fmt::format("{} to {}", BitsAndNumber(FloatAt(answer.first)),
                                    BitsAndNumber(FloatAt(answer.last))));
    }
  }
  if (answers.HaveAnyNan()) allowed.emplace_back("any NaN");
  std::string text =
      fmt::format("{}: {} {} right", answers.Allow(place.Answer()) ? "right" : "wrong",
                  fmt::join(allowed, ", "), allowed.size() == 1 && !isSpan ? "is" : "are");
  switch (row.operation) {
    case Operation::copy:
    case Operation::floor:
      if (mode.unsafeMath) break;
      text += fmt::format("; a conversion is correctly rounded, here {}", WordsOf(mode.conversion));
      break;
    case Operation::add:
    case Operation::multiply:
      if (mode.unsafeMath) break;
      text += fmt::format("; conversion and {} are correctly rounded, here {}",
                          row.operation == Operation::add ? "sum" : "product",
                          WordsOf(mode.arithmetic));
      break;
    case Operation::power:
      if (mode.unsafeMath) break;
      text += fmt::format("; pow is within {} units in the last place of the exact result",
                          ulpsOfPower);
      break;
  }
  if (mode.unsafeMath)
    text += "; with the build options of this run, OpenCL sets no bound to an error";
  if (isDenormal && mode.results == Denormals::kept) {
    text += "; the device reports CL_FP_DENORM, so nothing may be flushed";
  } else if (isDenormal) {
    const bool reported = (place.device.singleFpConfig & CL_FP_DENORM) != 0;
    text += fmt::format(
        "; {}, so a denormal may become a zero of either sign",
        reported ? "the build options permit it" : "the device does not report CL_FP_DENORM");
  }
  return text;
}

}  // namespace diagnosis
