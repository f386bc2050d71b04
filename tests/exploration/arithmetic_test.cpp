#include "exploration/model/arithmetic.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace exploration {
namespace {

Number Integer(Scalar scalar, std::int64_t integer) {
  Number number;
  number.scalar = scalar;
  number.integer = integer;
  return number;
}

Number Float(Scalar scalar, double real) {
  Number number;
  number.scalar = scalar;
  number.real = real;
  return number;
}

std::string Text(const Number& number) {
  return number.IsFloat() ? std::to_string(number.real) : std::to_string(number.integer);
}

TEST(Arithmetic, IsExactOrNotAtAll) {
  const Scalar i8 = Scalar::charType;
  const Scalar u8 = Scalar::ucharType;
  const Scalar u16 = Scalar::ushortType;
  const Scalar i32 = Scalar::intType;
  const Scalar u32 = Scalar::uintType;
  const Scalar f32 = Scalar::floatType;
  const struct {
    Operator by;
    Number left, right;
    std::string result;  ///< Empty for Invalid.
  } rows[] = {
      {Operator::add, Integer(i8, 100), Integer(i8, 27), "127"},
      {Operator::add, Integer(i8, 100), Integer(i8, 28), ""},
      {Operator::subtract, Integer(u8, 1), Integer(u8, 2), "255"},
      {Operator::add, Integer(i32, 2147483647), Integer(i32, 1), ""},
      {Operator::add, Integer(u32, 4294967295), Integer(u32, 1), "0"},
      {Operator::multiply, Integer(u32, 65536), Integer(u32, 65537), "65536"},
      {Operator::multiply, Integer(u16, 2), Integer(u16, 2), ""},
      {Operator::differ, Integer(i8, -1), Integer(i8, 15), "-16"},
      {Operator::both, Integer(i32, -2), Integer(i32, 255), "254"},
      {Operator::left, Integer(u32, 3), Integer(u32, 31), "2147483648"},
      {Operator::left, Integer(u32, 3), Integer(u32, 32), ""},
      {Operator::left, Integer(u8, 3), Integer(u8, 1), ""},
      {Operator::left, Integer(i32, 3), Integer(i32, 1), ""},
      {Operator::right, Integer(u8, 129), Integer(u8, 1), "64"},
      {Operator::add, Float(f32, 1.5), Float(f32, 2), "3.500000"},
      {Operator::add, Float(f32, 16777216), Float(f32, 1), ""},
      {Operator::subtract, Float(f32, 1), Float(f32, 1), ""},
      {Operator::multiply, Float(f32, 0.1F), Float(f32, 0.1F), ""},
      {Operator::multiply, Float(f32, 1e30F), Float(f32, 1e30F), ""},
      {Operator::both, Float(f32, 1), Float(f32, 1), ""},
  };
  for (const auto& row : rows) {
    std::string result;
    try {
      result = Text(Computed(row.by, row.left, row.right));
    } catch (const Invalid&) {
      // Which is what the row says with nothing.
    }
    EXPECT_EQ(result, row.result) << Text(row.left) << " " << static_cast<int>(row.by) << " "
                                  << Text(row.right);
  }
}

TEST(Arithmetic, ConvertsOnlyWhatTheOtherTypeHas) {
  const struct {
    Number from;
    Scalar to;
    std::string result;
  } rows[] = {
      {Integer(Scalar::intType, -1), Scalar::longType, "-1"},
      {Integer(Scalar::intType, -1), Scalar::uintType, ""},
      {Integer(Scalar::intType, 128), Scalar::charType, ""},
      {Integer(Scalar::intType, -128), Scalar::charType, "-128"},
      {Integer(Scalar::ulongType, -1), Scalar::longType, ""},
      {Integer(Scalar::intType, 16777217), Scalar::floatType, ""},
      {Integer(Scalar::intType, 16777216), Scalar::floatType, "16777216.000000"},
      {Float(Scalar::floatType, 2.5), Scalar::intType, ""},
      {Float(Scalar::floatType, -3), Scalar::shortType, "-3"},
      {Float(Scalar::floatType, 3e9F), Scalar::intType, ""},
      {Float(Scalar::doubleType, 0.1), Scalar::floatType, ""},
      {Float(Scalar::doubleType, 0.5), Scalar::floatType, "0.500000"},
  };
  for (const auto& row : rows) {
    std::string result;
    try {
      result = Text(Converted(row.from, row.to));
    } catch (const Invalid&) {
      // Which is what the row says with nothing.
    }
    EXPECT_EQ(result, row.result) << Text(row.from) << " to " << TraitsOf(row.to).name;
  }
}

}  // namespace
}  // namespace exploration
