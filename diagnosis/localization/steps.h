#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "diagnosis/judgement/arithmetic.h"
#include "diagnosis/localization/fault.h"
#include "diagnosis/localization/row_data.h"

// The steps from a lane's bytes to its answer, as a device with a fault takes them.

namespace diagnosis {

/// What a lane of a buffer holds.
struct Operand {
  bool isInteger = false;
  std::int64_t integer = 0;
  float real = 0;
};

/// What a device that reads so finds in a lane of A or B; nothing if nobody saw those bytes.
std::optional<Operand> Read(const RowData& data, const Reading& reading, bool isA,
                            std::size_t repetition, int element, int lane);

/// An operand as a float.
float Convert(const Operand& operand, Conversion conversion, Rounding rounding);

/// A sum or product of integers, of 32 bits and as wide as it takes, converted.
RightAnswers InIntegers(Operation operation, std::int64_t a, std::int64_t b, const FloatMode& mode);

/// A sum or product of an integer that was not made a float.
RightAnswers Unconverted(Operation operation, std::int64_t a, float b, const FloatMode& mode);

/// The low 32 bits of a sum or a product.
std::uint32_t LowBits(Operation operation, std::int64_t a, std::int64_t b);

/// All answers as `change` makes them, if it makes floats of floats; else as they are.
RightAnswers Apply(Change change, std::int64_t amount, const RightAnswers& answers);

/// The bits of the integer in the place of `x`.
std::uint32_t IntegerBits(float x, OverflowPolicy policy, bool rounded);

}  // namespace diagnosis
