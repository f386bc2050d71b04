#include "diagnosis/localization/fault.h"

#include <algorithm>
#include <bit>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <span>
#include <tuple>
#include <utility>

namespace diagnosis {
namespace {

constexpr std::size_t sizeOfFloat = 4;
constexpr std::int64_t widestSpan = 64;  // of answers that are worth going through one by one

/// Everything that a fault can do otherwise, one by one.
auto Parts(Fault& fault) {
  const auto parts = [](Reading& reading) {
    return std::tie(reading.place.offset, reading.place.stride, reading.place.step, reading.view,
                    reading.width, reading.sign, reading.reversed, reading.otherInput,
                    reading.repetitionsBefore, reading.elementsOn, reading.lanes);
  };
  return std::tuple_cat(
      parts(fault.a), parts(fault.b),
      std::tie(fault.result.offset, fault.result.stride, fault.result.step, fault.resultWidth,
               fault.conversion, fault.conversionRounding, fault.arithmeticRounding,
               fault.denormalOperands, fault.denormalResults, fault.formula, fault.truncatedB,
               fault.change, fault.amount, fault.changedElements, fault.changedLanes,
               fault.repetitionsBefore, fault.lanes, fault.elements, fault.unwrittenElements,
               fault.unwrittenLanes));
}

/// What a lane may hold.
class Prediction {
 public:
  /// Nothing is known of it.
  Prediction() = default;
  explicit Prediction(const RightAnswers& floats) : known_(true), floats_(floats) {}

  bool IsKnown() const { return known_; }
  const RightAnswers& Floats() const { return floats_; }
  void AddBits(std::uint32_t bits) { bits_.push_back(bits); }
  void ForgetFloats() { floats_ = RightAnswers(); }
  void Reverse() { reversed_ = true; }

  bool Allows(std::uint32_t bits) const {
    if (!known_ || std::ranges::find(bits_, bits) != bits_.end()) return true;
    return floats_.Allow(std::bit_cast<float>(reversed_ ? __builtin_bswap32(bits) : bits));
  }

  /// Whether byte `n` of a lane may be this one.
  bool AllowsByte(std::size_t n, std::uint8_t byte) const {
    if (!known_ || floats_.HaveAnyNan()) return true;
    const auto isThere = [n, byte](std::uint32_t bits) {
      return static_cast<std::uint8_t>(bits >> (8 * n)) == byte;
    };
    if (std::ranges::any_of(bits_, isThere)) return true;
    return std::ranges::any_of(floats_.Floats(), [&](const RightAnswer& answer) {
      if (answer.last - answer.first > widestSpan) return true;
      for (std::int64_t place = answer.first; place <= answer.last; ++place) {
        const float value = place == 0 ? answer.value : FloatAt(place);
        const auto bits = std::bit_cast<std::uint32_t>(value);
        if (isThere(reversed_ ? __builtin_bswap32(bits) : bits)) return true;
      }
      return false;
    });
  }

 private:
  bool known_ = false;
  bool reversed_ = false;
  RightAnswers floats_;
  std::vector<std::uint32_t> bits_;
};

struct Operand {
  bool isInteger = false;
  std::int64_t integer = 0;
  float real = 0;
};

std::optional<Operand> Read(const RowData& data, const Reading& reading, bool isA,
                            std::size_t repetition, int element, int lane) {
  if (element < 0 || repetition < static_cast<std::size_t>(reading.repetitionsBefore))
    return std::nullopt;
  const RowData::Seen& seen =
      data.repetitions[repetition - static_cast<std::size_t>(reading.repetitionsBefore)];
  const Bytes& bytes = isA != reading.otherInput ? seen.a : seen.b;
  const bool isInteger = reading.view == View::own ? isA : reading.view == View::integer;
  const auto own = static_cast<int>(isInteger ? data.row.width : sizeOfFloat);
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
  const auto signBit = std::int64_t{1} << (8 * width - 1);
  const auto value = static_cast<std::int64_t>(bits);
  operand.integer = isSigned ? (value ^ signBit) - signBit : value;
  return operand;
}

std::int64_t Low24Bits(std::int64_t x, bool isSigned) {
  const std::int64_t low = x & 0xFFFFFF;
  return isSigned && (low & 0x800000) != 0 ? low - 0x1000000 : low;
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
      return Converted(x < 0 ? -Low24Bits(-x, false) : Low24Bits(x, false), rounding);
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
      return Converted(-x - 1, rounding);
    case Conversion::truth:
      return x != 0 ? 1.0F : 0.0F;
    case Conversion::positive:
      return Converted(std::abs(x), rounding);
  }
  return Converted(x, rounding);
}

/// A sum or product of integers, of 32 bits and as wide as it takes, converted.
RightAnswers InIntegers(Operation operation, std::int64_t a, std::int64_t b,
                        const FloatMode& mode) {
  const std::int64_t wide = operation == Operation::add ? a + b : a * b;
  RightAnswers answers;
  answers.Add(Converted(wide, mode.conversion));
  answers.Add(Converted(static_cast<std::int32_t>(wide), mode.conversion));
  answers.Add(Converted(static_cast<std::uint32_t>(wide), mode.conversion));
  return answers;
}

/// A sum or product of an integer that was not made a float.
RightAnswers Unconverted(Operation operation, std::int64_t a, float b, const FloatMode& mode) {
  const auto x = static_cast<long double>(a);
  const auto y = static_cast<long double>(b);
  const HostRounding host(mode.arithmetic);
  const volatile long double wide = operation == Operation::add ? x + y : x * y;
  const volatile auto rounded = static_cast<float>(wide);
  return RightAnswersOf(Operation::copy, rounded, 0, 0, mode);
}

bool FitsInteger(float x) { return std::fabs(x) < 0x1p32F; }

/// The bits of the integer in the place of `x`.
std::uint32_t IntegerBits(float x, Manner manner, bool rounded) {
  const double value = rounded ? std::nearbyint(static_cast<double>(x)) : std::trunc(x);
  const bool isInt = value >= -0x1p31 && value < 0x1p31;
  const bool isUint = value >= 0 && value < 0x1p32;
  const bool isLong = std::fabs(value) < 0x1p63;
  const std::uint32_t bits =
      isLong ? static_cast<std::uint32_t>(static_cast<std::int64_t>(value)) : 0;
  switch (manner) {
    case Manner::intNearest:
      return isInt ? bits : value < 0 ? 0x80000000 : 0x7FFFFFFF;
    case Manner::intLowest:
      return isInt ? bits : 0x80000000;
    case Manner::uintNearest:
      return isUint ? bits : value > 0 ? 0xFFFFFFFF : 0;
    case Manner::uintHighest:
      return isUint ? bits : 0xFFFFFFFF;
    case Manner::lowBitsOfLong:
      return bits;
  }
  return bits;
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

bool IsIn(std::uint32_t numbers, int number) {
  constexpr int most = 32;
  return number < most && (numbers >> number & 1U) != 0;
}

/// What a device of that fault gives in a lane of an element.
Prediction Predict(const Fault& fault, const RowData& data, std::size_t repetition, int element,
                   int lane) {
  const Row& row = data.row;
  if (repetition < static_cast<std::size_t>(fault.repetitionsBefore)) return {};
  const std::size_t source = repetition - static_cast<std::size_t>(fault.repetitionsBefore);
  const int item =
      element < elementsOfRow ? fault.elements[static_cast<std::size_t>(element)] : element;
  const int sourceLane = fault.lanes[static_cast<std::size_t>(lane)];

  FloatMode mode = data.mode;
  mode.conversion = fault.conversionRounding.value_or(mode.conversion);
  mode.arithmetic = fault.arithmeticRounding.value_or(mode.arithmetic);
  mode.operands = fault.denormalOperands.value_or(mode.operands);
  mode.results = fault.denormalResults.value_or(mode.results);

  const auto operandA = Read(data, fault.a, true, source, item, sourceLane);
  if (!operandA) return {};
  const float a = Convert(*operandA, fault.conversion, mode.conversion);
  float b = 0;
  std::int64_t integerB = 0;
  if (row.twoInputs) {
    const auto operandB = Read(data, fault.b, false, source, item, sourceLane);
    if (!operandB) return {};
    b = Convert(*operandB, Conversion::own, mode.conversion);
    if (fault.truncatedB) b = std::trunc(b);
    integerB = operandB->isInteger ? operandB->integer
               : FitsInteger(b)    ? static_cast<std::int64_t>(b)
                                   : 0;
  }
  int exponent = ExponentOf(row, item, sourceLane);

  Operation operation = row.operation;
  RightAnswers answers;
  bool computed = false;
  switch (fault.formula) {
    case Formula::own:
      break;
    case Formula::copy:
      operation = Operation::copy;
      break;
    case Formula::onlyB:
      answers = RightAnswersOf(Operation::copy, b, 0, 0, mode);
      computed = true;
      break;
    case Formula::sum:
      operation = Operation::add;
      break;
    case Formula::product:
      operation = Operation::multiply;
      break;
    case Formula::difference:
      operation = Operation::add;
      b = -b;
      break;
    case Formula::inIntegers:
      if (!operandA->isInteger || !FitsInteger(b)) return {};
      answers = InIntegers(operation, operandA->integer, integerB, mode);
      computed = true;
      break;
    case Formula::unconverted:
      if (!operandA->isInteger) return {};
      answers = Unconverted(operation, operandA->integer, b, mode);
      computed = true;
      break;
    case Formula::byLogarithm:
      if (a < 0 || (a == 0 && exponent == 0)) answers.AddAnyNan();
      computed = a < 0 && exponent != 0;
      break;
    case Formula::exponentOfLane:
      exponent = row.shape == Shape::arrays ? item : sourceLane;
      break;
  }
  if (!computed) {
    const bool anyNan = answers.HaveAnyNan();
    answers = RightAnswersOf(operation, a, b, exponent, mode);
    if (anyNan) answers.AddAnyNan();
  }

  const bool isChanged = (fault.changedElements == 0 || IsIn(fault.changedElements, element)) &&
                         (fault.changedLanes == 0 || IsIn(fault.changedLanes, lane));
  if (!isChanged) return Prediction(answers);
  Prediction prediction(Apply(fault.change, fault.amount, answers));
  switch (fault.change) {
    case Change::bits:
      prediction.ForgetFloats();
      prediction.AddBits(static_cast<std::uint32_t>(fault.amount));
      if (fault.amount == 0) prediction.AddBits(0x80000000U);
      break;
    case Change::reversed:
      prediction.Reverse();
      break;
    case Change::integerTruncated:
    case Change::integerRounded:
      prediction.ForgetFloats();
      for (const RightAnswer& answer : answers.Floats()) {
        if (answer.last - answer.first > widestSpan) return {};
        for (std::int64_t place = answer.first; place <= answer.last; ++place) {
          prediction.AddBits(IntegerBits(FloatAt(place), static_cast<Manner>(fault.amount),
                                         fault.change == Change::integerRounded));
        }
      }
      // What is not a number saturates to 0, or becomes what a processor gives, however it converts
      // the others.
      if (answers.HaveAnyNan()) {
        for (const std::uint32_t bits : {0U, 0x80000000U, 0x7FFFFFFFU, 0xFFFFFFFFU})
          prediction.AddBits(bits);
      }
      break;
    case Change::integerComputed: {
      if (!operandA->isInteger || row.operation == Operation::power || !FitsInteger(b)) return {};
      const std::int64_t other = integerB;
      const std::int64_t x = operandA->integer;
      prediction.ForgetFloats();
      prediction.AddBits(static_cast<std::uint32_t>(operation == Operation::add        ? x + other
                                                    : operation == Operation::multiply ? x * other
                                                                                       : x));
      break;
    }
    default:
      break;
  }
  return prediction;
}

/// One that stores a byte of the row's ten elements: byte `byte` of what it stores.
struct Writer {
  int element;
  int lane;
  std::size_t byte;
};

bool Writes(const Fault& fault, int element, int lane) {
  return !IsIn(fault.unwrittenElements, element) && !IsIn(fault.unwrittenLanes, lane);
}

/// Holds a fault against a row's answers, lane by lane.
class Trial {
 public:
  Trial(const Fault& fault, const RowData& data) : fault_(fault), data_(data) {
    const Place& place = fault.result;
    isMoved_ = place.offset != 0 || place.stride != 0 || place.step != 0 || fault.resultWidth != 0;
  }

  Fit Result() {
    if (!LanesFit() || !(isMoved_ ? OtherStoresFit() : UnwrittenElementsKeepAll()))
      return Fit::refuted;
    return OthersKeep() && !byChance_ ? Fit::explains : Fit::doubtful;
  }

 private:
  bool LanesFit() {
    std::size_t tried = 0;
    std::size_t unknownWrong = 0;
    std::size_t unknown = 0;
    for (const RowData::Lane& lane : data_.lanes) {
      known_ = true;
      if (!Fits(lane)) return false;
      unknown += known_ ? 0 : 1;
      unknownWrong += known_ || tried >= data_.wrongLanes ? 0 : 1;
      ++tried;
    }
    return 2 * unknown <= tried && 2 * unknownWrong <= data_.wrongLanes;
  }

  /// All that store byte `at` of the ten elements, in their order.
  std::vector<Writer> WritersOf(std::size_t at) const {
    const Place& place = fault_.result;
    const int width = fault_.resultWidth != 0 ? fault_.resultWidth : static_cast<int>(sizeOfFloat);
    const int step = place.step != 0 ? place.step : static_cast<int>(sizeOfFloat);
    const int stride = place.stride != 0 ? place.stride : static_cast<int>(data_.row.stride);
    const int fromFront = static_cast<int>(at) - place.offset;
    std::vector<Writer> writers;
    for (int lane = 0; lane < data_.row.lanes; ++lane) {
      const int fromLane = fromFront - step * lane;
      if (fromLane < 0) continue;
      const int last = std::min(fromLane / stride, data_.items - 1);
      for (int element = last; element >= 0 && fromLane - stride * element < width; --element) {
        if (Writes(fault_, element, lane))
          writers.push_back({element, lane, static_cast<std::size_t>(fromLane - stride * element)});
      }
    }
    return writers;
  }

  bool Fits(const RowData::Lane& lane) {
    const std::size_t at = data_.row.stride * static_cast<std::size_t>(lane.element) +
                           sizeOfFloat * static_cast<std::size_t>(lane.lane);
    if (!isMoved_) {
      if (!Writes(fault_, lane.element, lane.lane)) return Keeps(lane.repetition, at, sizeOfFloat);
      const Prediction prediction =
          Predict(fault_, data_, lane.repetition, lane.element, lane.lane);
      known_ = prediction.IsKnown();
      return prediction.Allows(data_.BitsAt(lane));
    }
    const std::vector<Writer> writers = WritersOf(at);
    const std::vector<Writer> writersOfLast = WritersOf(at + sizeOfFloat - 1);
    if (writers.size() > 1 || writersOfLast.size() > 1) byChance_ = true;
    bool isWhole = false;
    for (const Writer& writer : writers) {
      // One that stores the whole lane.
      if (writer.byte != 0 || std::ranges::none_of(writersOfLast, [&writer](const Writer& last) {
            return last.element == writer.element && last.lane == writer.lane;
          }))
        continue;
      const Prediction prediction = PredictBy(writer, lane.repetition);
      known_ = prediction.IsKnown();
      if (prediction.Allows(data_.BitsAt(lane))) return true;
      isWhole = true;
    }
    if (isWhole) return false;
    if (writers.empty() && writersOfLast.empty() && WritersOf(at + 1).empty() &&
        WritersOf(at + 2).empty())
      return Keeps(lane.repetition, at, sizeOfFloat);
    for (std::size_t byte = at; byte < at + sizeOfFloat; ++byte) {
      if (!ByteFits(lane.repetition, byte, WritersOf(byte))) return false;
    }
    return true;
  }

  Prediction PredictBy(const Writer& writer, std::size_t repetition) const {
    return Predict(fault_, data_, repetition, writer.element, writer.lane);
  }

  bool ByteFits(std::size_t repetition, std::size_t at, const std::vector<Writer>& writers) {
    if (writers.empty()) return Keeps(repetition, at, 1);
    return std::ranges::any_of(writers, [&](const Writer& writer) {
      return PredictBy(writer, repetition)
          .AllowsByte(writer.byte, data_.repetitions[repetition].result[at]);
    });
  }

  /// Whether the bytes are what stood there. Where nobody knows what that was, it was one and the
  /// same byte everywhere unless it was so by chance.
  bool Keeps(std::size_t repetition, std::size_t at, std::size_t size) {
    const RowData::Seen& seen = data_.repetitions[repetition];
    const auto first = seen.result.begin() + static_cast<std::ptrdiff_t>(at);
    if (seen.before) {
      return std::equal(first, first + static_cast<std::ptrdiff_t>(size),
                        seen.before->begin() + static_cast<std::ptrdiff_t>(at));
    }
    const bool isOnly = data_.repetitions.size() == 1;
    known_ = isOnly;
    if (size != sizeOfFloat) return true;
    std::uint32_t word = 0;
    std::memcpy(&word, &*first, sizeof word);
    const std::uint32_t repeated = (word & 0xFFU) * 0x01010101U;
    if (!fresh_) fresh_ = word;
    if (word != *fresh_ || word != repeated) byChance_ = true;
    return word == *fresh_ || !isOnly;
  }

  /// Whether what is stored between the lanes, where no row looks, is there too.
  bool OtherStoresFit() {
    for (std::size_t at = 0; at < data_.row.stride * elementsOfRow; ++at) {
      const std::vector<Writer> writers = WritersOf(at);
      if (writers.size() != 1) continue;
      for (std::size_t repetition = 0; repetition < data_.repetitions.size(); ++repetition) {
        if (!ByteFits(repetition, at, writers)) return false;
      }
    }
    return true;
  }

  /// Whether an element that is not written is left alone as a whole.
  bool UnwrittenElementsKeepAll() {
    if (fault_.unwrittenElements == 0) return true;
    for (std::size_t repetition = 0; repetition < data_.repetitions.size(); ++repetition) {
      for (std::size_t at = 0; at < data_.row.stride * elementsOfRow; at += sizeOfFloat) {
        const bool keeps = (fault_.unwrittenElements >> (at / data_.row.stride) & 1U) != 0;
        if (keeps && !Keeps(repetition, at, sizeOfFloat)) return false;
      }
    }
    return true;
  }

  /// Whether all that the fault leaves alone, and no lane holds, is what stood there.
  bool OthersKeep() {
    const Row& row = data_.row;
    const auto slots = static_cast<std::size_t>(row.lanes == 3 ? 4 : row.lanes);
    for (std::size_t at = 0; at < row.stride * elementsOfRow; ++at) {
      if (isMoved_ ? !WritersOf(at).empty() : at % row.stride < sizeOfFloat * slots) continue;
      const auto keeps = [at](const RowData::Seen& seen) {
        return !seen.before || seen.result[at] == (*seen.before)[at];
      };
      if (!std::ranges::all_of(data_.repetitions, keeps)) return false;
    }
    return true;
  }

  const Fault& fault_;
  const RowData& data_;
  bool isMoved_ = false;
  bool byChance_ = false;
  bool known_ = true;
  std::optional<std::uint32_t> fresh_;
};

}  // namespace

std::optional<Fault> Both(const Fault& one, const Fault& other) {
  constexpr Fault right;
  Fault ofRight = right;
  Fault ofOther = other;
  Fault both = one;
  const auto join = [](auto& part, const auto& rightPart, const auto& otherPart) {
    if (part != rightPart && otherPart != rightPart && part != otherPart) return false;
    if (part == rightPart) part = otherPart;
    return true;
  };
  auto parts = Parts(both);
  auto partsOfRight = Parts(ofRight);
  auto partsOfOther = Parts(ofOther);
  const bool joined = [&]<std::size_t... n>(std::index_sequence<n...>) {
    return (join(std::get<n>(parts), std::get<n>(partsOfRight), std::get<n>(partsOfOther)) && ...);
  }
  (std::make_index_sequence<std::tuple_size_v<decltype(parts)>>());
  if (!joined) return std::nullopt;
  return both;
}

RowData::RowData(const Row& theRow, const Record& record, const Device& device,
                 const Opinion& opinion)
    : row(theRow), mode(ModeOf(device, record.buildOptions)) {
  const std::size_t size = row.stride * elementsOfRow;
  const auto joined = [](const Bytes& elements, const Bytes& behind) {
    Bytes all = elements;
    all.insert(all.end(), behind.begin(), behind.end());
    return all;
  };
  std::vector<std::size_t> places;  // of a repetition among those that are seen
  const Repetition* before = nullptr;
  for (const Repetition& repetition : record.repetitions) {
    places.push_back(repetitions.size());
    if (IsSeen(row, repetition)) {
      Seen seen{joined(repetition.inputA, record.behindA),
                joined(repetition.inputB, record.behindB), repetition.result, std::nullopt};
      seen.result.resize(size);
      if (before != nullptr) seen.before = before->result;
      repetitions.push_back(std::move(seen));
    }
    before = IsSeen(row, repetition) ? &repetition : nullptr;
  }
  for (const WrongLane& wrong : opinion.wrong) {
    lanes.push_back(
        {places[static_cast<std::size_t>(wrong.repetition) - 1], wrong.element, wrong.lane});
  }
  wrongLanes = lanes.size();
  const auto numberOf = [this](const Lane& lane) {
    const auto element = lane.repetition * elementsOfRow + static_cast<std::size_t>(lane.element);
    return element * static_cast<std::size_t>(row.lanes) + static_cast<std::size_t>(lane.lane);
  };
  std::vector<bool> isWrong(numberOf({repetitions.size(), 0, 0}));
  for (const Lane& wrong : lanes) isWrong[numberOf(wrong)] = true;
  for (std::size_t repetition = 0; repetition < repetitions.size(); ++repetition) {
    for (int element = 0; element < elementsOfRow; ++element) {
      for (int lane = 0; lane < row.lanes; ++lane) {
        const Lane next{repetition, element, lane};
        if (!isWrong[numberOf(next)]) lanes.push_back(next);
      }
    }
  }
  if (!repetitions.empty()) {
    items = static_cast<int>(repetitions.front().a.size() / row.stride);
  }
}

std::uint32_t RowData::BitsAt(const Lane& lane) const {
  const auto element = std::span(repetitions[lane.repetition].result)
                           .subspan(row.stride * static_cast<std::size_t>(lane.element));
  return std::bit_cast<std::uint32_t>(FloatLane(element, lane.lane));
}

Fit FitOf(const Fault& fault, const RowData& data) { return Trial(fault, data).Result(); }

}  // namespace diagnosis
