#include "exploration/model/arithmetic.h"

#include <cmath>
#include <cstring>

namespace exploration {
namespace {

std::uint64_t BitsOf(const Number& number) {
  std::uint64_t bits = 0;
  if (number.scalar == Scalar::floatType) {
    const auto small = static_cast<float>(number.real);
    std::memcpy(&bits, &small, sizeof small);
  } else if (number.scalar == Scalar::doubleType) {
    std::memcpy(&bits, &number.real, sizeof number.real);
  } else {
    bits = static_cast<std::uint64_t>(number.integer);
  }
  return bits;
}

/// The bits as a number, with the sign where the type has one. A half stays an integer: its bits.
Number FromBits(Scalar scalar, std::uint64_t bits) {
  Number number;
  number.scalar = scalar;
  const ScalarTraits& traits = TraitsOf(scalar);
  const int unused = 64 - 8 * traits.size;
  if (scalar == Scalar::floatType) {
    float small = 0;
    std::memcpy(&small, &bits, sizeof small);
    number.real = small;
  } else if (scalar == Scalar::doubleType) {
    std::memcpy(&number.real, &bits, sizeof number.real);
  } else if (traits.isSigned && !traits.isFloat) {
    number.integer = static_cast<std::int64_t>(bits << unused) >> unused;
  } else {
    number.integer = static_cast<std::int64_t>(bits << unused >> unused);
  }
  return number;
}

bool Fits(std::int64_t integer, bool isUlong, Scalar to) {
  const ScalarTraits& traits = TraitsOf(to);
  if (isUlong && integer < 0) return to == Scalar::ulongType;
  if (traits.size == 8) return traits.isSigned || isUlong || integer >= 0;
  const int bits = 8 * traits.size - (traits.isSigned ? 1 : 0);
  const std::int64_t limit = std::int64_t{1} << bits;
  return integer < limit && integer >= (traits.isSigned ? -limit : 0);
}

/// Exact in every rounding mode, and no zero whose sign would depend on it.
double ExactFloat(Operator by, double left, double right) {
  double result = 0;
  bool isExact = false;
  if (by == Operator::multiply) {
    result = left * right;
    isExact = std::isnormal(result) && std::fma(left, right, -result) == 0;
  } else {
    const double added = by == Operator::add ? right : -right;
    Require(by == Operator::add || by == Operator::subtract, "bits of a float");
    result = left + added;
    const double back = result - left;
    isExact = (left - (result - back)) + (added - back) == 0;
  }
  Require(isExact && std::isnormal(result), "a float that is rounded");
  return result;
}

}  // namespace

Number ComponentOf(const Types& types, const Value& value, int component) {
  const Scalar scalar = types[value.type].scalar;
  const int size = TraitsOf(scalar).size;
  std::uint64_t bits = 0;
  Knowledge least = Knowledge::known;
  for (int i = 0; i < size; ++i) {
    const Byte& byte = value.bytes.at(static_cast<std::size_t>(component * size + i));
    bits |= static_cast<std::uint64_t>(byte.value) << (8 * i);
    least = std::min(least, byte.knowledge);
  }
  Number number = FromBits(scalar, bits);
  number.knowledge = least;
  return number;
}

void SetComponent(const Types& types, Value& value, int component, const Number& number) {
  const Scalar scalar = types[value.type].scalar;
  const int size = TraitsOf(scalar).size;
  const std::uint64_t bits = BitsOf(number);
  std::uint8_t raw[8] = {};
  for (int i = 0; i < size; ++i) raw[i] = static_cast<std::uint8_t>(bits >> (8 * i));
  Require(IsOrdinary(scalar, raw), "a float that is not ordinary");
  for (int i = 0; i < size; ++i)
    value.bytes.at(static_cast<std::size_t>(component * size + i)) = {raw[i], number.knowledge};
}

Value EmptyValue(const Types& types, TypeId type) {
  Value value;
  value.type = type;
  value.bytes.resize(SizeOf(types, type));
  return value;
}

Value ValueOf(const Types& types, const Number& number) {
  Value value = EmptyValue(types, TypeOf(number.scalar));
  SetComponent(types, value, 0, number);
  return value;
}

Number Converted(const Number& number, Scalar to) {
  Number converted = number;
  converted.scalar = to;
  if (number.scalar == to) return converted;
  Require(number.scalar != Scalar::halfType && to != Scalar::halfType, "half is storage alone");
  const bool isUlong = number.scalar == Scalar::ulongType;
  if (!number.IsFloat() && !converted.IsFloat()) {
    Require(Fits(number.integer, isUlong, to), "a conversion that does not fit");
    return converted;
  }
  if (!number.IsFloat()) {
    // Beyond this an integer may be no double, and then none of the checks here would see it.
    constexpr std::int64_t most = std::int64_t{1} << 53;
    Require(number.integer <= most && number.integer >= -most, "a conversion that is rounded");
    converted.real = static_cast<double>(number.integer);
  } else if (!converted.IsFloat()) {
    constexpr double most = 9007199254740992.0;
    Require(std::fabs(number.real) <= most && std::trunc(number.real) == number.real,
            "a conversion that is rounded");
    converted.integer = static_cast<std::int64_t>(number.real);
    Require(Fits(converted.integer, false, to), "a conversion that does not fit");
  }
  if (to == Scalar::floatType)
    Require(std::fabs(converted.real) < 0x1p127 &&
                static_cast<double>(static_cast<float>(converted.real)) == converted.real,
            "a conversion that is rounded");
  return converted;
}

Number Computed(Operator by, const Number& left, const Number& right) {
  Require(left.scalar == right.scalar && left.scalar != Scalar::halfType, "two different types");
  Number result = left;
  result.knowledge = std::min(left.knowledge, right.knowledge);
  if (left.IsFloat()) {
    result.real = ExactFloat(by, left.real, right.real);
    if (left.scalar == Scalar::floatType) {
      Require(std::fabs(result.real) < 0x1p127, "a float that overflows");
      Require(static_cast<double>(static_cast<float>(result.real)) == result.real,
              "a float that is rounded");
    }
    return result;
  }
  const bool isSigned = TraitsOf(left.scalar).isSigned;
  const int bits = 8 * TraitsOf(left.scalar).size;
  const auto a = static_cast<std::uint64_t>(left.integer);
  const auto b = static_cast<std::uint64_t>(right.integer);
  std::int64_t exact = 0;
  std::uint64_t wrapped = 0;
  bool overflows = false;
  switch (by) {
    case Operator::add:
      wrapped = a + b;
      overflows = __builtin_add_overflow(left.integer, right.integer, &exact);
      break;
    case Operator::subtract:
      wrapped = a - b;
      overflows = __builtin_sub_overflow(left.integer, right.integer, &exact);
      break;
    case Operator::multiply:
      // Narrower types are promoted to int, in which the product of two ushorts has no room.
      Require(bits >= 32, "a product of what is promoted");
      wrapped = a * b;
      overflows = __builtin_mul_overflow(left.integer, right.integer, &exact);
      break;
    case Operator::both:
      wrapped = a & b;
      exact = left.integer & right.integer;
      break;
    case Operator::either:
      wrapped = a | b;
      exact = left.integer | right.integer;
      break;
    case Operator::differ:
      wrapped = a ^ b;
      exact = left.integer ^ right.integer;
      break;
    case Operator::left:
      Require(!isSigned && b < static_cast<std::uint64_t>(bits) && bits >= 32, "a shift");
      wrapped = a << b;
      break;
    case Operator::right:
      Require(!isSigned && b < static_cast<std::uint64_t>(bits), "a shift");
      wrapped = a >> b;
      break;
  }
  if (isSigned) Require(!overflows && Fits(exact, false, left.scalar), "a signed overflow");
  const Knowledge knowledge = result.knowledge;
  result = FromBits(left.scalar, wrapped);
  result.knowledge = knowledge;
  return result;
}

}  // namespace exploration
