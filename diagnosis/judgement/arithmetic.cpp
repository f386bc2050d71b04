#include "diagnosis/judgement/arithmetic.h"

#include <CL/cl.h>

#include <algorithm>
#include <bit>
#include <cfenv>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string_view>
#include <vector>

namespace diagnosis {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

/// The values that a device may go on with in the place of `x`. `isTiny` says that the exact value
/// lies below all normal numbers, even if `x` itself, rounded up, does not.
struct Alternatives {
  Alternatives(float x, Denormals denormals, bool isTiny) {
    if (!isTiny || denormals != Denormals::flushed) values[count++] = x;
    if (isTiny && denormals != Denormals::kept) {
      values[count++] = 0.0F;
      values[count++] = -0.0F;
    }
  }
  const float* begin() const { return values; }
  const float* end() const { return values + count; }

  float values[3] = {};
  int count = 0;
};

Alternatives Operand(float x, const FloatMode& mode) {
  return Alternatives(x, mode.operands, IsDenormal(x));
}

void AddResult(RightAnswers& answers, float x, bool isTiny, const FloatMode& mode) {
  if (std::isnan(x)) return answers.AddAnyNan();
  const std::int64_t ulps = mode.unsafeMath ? ulpsOfUnsafeMath : 0;
  for (const float value : Alternatives(x, mode.results, isTiny)) {
    answers.Add({value, PlaceOf(value) - ulps, PlaceOf(value) + ulps});
    if (value == 0.0F && !mode.signedZeros) answers.Add(-value);
  }
}

/// A natural number of any size, the lowest 32 bits first.
using Natural = std::vector<std::uint32_t>;

void MultiplyBy(Natural& number, std::uint32_t factor) {
  std::uint64_t carry = 0;
  for (std::uint32_t& digit : number) {
    carry += static_cast<std::uint64_t>(digit) * factor;
    digit = static_cast<std::uint32_t>(carry);
    carry >>= 32;
  }
  if (carry != 0) number.push_back(static_cast<std::uint32_t>(carry));
}

bool BitOf(const Natural& number, std::int64_t bit) {
  return bit >= 0 && bit / 32 < std::ssize(number) &&
         (number[static_cast<std::size_t>(bit / 32)] >> (bit % 32) & 1U) != 0;
}

bool AnyBitBelow(const Natural& number, std::int64_t bit) {
  for (std::int64_t i = 0; i < bit; ++i) {
    if (BitOf(number, i)) return true;
  }
  return false;
}

// The line of floats as if it went on behind the largest: there the infinity stands for all.
constexpr std::int64_t placeOfInfinity = 0x7F800000;
constexpr int digits = FLT_MANT_DIG;
constexpr std::int64_t hiddenBit = std::int64_t{1} << (digits - 1);
constexpr std::int64_t exponentOfSmallestNormal = FLT_MIN_EXP - 1;

/// A place for `units` times the distance of floats from 2^exponent on; `units` may lie in a
/// neighbouring binade.
std::int64_t Place(std::int64_t exponent, std::int64_t units) {
  return (exponent - exponentOfSmallestNormal) * hiddenBit + units;
}

/// The power of a positive finite float, with its exact result as a significand and an exponent of
/// two.
RightAnswer PositivePower(float x, int exponent, Rounding rounding, int ulps) {
  int binary = 0;
  const float fraction = std::frexp(x, &binary);
  const auto significand = static_cast<std::uint32_t>(std::ldexp(fraction, digits));
  Natural exact = {1};
  for (int i = 0; i < exponent; ++i) MultiplyBy(exact, significand);
  const std::int64_t scale = static_cast<std::int64_t>(exponent) * (binary - digits);
  const std::int64_t length =
      std::ssize(exact) * 32 - std::countl_zero(exact.back());  // of the exact result in bits
  const std::int64_t binade = std::max(length - 1 + scale, exponentOfSmallestNormal);

  // How many units of this binade are in the exact result, the bit behind them, and what is left.
  const std::int64_t unit = binade - (digits - 1) - scale;  // the number of the bit worth one unit
  std::int64_t units = 0;
  for (std::int64_t bit = unit + digits; bit >= unit; --bit)
    units = 2 * units + (BitOf(exact, bit) ? 1 : 0);
  const bool half = BitOf(exact, unit - 1);
  const bool rest = AnyBitBelow(exact, unit - 1);

  const bool up = rounding == Rounding::toNearest && half && (rest || units % 2 != 0);
  const std::int64_t rounded = Place(binade, units + (up ? 1 : 0));

  // At a power of two, the unit is the smaller one, of the binade below.
  const bool smallerBelow = binade > exponentOfSmallestNormal;
  const bool powerOfTwo = units == hiddenBit && !half && !rest && smallerBelow;
  const std::int64_t bound = powerOfTwo ? ulps / 2 : ulps;

  const std::int64_t above = units + bound;
  const std::int64_t last =
      above < 2 * hiddenBit ? Place(binade, above) : Place(binade + 1, above / 2);

  const std::int64_t below = units - bound;
  std::int64_t first = 0;
  if (below >= hiddenBit || !smallerBelow) {
    first = Place(binade, below + (half || rest ? 1 : 0));
  } else {
    const std::int64_t halves = 2 * below + (half ? 1 : 0) + (rest ? 1 : 0);
    first = Place(binade - 1, halves);
  }

  RightAnswer answer{FloatAt(rounded), std::min(first, placeOfInfinity),
                     std::min(last, placeOfInfinity)};
  if (answer.last == placeOfInfinity && rounding == Rounding::towardZero) {
    answer.value = std::min(answer.value, FLT_MAX);
    answer.first = std::min(answer.first, placeOfInfinity - 1);
  }
  return answer;
}

}  // namespace

HostRounding::HostRounding(Rounding rounding) : before_(std::fegetround()) {
  constexpr int modes[] = {FE_TONEAREST, FE_TOWARDZERO, FE_UPWARD, FE_DOWNWARD};
  std::fesetround(modes[static_cast<std::size_t>(rounding)]);
}

HostRounding::~HostRounding() { std::fesetround(before_); }

FloatMode ModeOf(const Device& device, std::string_view buildOptions) {
  const cl_device_fp_config config = device.singleFpConfig;
  const Rounding rounding = config != 0 && (config & CL_FP_ROUND_TO_NEAREST) == 0
                                ? Rounding::towardZero
                                : Rounding::toNearest;
  const Denormals denormals =
      (config & CL_FP_DENORM) != 0 ? Denormals::kept : Denormals::mayBeFlushed;
  FloatMode mode{rounding, rounding, denormals, denormals};
  constexpr std::string_view blanks = " \t\n";
  while (!buildOptions.empty()) {
    const std::size_t end = std::min(buildOptions.find_first_of(blanks), buildOptions.size());
    const std::string_view option = buildOptions.substr(0, end);
    buildOptions.remove_prefix(std::min(end + 1, buildOptions.size()));
    const bool isRelaxed = option == "-cl-fast-relaxed-math";
    const bool isUnsafe = isRelaxed || option == "-cl-unsafe-math-optimizations";
    if (isUnsafe || option == "-cl-denorms-are-zero")
      mode.operands = mode.results = Denormals::mayBeFlushed;
    if (isUnsafe || option == "-cl-no-signed-zeros") mode.signedZeros = false;
    if (isRelaxed || option == "-cl-finite-math-only") mode.nonFinite = false;
    if (isUnsafe) mode.unsafeMath = true;
  }
  return mode;
}

std::int64_t PlaceOf(float x) {
  const auto bits = std::bit_cast<std::uint32_t>(x);
  const std::int64_t magnitude = bits & 0x7FFFFFFFU;
  return std::signbit(x) ? -magnitude : magnitude;
}

float FloatAt(std::int64_t place) {
  const auto bits = static_cast<std::uint32_t>(std::min(std::abs(place), placeOfInfinity));
  return std::bit_cast<float>(bits | (place < 0 ? 0x80000000U : 0U));
}

std::uint64_t UlpsBetween(float x, float y) {
  return static_cast<std::uint64_t>(std::abs(PlaceOf(x) - PlaceOf(y)));
}

bool IsDenormal(float x) { return std::fpclassify(x) == FP_SUBNORMAL; }

RightAnswers RightAnswers::AnyNan() {
  RightAnswers answers;
  answers.AddAnyNan();
  return answers;
}

RightAnswers RightAnswers::Anything() {
  RightAnswers answers = AnyNan();
  for (const float zero : {0.0F, -0.0F}) answers.Add({zero, -placeOfInfinity, placeOfInfinity});
  answers.anything_ = true;
  return answers;
}

void RightAnswers::Add(float value) { Add({value, PlaceOf(value), PlaceOf(value)}); }

void RightAnswers::Add(const RightAnswer& answer) {
  const auto isThere = [&answer](const RightAnswer& other) {
    return std::bit_cast<std::uint32_t>(other.value) == std::bit_cast<std::uint32_t>(answer.value);
  };
  if (std::ranges::any_of(Floats(), isThere)) return;
  floats_.at(count_) = answer;
  ++count_;
}

bool RightAnswers::Allow(float answer) const {
  if (std::isnan(answer)) return anyNan_;
  const std::int64_t place = PlaceOf(answer);
  return std::ranges::any_of(Floats(), [answer, place](const RightAnswer& right) {
    const bool sameSign = std::signbit(answer) == std::signbit(right.value);
    return right.first <= place && place <= right.last && (place != 0 || sameSign);
  });
}

float RightAnswers::NearestTo(float answer) const {
  if (anything_) return answer;
  if (count_ == 0) return nan;
  float nearest = floats_[0].value;
  if (std::isnan(answer)) return nearest;
  for (const RightAnswer& right : Floats()) {
    if (UlpsBetween(right.value, answer) < UlpsBetween(nearest, answer)) nearest = right.value;
  }
  return nearest;
}

// The operands and the result go through memory, so that the operation stays where the host is in
// the rounding mode.

float Converted(std::int64_t x, Rounding rounding) {
  const HostRounding host(rounding);
  const volatile std::int64_t operand = x;
  const volatile auto result = static_cast<float>(operand);
  return result;
}

float Sum(float a, float b, Rounding rounding) {
  const HostRounding host(rounding);
  const volatile float x = a;
  const volatile float y = b;
  const volatile float result = x + y;
  return result;
}

float Product(float a, float b, Rounding rounding) {
  const HostRounding host(rounding);
  const volatile float x = a;
  const volatile float y = b;
  const volatile float result = x * y;
  return result;
}

float ThroughHalf(float x) {
  constexpr float smallestNormal = 0x1p-14F;
  constexpr float firstInfinite = 65520.0F;
  if (std::isnan(x)) return x;
  if (std::fabs(x) >= firstInfinite) return std::copysign(infinity, x);
  if (std::fabs(x) < smallestNormal) {
    constexpr float magic = 0.5F;  // whose unit is the distance of halves here
    const float sum = Sum(std::fabs(x), magic, Rounding::toNearest);
    return std::copysign(sum - magic, x);
  }
  auto bits = std::bit_cast<std::uint32_t>(x);
  bits += 0x0FFFU + (bits >> 13 & 1U);
  return std::bit_cast<float>(bits & ~0x1FFFU);
}

RightAnswers Power(float x, int exponent, Rounding rounding, int ulps) {
  RightAnswers answers;
  const bool negative = std::signbit(x) && exponent % 2 != 0;
  if (exponent == 0) {  // of every x, a NaN too
    x = 1.0F;
  }
  if (std::isnan(x)) return RightAnswers::AnyNan();
  if (x == 0.0F || std::isinf(x)) {
    const float magnitude = x == 0.0F ? 0.0F : infinity;
    answers.Add(negative ? -magnitude : magnitude);
    return answers;
  }
  RightAnswer answer = PositivePower(std::fabs(x), exponent, rounding, ulps);
  if (negative) answer = {-answer.value, -answer.last, -answer.first};
  answers.Add(answer);
  return answers;
}

RightAnswers RightAnswersOf(Operation operation, float a, float b, int exponent,
                            const FloatMode& mode) {
  RightAnswers answers;
  for (const float x : Operand(a, mode)) {
    switch (operation) {
      case Operation::copy:
        AddResult(answers, x, IsDenormal(x), mode);
        break;
      case Operation::floor:
        AddResult(answers, std::floor(x), false, mode);
        break;
      case Operation::add:
        for (const float y : Operand(b, mode)) {
          const float sum = Sum(x, y, mode.arithmetic);
          AddResult(answers, sum, IsDenormal(sum), mode);
        }
        break;
      case Operation::multiply:
        for (const float y : Operand(b, mode)) {
          // A device may see that a product is tiny before it rounds it.
          const bool isTiny =
              x != 0.0F && y != 0.0F && std::fabs(Product(x, y, Rounding::towardZero)) < FLT_MIN;
          AddResult(answers, Product(x, y, mode.arithmetic), isTiny, mode);
        }
        break;
      case Operation::power: {
        const int ulps = mode.unsafeMath ? ulpsOfUnsafeMath : ulpsOfPower;
        const RightAnswers powers = Power(x, exponent, mode.arithmetic, ulps);
        if (powers.HaveAnyNan()) answers.AddAnyNan();
        for (const RightAnswer& power : powers.Floats()) {
          if (!IsDenormal(power.value) || mode.results != Denormals::flushed) answers.Add(power);
          if (IsDenormal(power.value)) AddResult(answers, power.value, true, mode);
          if (power.value == 0.0F && !mode.signedZeros) answers.Add(-power.value);
        }
        break;
      }
    }
  }
  const auto isNonFinite = [](const RightAnswer& answer) { return !std::isfinite(answer.value); };
  const bool anyNonFinite = !std::isfinite(b) || answers.HaveAnyNan() ||
                            std::ranges::any_of(answers.Floats(), isNonFinite);
  if (anyNonFinite && !mode.nonFinite) return RightAnswers::Anything();
  return answers;
}

}  // namespace diagnosis
