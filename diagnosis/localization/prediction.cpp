#include "diagnosis/localization/prediction.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <optional>

#include "diagnosis/localization/steps.h"

namespace diagnosis {
namespace {

constexpr std::int64_t widestSpan = 64;  // of answers that are worth going through one by one

bool FitsInteger(float x) { return std::fabs(x) < 0x1p32F; }

/// What a device has to compute with in a lane.
struct Operands {
  Operand a;  // as it is read
  float convertedA;
  float b = 0;
  std::int64_t integerB = 0;  // 0 if it is not to be had
  int exponent;
};

std::optional<Operands> OperandsOf(const Fault& fault, const RowData& data, const FloatMode& mode,
                                   std::size_t repetition, int element, int lane) {
  const auto a = Read(data, fault.a, true, repetition, element, lane);
  if (!a) return std::nullopt;
  Operands operands{.a = *a,
                    .convertedA = Convert(*a, fault.conversion, mode.conversion),
                    .exponent = ExponentOf(data.row, element, lane)};
  if (fault.formula == Formula::exponentOfLane)
    operands.exponent = data.row.shape == Shape::arrays ? element : lane;
  if (!data.row.twoInputs) return operands;
  const auto b = Read(data, fault.b, false, repetition, element, lane);
  if (!b) return std::nullopt;
  operands.b = Convert(*b, Conversion::own, mode.conversion);
  if (fault.truncatedB) operands.b = std::trunc(operands.b);
  operands.integerB = b->isInteger              ? b->integer
                      : FitsInteger(operands.b) ? static_cast<std::int64_t>(operands.b)
                                                : 0;
  return operands;
}

/// The operation that is computed in place of the row's own.
Operation OperationOf(Formula formula, Operation own) {
  switch (formula) {
    case Formula::copy:
      return Operation::copy;
    case Formula::sum:
    case Formula::difference:
      return Operation::add;
    case Formula::product:
      return Operation::multiply;
    default:
      return own;
  }
}

/// What the formula gives; nothing if it is not known.
std::optional<RightAnswers> Compute(Formula formula, Operation operation, const Operands& operands,
                                    const FloatMode& mode) {
  const auto& [a, convertedA, b, integerB, exponent] = operands;
  switch (formula) {
    case Formula::onlyB:
      return RightAnswersOf(Operation::copy, b, 0, 0, mode);
    case Formula::inIntegers:
      if (!a.isInteger || !FitsInteger(b)) return std::nullopt;
      return InIntegers(operation, a.integer, integerB, mode);
    case Formula::unconverted:
      if (!a.isInteger) return std::nullopt;
      return Unconverted(operation, a.integer, b, mode);
    default:
      break;
  }
  const bool isNegative = formula == Formula::byLogarithm && convertedA < 0;
  if (isNegative && exponent != 0) return RightAnswers::AnyNan();
  RightAnswers answers = RightAnswersOf(operation, convertedA,
                                        formula == Formula::difference ? -b : b, exponent, mode);
  const bool isZero = formula == Formula::byLogarithm && convertedA == 0 && exponent == 0;
  if (isNegative || isZero) answers.AddAnyNan();
  return answers;
}

/// What is stored of the answers.
Prediction Changed(const Fault& fault, Operation operation, const Operands& operands,
                   const RightAnswers& answers) {
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
          prediction.AddBits(IntegerBits(FloatAt(place), static_cast<OverflowPolicy>(fault.amount),
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
      if (!operands.a.isInteger || !FitsInteger(operands.b)) return {};
      const bool hasB = operation == Operation::add || operation == Operation::multiply;
      prediction.ForgetFloats();
      prediction.AddBits(hasB ? LowBits(operation, operands.a.integer, operands.integerB)
                              : static_cast<std::uint32_t>(operands.a.integer));
      break;
    }
    default:
      break;
  }
  return prediction;
}

}  // namespace

std::optional<std::uint32_t> Prediction::Sample() const {
  if (!known_) return std::nullopt;
  if (!bits_.empty()) return bits_.front();
  if (floats_.Floats().empty()) return std::nullopt;
  const auto bits = std::bit_cast<std::uint32_t>(floats_.Floats().front().value);
  return reversed_ ? __builtin_bswap32(bits) : bits;
}

bool Prediction::Allows(std::uint32_t bits) const {
  if (!known_ || std::ranges::find(bits_, bits) != bits_.end()) return true;
  return floats_.Allow(std::bit_cast<float>(reversed_ ? __builtin_bswap32(bits) : bits));
}

bool Prediction::AllowsByte(std::size_t n, std::uint8_t byte) const {
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

Prediction Predict(const Fault& fault, const RowData& data, std::size_t repetition, int element,
                   int lane) {
  if (repetition < static_cast<std::size_t>(fault.repetitionsBefore)) return {};
  FloatMode mode = data.mode;
  mode.conversion = fault.conversionRounding.value_or(mode.conversion);
  mode.arithmetic = fault.arithmeticRounding.value_or(mode.arithmetic);
  mode.operands = fault.denormalOperands.value_or(mode.operands);
  mode.results = fault.denormalResults.value_or(mode.results);

  const int item =
      element < elementsOfRow ? fault.elements[static_cast<std::size_t>(element)] : element;
  const auto operands =
      OperandsOf(fault, data, mode, repetition - static_cast<std::size_t>(fault.repetitionsBefore),
                 item, fault.lanes[static_cast<std::size_t>(lane)]);
  if (!operands) return {};
  const Operation operation = OperationOf(fault.formula, data.row.operation);
  const auto answers = Compute(fault.formula, operation, *operands, mode);
  if (!answers) return {};
  const bool isChanged = (fault.changedElements == 0 || Holds(fault.changedElements, element)) &&
                         (fault.changedLanes == 0 || Holds(fault.changedLanes, lane));
  if (!isChanged) return Prediction(*answers);
  // No integer unit has a power.
  if (fault.change == Change::integerComputed && data.row.operation == Operation::power) return {};
  return Changed(fault, operation, *operands, *answers);
}

}  // namespace diagnosis
