// What a device with a fault gives where its integers are as wide as they come.

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <utility>

#include "diagnosis/localization/fit.h"
#include "diagnosis/localization/steps.h"

namespace diagnosis {
namespace {

/// A repetition of a row over scalars, with the same operands in each element.
Record RecordOf(const Row& row, std::uint32_t a, float b, std::uint32_t answer) {
  Record record;
  record.row = row.name;
  Repetition& repetition = record.repetitions.emplace_back();
  for (Bytes* bytes : {&repetition.inputA, &repetition.inputB, &repetition.result})
    bytes->resize(row.stride * elementsOfRow);
  for (std::size_t at = 0; at < repetition.result.size(); at += row.stride) {
    std::memcpy(&repetition.inputA[at], &a, sizeof a);
    std::memcpy(&repetition.inputB[at], &b, sizeof b);
    std::memcpy(&repetition.result[at], &answer, sizeof answer);
  }
  return record;
}

TEST(Fault, ComputesInIntegersAsWideAsItTakes) {
  constexpr std::uint32_t most = 0xFFFFFFFF;
  constexpr float wide = 0x1.fffffep31F;
  const struct {
    const char* row;
    std::uint32_t a;
    float b;
  } cases[] = {
      {"multiply_union_scalar_2", most, wide},
      {"multiply_union_scalar_2", most, -wide},
      {"multiply_union_scalar_1", 0x80000000, wide},
      {"multiply_union_scalar_1", 0x80000000, -wide},
      {"multiply_union_scalar_1", 0x7FFFFFFF, -wide},
      {"multiply_union_scalar_2", 3, 0x1.000002p23F},
      {"add_union_scalar_2", most, wide},
      {"add_union_scalar_1", 0x80000000, -wide},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.row << " " << c.a << " " << c.b);
    const Row row = RowNamed(c.row).value();
    // Exact, as no product is longer than the 64 bits of its significand.
    const auto a = row.isSigned ? static_cast<long double>(std::bit_cast<std::int32_t>(c.a))
                                : static_cast<long double>(c.a);
    const long double exact = row.operation == Operation::add ? a + c.b : a * c.b;
    const auto b = static_cast<std::uint32_t>(static_cast<std::int64_t>(c.b));
    const struct {
      Fault fault;
      std::uint32_t answer;
    } faults[] = {
        {{.formula = Formula::inIntegers}, std::bit_cast<std::uint32_t>(static_cast<float>(exact))},
        {{.change = Change::integerComputed}, row.operation == Operation::add ? c.a + b : c.a * b},
    };
    for (const auto& [fault, answer] : faults) {
      for (const std::uint32_t answered : {answer, answer + 1}) {
        const Record record = RecordOf(row, c.a, c.b, answered);
        const Device device;
        const RowData data(row, record, device, OpinionOf(record, device));
        EXPECT_EQ(FitOf(fault, data), answered == answer ? Fit::explains : Fit::refuted);
      }
    }
  }
}

TEST(Fault, ComputesWithTheWidestIntegers) {
  constexpr std::int64_t least = INT64_MIN;
  constexpr std::int64_t most = INT64_MAX;
  const FloatMode mode;
  const auto first = [&mode](Operation operation, std::int64_t a, std::int64_t b) {
    return InIntegers(operation, a, b, mode).Floats().front().value;
  };
  EXPECT_EQ(first(Operation::add, most, most), 0x1p64F);
  EXPECT_EQ(first(Operation::add, least, -1), -0x1p63F);
  // A tie of 65 bits, and one more.
  EXPECT_EQ(first(Operation::add, most, (std::int64_t{1} << 39) + 1), 0x1p63F);
  EXPECT_EQ(first(Operation::add, most, (std::int64_t{1} << 39) + 2), 0x1.000002p63F);
  EXPECT_EQ(first(Operation::multiply, least, least), 0x1p126F);
  EXPECT_EQ(first(Operation::multiply, least, most), -0x1p126F);

  const Operand lowest{true, least, 0};
  const auto converted = [&lowest](Conversion conversion) {
    return Convert(lowest, conversion, Rounding::toNearest);
  };
  EXPECT_EQ(converted(Conversion::positive), 0x1p63F);
  EXPECT_EQ(converted(Conversion::complemented), 0x1p63F);
  EXPECT_EQ(converted(Conversion::low24BitsOfMagnitude), 0);

  // Eight bytes of a buffer, the highest bit alone.
  const Row row = RowNamed("add_union_scalar_1").value();
  Record record = RecordOf(row, 0, 0, 0);
  record.repetitions[0].inputA[7] = 0x80;
  const Device device;
  const RowData data(row, record, device, OpinionOf(record, device));
  for (const auto& [sign, integer] : {std::pair(Sign::isSigned, least), {Sign::isUnsigned, least}})
    EXPECT_EQ(Read(data, {.width = 8, .sign = sign}, true, 0, 0, 0)->integer, integer);
}

}  // namespace
}  // namespace diagnosis
