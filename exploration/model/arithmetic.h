#pragma once

#include <cstdint>

#include "exploration/model/memory.h"

// Arithmetic on components, all of it exact: what a device might round, flush or overflow throws
// Invalid.

namespace exploration {

/// A scalar's value: an integer (of a ulong its bits) or a floating-point number.
struct Number {
  Scalar scalar = Scalar::intType;
  std::int64_t integer = 0;
  double real = 0;
  Knowledge knowledge = Knowledge::known;

  bool IsFloat() const { return TraitsOf(scalar).isFloat; }
};

/// Of one component of a scalar or vector.
Number ComponentOf(const Types& types, const Value& value, int component);
/// Throws Invalid if a float is not an ordinary number.
void SetComponent(const Types& types, Value& value, int component, const Number& number);
/// A value of a scalar or vector type, of which nothing is known yet.
Value EmptyValue(const Types& types, TypeId type);
Value ValueOf(const Types& types, const Number& number);

/// The same number in another type. Throws Invalid unless it is there exactly.
Number Converted(const Number& number, Scalar to);

enum class Operator : std::uint8_t { add, subtract, multiply, both, either, differ, left, right };
/// Of two numbers of one type, with a result of that type. Throws Invalid for what overflows in a
/// signed type, for a float that is not exact, and for bits of floats.
Number Computed(Operator by, const Number& left, const Number& right);

}  // namespace exploration
