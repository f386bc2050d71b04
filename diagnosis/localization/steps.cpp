#include "diagnosis/localization/steps.h"

#include <algorithm>
#include <bit>
#include <cfloat>
#include <cmath>

namespace diagnosis {
namespace {

/// The lowest one stays as it is.
std::int64_t Negated(std::int64_t x) {
  return static_cast<std::int64_t>(0 - static_cast<std::uint64_t>(x));
}

std::int64_t Low24Bits(std::int64_t x, bool isSigned) {
  const std::int64_t low = x & 0xFFFFFF;
  return isSigned && (low & 0x800000) != 0 ? low - 0x1000000 : low;
}

/// As wide as the sum or the product of two integers of 64 bits can be.
__extension__ using Wide = __int128;

/// An integer of any width as a float.
float ConvertedWide(Wide x, Rounding rounding) {
  float scale = 1;
  while (x > INT64_MAX || x < INT64_MIN) {
    // Half of it, with a last bit that stands for all that is cut off: both round alike.
    x = x >> 1 | (x & 1);
    scale *= 2;
  }
  return Converted(static_cast<std::int64_t>(x), rounding) * scale;
}

/// `x` without its `count` lowest bits, or rounded so that they are not needed.
float WithoutLowBits(float x, std::int64_t count, bool rounded) {
  if (!std::isfinite(x)) return x;
  auto bits = std::bit_cast<std::uint32_t>(x);
  const std::uint32_t low = (1U << count) - 1;
  if (rounded) bits += (low >> 1) + (bits >> count & 1U);
  return std::bit_cast<float>(bits & ~low);
}

/// All answers, each as `change` makes it.
template <class Change>
RightAnswers Each(const RightAnswers& answers, Change change) {
  RightAnswers changed;
  if (answers.HaveAnyNan()) changed.AddAnyNan();
  for (const RightAnswer& answer : answers.Floats()) change(changed, answer);
  return changed;
}

RightAnswer Negated(const RightAnswer& answer) {
  return {-answer.value, -answer.last, -answer.first};
}

/// Moved `ulps` units along the line of floats. What does not move may be a zero.
void AddMoved(RightAnswers& answers, const RightAnswer& answer, std::int64_t ulps) {
  if (answer.value == 0.0F || std::isinf(answer.value)) answers.Add(answer);
  const std::int64_t place = PlaceOf(answer.value) + ulps;
  answers.Add({FloatAt(place), answer.first + ulps, answer.last + ulps});
}

}  // namespace

std::optional<Operand> Read(const RowData& data, const Reading& reading, bool isA,
                            std::size_t repetition, int element, int lane) {
  if (element < 0 || repetition < static_cast<std::size_t>(reading.repetitionsBefore))
    return std::nullopt;
  const RowData::Seen& seen =
      data.repetitions[repetition - static_cast<std::size_t>(reading.repetitionsBefore)];
  const Bytes& bytes = isA != reading.otherInput ? seen.a : seen.b;
  const bool isInteger = reading.view == View::own ? isA : reading.view == View::integer;
  const auto own = static_cast<int>(isInteger ? data.row.width : sizeof(float));
  const int width = reading.width != 0 ? reading.width : own;
  const int step = reading.place.step != 0 ? reading.place.step : own;
  const int stride =
      reading.place.stride != 0 ? reading.place.stride : static_cast<int>(data.row.stride);
  const int sourceLane = reading.lanes[static_cast<std::size_t>(lane)];
  const int at = reading.place.offset + stride * (element + reading.elementsOn) + step * sourceLane;
  if (at < 0 || at + width > std::ssize(bytes)) return std::nullopt;

  std::uint64_t bits = 0;
  for (int n = 0; n < width; ++n) {
    const int byte = reading.reversed ? n : width - 1 - n;
    bits = bits << 8 | bytes[static_cast<std::size_t>(at) + static_cast<std::size_t>(byte)];
  }
  Operand operand;
  operand.isInteger = isInteger;
  if (!isInteger) {
    operand.real = std::bit_cast<float>(static_cast<std::uint32_t>(bits));
    return operand;
  }
  const bool isSigned =
      reading.sign == Sign::own ? data.row.isSigned : reading.sign == Sign::isSigned;
  const std::uint64_t signBit = std::uint64_t{1} << (8 * width - 1);
  operand.integer = static_cast<std::int64_t>(isSigned ? (bits ^ signBit) - signBit : bits);
  return operand;
}

float Convert(const Operand& operand, Conversion conversion, Rounding rounding) {
  if (!operand.isInteger) return operand.real;
  const std::int64_t x = operand.integer;
  switch (conversion) {
    case Conversion::own:
      break;
    case Conversion::low24Bits:
      return Converted(Low24Bits(x, false), rounding);
    case Conversion::low24BitsSigned:
      return Converted(Low24Bits(x, true), rounding);
    case Conversion::low24BitsOfMagnitude:
      return Converted(x < 0 ? -Low24Bits(Negated(x), false) : Low24Bits(x, false), rounding);
    case Conversion::throughHalf:
      return ThroughHalf(Converted(x, rounding));
    case Conversion::saturatedToInt:
      return Converted(std::clamp<std::int64_t>(x, INT32_MIN, INT32_MAX), rounding);
    case Conversion::saturatedToShort:
      return Converted(std::clamp<std::int64_t>(x, INT16_MIN, INT16_MAX), rounding);
    case Conversion::saturatedToUshort:
      return Converted(std::clamp<std::int64_t>(x, 0, UINT16_MAX), rounding);
    case Conversion::saturatedToChar:
      return Converted(std::clamp<std::int64_t>(x, INT8_MIN, INT8_MAX), rounding);
    case Conversion::saturatedToUchar:
      return Converted(std::clamp<std::int64_t>(x, 0, UINT8_MAX), rounding);
    case Conversion::leftOut:
      return std::bit_cast<float>(static_cast<std::uint32_t>(x));
    case Conversion::complemented:
      return Converted(~x, rounding);
    case Conversion::truth:
      return x != 0 ? 1.0F : 0.0F;
    case Conversion::positive:
      return ConvertedWide(x < 0 ? -Wide{x} : Wide{x}, rounding);
  }
  return Converted(x, rounding);
}

std::uint32_t LowBits(Operation operation, std::int64_t a, std::int64_t b) {
  const auto x = static_cast<std::uint64_t>(a);
  const auto y = static_cast<std::uint64_t>(b);
  return static_cast<std::uint32_t>(operation == Operation::add ? x + y : x * y);
}

RightAnswers InIntegers(Operation operation, std::int64_t a, std::int64_t b,
                        const FloatMode& mode) {
  const std::uint32_t low = LowBits(operation, a, b);
  RightAnswers answers;
  const Wide wide = operation == Operation::add ? Wide{a} + b : Wide{a} * b;
  answers.Add(ConvertedWide(wide, mode.conversion));
  answers.Add(Converted(static_cast<std::int32_t>(low), mode.conversion));
  answers.Add(Converted(low, mode.conversion));
  return answers;
}

RightAnswers Unconverted(Operation operation, std::int64_t a, float b, const FloatMode& mode) {
  const auto x = static_cast<long double>(a);
  const auto y = static_cast<long double>(b);
  const HostRounding host(mode.arithmetic);
  const volatile long double wide = operation == Operation::add ? x + y : x * y;
  const volatile auto rounded = static_cast<float>(wide);
  return RightAnswersOf(Operation::copy, rounded, 0, 0, mode);
}

RightAnswers Apply(Change change, std::int64_t ulps, const RightAnswers& answers) {
  const auto outward = [](const RightAnswer& answer) {
    return std::signbit(answer.value) ? -1 : 1;
  };
  switch (change) {
    case Change::negated:
      return Each(answers, [](RightAnswers& changed, const RightAnswer& answer) {
        changed.Add(Negated(answer));
        if (answer.value == 0.0F) changed.Add(answer);
      });
    case Change::magnitude:
      return Each(answers, [](RightAnswers& changed, const RightAnswer& answer) {
        changed.Add(std::signbit(answer.value) ? Negated(answer) : answer);
      });
    case Change::zeroOfEitherSign:
      return Each(answers, [](RightAnswers& changed, const RightAnswer& answer) {
        changed.Add(answer);
        if (answer.value == 0.0F) changed.Add(Negated(answer));
      });
    case Change::throughHalf:
      return Each(answers, [](RightAnswers& changed, const RightAnswer& answer) {
        changed.Add(ThroughHalf(answer.value));
      });
    case Change::bitsLost:
    case Change::bitsRounded:
      return Each(answers, [&](RightAnswers& changed, const RightAnswer& answer) {
        changed.Add(WithoutLowBits(answer.value, ulps, change == Change::bitsRounded));
      });
    case Change::largestForInfinite: {
      RightAnswers changed = Each(answers, [](RightAnswers& some, const RightAnswer& answer) {
        if (!std::isinf(answer.value)) return some.Add(answer);
        some.Add(std::copysign(FLT_MAX, answer.value));
      });
      return changed;
    }
    case Change::ulpsOutward:
    case Change::ulpsInward:
    case Change::ulpsUpward:
    case Change::ulpsDownward:
      return Each(answers, [&](RightAnswers& changed, const RightAnswer& answer) {
        const bool byMagnitude = change == Change::ulpsOutward || change == Change::ulpsInward;
        const bool negative = change == Change::ulpsInward || change == Change::ulpsDownward;
        AddMoved(changed, answer, ulps * (negative ? -1 : 1) * (byMagnitude ? outward(answer) : 1));
      });
    case Change::ulpsAround:
    case Change::ulpsAtMostOutward:
    case Change::ulpsAtMostInward:
      return Each(answers, [&](RightAnswers& changed, const RightAnswer& answer) {
        const bool up = change == Change::ulpsAround ||
                        (change == Change::ulpsAtMostOutward) == (outward(answer) > 0);
        const bool down = change == Change::ulpsAround || !up;
        changed.Add(
            {answer.value, answer.first - (down ? ulps : 0), answer.last + (up ? ulps : 0)});
      });
    default:
      return answers;
  }
}

std::uint32_t IntegerBits(float x, OverflowPolicy policy, bool rounded) {
  const double value = rounded ? std::nearbyint(static_cast<double>(x)) : std::trunc(x);
  const bool isInt = value >= -0x1p31 && value < 0x1p31;
  const bool isUint = value >= 0 && value < 0x1p32;
  const bool isLong = std::fabs(value) < 0x1p63;
  const std::uint32_t bits =
      isLong ? static_cast<std::uint32_t>(static_cast<std::int64_t>(value)) : 0;
  switch (policy) {
    case OverflowPolicy::intNearest:
      return isInt ? bits : value < 0 ? 0x80000000 : 0x7FFFFFFF;
    case OverflowPolicy::intLowest:
      return isInt ? bits : 0x80000000;
    case OverflowPolicy::uintNearest:
      return isUint ? bits : value > 0 ? 0xFFFFFFFF : 0;
    case OverflowPolicy::uintHighest:
      return isUint ? bits : 0xFFFFFFFF;
    case OverflowPolicy::lowBitsOfLong:
      return bits;
  }
  return bits;
}

}  // namespace diagnosis
