#include "diagnosis/views/lane.h"

#include <CL/cl.h>
#include <fmt/format.h>

#include <bit>
#include <cmath>

#include "diagnosis/record/row_facts.h"
#include "harness/host_floating_point.h"
#include "harness/ulp.h"

namespace diagnosis {

namespace {

/// The mode that the suite puts the host in for the device.
Rounding HostModeOf(const Device& device) {
  const bool toNearest = (device.singleFpConfig & CL_FP_ROUND_TO_NEAREST) != 0;
  return toNearest ? Rounding::toNearest : Rounding::towardZero;
}

/// The float operand as the row's reference takes it.
float OperandB(const Lane& place) {
  return place.row.shape == Shape::scalar ? Unflushed(place.B()) : FlushDenormal(place.B());
}

}  // namespace

float ReferenceOf(const Lane& place) {
  const Rounding rounding = HostModeOf(place.device);
  const float a = Converted(place.A(), rounding);
  switch (place.row.operation) {
    case Operation::add:
      return Sum(a, OperandB(place), rounding);
    case Operation::multiply:
      return Product(a, OperandB(place), rounding);
    case Operation::power: {
      const HostRounding host(rounding);
      return SuitesPower(a, place.Exponent());
    }
    default:
      return a;
  }
}

std::vector<std::string> StepsOf(const Lane& place) {
  const Row& row = place.row;
  const Rounding rounding = HostModeOf(place.device);
  const std::string_view words = WordsOf(rounding);
  const float a = Converted(place.A(), rounding);
  const bool isExact = static_cast<std::int64_t>(a) == place.A();
  std::vector<std::string> steps = {
      fmt::format("{} converted to float, {}: {}", MemberName(row, "a", place.lane),
                  isExact ? "exactly" : fmt::format("rounded {}", words), BitsAndNumber(a))};
  if (row.twoInputs) {
    const std::string b = MemberName(row, "b", place.lane);
    if (IsDenormal(place.B())) {
      steps.push_back(std::bit_cast<std::uint32_t>(OperandB(place)) ==
                              std::bit_cast<std::uint32_t>(place.B())
                          ? fmt::format("{} is denormal, and this row's reference keeps it", b)
                          : fmt::format("{} is denormal, and the reference takes it as zero", b));
    }
  }
  const std::string reference = BitsAndNumber(ReferenceOf(place));
  switch (row.operation) {
    case Operation::add:
      steps.push_back(fmt::format("their sum, rounded {}: {}", words, reference));
      break;
    case Operation::multiply:
      steps.push_back(fmt::format("their product, rounded {}: {}", words, reference));
      break;
    case Operation::power:
      steps.push_back(fmt::format("to the power of {} by the host's powf, which rounds {}: {}",
                                  place.Exponent(), words, reference));
      break;
    case Operation::floor:
      steps.emplace_back("no floor: a whole number has nothing to round away");
      break;
    case Operation::copy:
      break;
  }
  return steps;
}

std::string_view WordsOf(Rounding rounding) {
  return rounding == Rounding::toNearest ? "to nearest" : "toward zero";
}

std::string MemberName(const Row& row, std::string_view member, int lane) {
  return row.shape == Shape::scalar ? std::string(member) : fmt::format("{}[{}]", member, lane);
}

std::string NumberOf(float x) {
  if (std::isnan(x)) return "NaN";
  if (std::isinf(x)) return x < 0 ? "-infinity" : "infinity";
  constexpr float wholeInFull = 0x1p53F;
  if (x == std::trunc(x) && std::fabs(x) < wholeInFull)
    return fmt::format("{:.0f}", static_cast<double>(x));
  return fmt::format("{}", x);
}

std::string BitsAndNumber(float x) {
  return fmt::format("0x{:08X} ({}{})", std::bit_cast<std::uint32_t>(x), NumberOf(x),
                     IsDenormal(x) ? ", denormal" : "");
}

}  // namespace diagnosis
