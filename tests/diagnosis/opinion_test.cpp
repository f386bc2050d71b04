// The second opinion against answers worked by hand.

#include "diagnosis/judgement/opinion.h"

#include <CL/cl.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace diagnosis {
namespace {

using std::nullopt;

constexpr std::uint32_t zero = 0;
constexpr std::uint32_t negativeZero = 0x80000000;
constexpr std::uint32_t one = 0x3F800000;
constexpr std::uint32_t infinity = 0x7F800000;
constexpr std::uint32_t largest = 0x7F7FFFFF;
constexpr std::uint32_t nan = 0x7FC00000;

constexpr std::uint64_t keeps = CL_FP_ROUND_TO_NEAREST | CL_FP_DENORM;
constexpr std::uint64_t flushes = CL_FP_ROUND_TO_NEAREST;
constexpr std::uint64_t towardZero = CL_FP_ROUND_TO_ZERO | CL_FP_DENORM;
constexpr std::uint64_t unknown = 0;

void Put(Bytes& bytes, std::size_t at, std::uint32_t value, std::size_t width = 4) {
  for (std::size_t n = 0; n < width; ++n) {
    bytes[at + n] = static_cast<std::uint8_t>(value >> (8 * n));
  }
}

/// One repetition in which the device is right: the inputs are all zero, and so are the answers but
/// for powers of exponent 0.
Repetition RightRepetition(const Row& row) {
  const Bytes zeros(row.stride * elementsOfRow);
  Repetition repetition{zeros, row.twoInputs ? zeros : Bytes(), true, zeros, ""};
  if (row.operation != Operation::power) return repetition;
  for (int element = 0; element < elementsOfRow; ++element) {
    for (int lane = 0; lane < row.lanes; ++lane) {
      if (ExponentOf(row, element, lane) == 0) {
        Put(repetition.result,
            row.stride * static_cast<std::size_t>(element) + 4 * static_cast<std::size_t>(lane),
            one);
      }
    }
  }
  return repetition;
}

Record RecordOf(const std::string& name, std::vector<Repetition> repetitions) {
  Record record;
  record.row = name;
  record.repetitions = std::move(repetitions);
  record.ending = {.kind = Ending::Kind::returned, .value = 1, .reason = ""};
  return record;
}

Device DeviceWith(std::uint64_t config) {
  Device device;
  device.singleFpConfig = config;
  return device;
}

/// The answers to one lane of a scalar row, and the distance of each wrong one from the nearest
/// right one.
struct Worked {
  const char* row;
  std::uint64_t config;
  std::uint32_t a;  // the integer's bits
  std::uint32_t b;
  std::vector<std::uint32_t> right;
  struct Wrong {
    std::uint32_t answer;
    std::optional<std::uint64_t> ulps;
  };
  std::vector<Wrong> wrong;
  int element = 0;  // the exponent
  const char* buildOptions = "";
};

constexpr char copyInt[] = "copy_union_scalar_1";
constexpr char addInt[] = "add_union_scalar_1";
constexpr char multiplyInt[] = "multiply_union_scalar_1";
constexpr char floorInt[] = "floor_union_scalar_1";
constexpr char powerInt[] = "power_union_scalar_1";

constexpr char flushing[] = "-cl-std=CL1.2 -cl-denorms-are-zero";
constexpr char noFlushing[] = "-DOPTION=-cl-denorms-are-zero -cl-mad-enable";
constexpr char noSigns[] = "-cl-no-signed-zeros";
constexpr char finite[] = "-cl-finite-math-only";
constexpr char unsafeMath[] = "-cl-unsafe-math-optimizations";
constexpr char relaxed[] = "-cl-fast-relaxed-math -w";

const Worked cases[] = {
    // Conversions: exact, a tie to the even side, ties the other way, each kind of integer.
    {copyInt, keeps, 0, 0, {zero}, {{negativeZero, 0}, {1, 1}, {nan, nullopt}}},
    {copyInt, flushes, 0, 0, {zero}, {{negativeZero, 0}}},
    {copyInt, keeps, 16777217, 0, {0x4B800000}, {{0x4B800001, 1}, {0xCB800000, nullopt}}},
    {copyInt, keeps, 16777219, 0, {0x4B800002}, {{0x4B800001, 1}}},
    {copyInt, unknown, 16777219, 0, {0x4B800002}, {{0x4B800001, 1}}},
    {copyInt, towardZero, 16777219, 0, {0x4B800001}, {{0x4B800002, 1}}},
    {copyInt, keeps, 0xFFFFFFFF, 0, {0xBF800000}, {{0x4F800000, nullopt}}},
    {copyInt, keeps, 0x80000000, 0, {0xCF000000}, {{0x4F000000, nullopt}}},
    {"copy_union_scalar_2", keeps, 0xFFFFFFFF, 0, {0x4F800000}, {{0x4F7FFFFF, 1}}},
    {"copy_union_scalar_2", towardZero, 0xFFFFFFFF, 0, {0x4F7FFFFF}, {{0x4F800000, 1}}},
    {"copy_union_scalar_3", keeps, 0xAAAA8000, 0, {0xC7000000}, {{0x47000000, nullopt}}},
    {"copy_union_scalar_4", keeps, 0xAAAA8000, 0, {0x47000000}, {{0xC7000000, nullopt}}},
    {"copy_union_scalar_5", keeps, 0xAAAAAA80, 0, {0xC3000000}, {{0x43000000, nullopt}}},
    {"copy_union_scalar_6", keeps, 0xAAAAAA80, 0, {0x43000000}, {{0xC3000000, nullopt}}},
    {floorInt, keeps, 0xFFFFFFFB, 0, {0xC0A00000}, {{0xC0C00000, 0x200000}}},
    {floorInt, towardZero, 0xFEFFFFFD, 0, {0xCB800001}, {{0xCB800002, 1}}},

    // Sums: of the converted integer, rounded once more; zeros, infinities and NaNs.
    {addInt, keeps, 1, one, {0x40000000}, {{0x40000001, 1}}},
    {addInt, keeps, 16777216, 0x40400000, {0x4B800002}, {{0x4B800001, 1}}},
    {addInt, towardZero, 16777216, 0x40400000, {0x4B800001}, {{0x4B800002, 1}}},
    {addInt, keeps, 0xFFFFFFFF, one, {zero}, {{negativeZero, 0}}},
    {addInt, keeps, 0, negativeZero, {zero}, {{negativeZero, 0}}},
    {addInt, keeps, 0x7FFFFFFF, largest, {largest}, {{infinity, 1}}},
    {addInt, keeps, 5, infinity, {infinity}, {{largest, 1}, {0xFF800000, nullopt}}},
    {addInt, keeps, 5, nan, {nan, 0xFFFFFFFF, 0x7F800001}, {{infinity, nullopt}, {0, nullopt}}},

    // Denormals: kept without a choice, or flushed as operand or result to a zero of either sign.
    {addInt, keeps, 0, 0x00000005, {0x00000005}, {{zero, 5}, {negativeZero, 5}, {6, 1}}},
    {addInt, flushes, 0, 0x00000005, {0x00000005, zero, negativeZero}, {{0x80000005, 5}, {6, 1}}},
    {addInt, unknown, 0, 0x807FFFFF, {0x807FFFFF, zero, negativeZero}, {{0x80800000, 1}}},
    {addInt, flushes, 0, 0x00800000, {0x00800000}, {{zero, 0x00800000}}},
    {addInt, flushes, 1, 0x807FFFFF, {one}, {{0x3F7FFFFF, 1}}},
    {multiplyInt, keeps, 0xFFFFFFFD, 0x80000001, {3}, {{zero, 3}, {0x80000003, nullopt}}},
    {multiplyInt, flushes, 0xFFFFFFFD, 0x80000001, {3, zero, negativeZero}, {{2, 1}}},
    {multiplyInt, keeps, 2, 0x007FFFFF, {0x00FFFFFE}, {{zero, 0x00FFFFFE}}},
    {multiplyInt, flushes, 2, 0x007FFFFF, {0x00FFFFFE, zero, negativeZero}, {{0x00FFFFFF, 1}}},
    {multiplyInt, flushes, 16777217, 0x7F000000, {infinity}, {{largest, 1}}},

    // What build options permit on a device that keeps denormals: a flush, ...
    {addInt, keeps, 0, 5, {5, zero, negativeZero}, {{6, 1}, {0x80000005, 5}}, 0, flushing},
    {addInt, keeps, 0, 5, {5}, {{zero, 5}}, 0, noFlushing},
    {multiplyInt, keeps, 0xFFFFFFFD, 0x80000001, {3, zero, negativeZero}, {{2, 1}}, 0, flushing},
    {addInt, keeps, 0, 0x00800000, {0x00800000}, {{zero, 0x00800000}}, 0, flushing},
    {addInt, keeps, 16777216, 0x40400000, {0x4B800002}, {{0x4B800001, 1}}, 0, flushing},
    {copyInt, keeps, 0, 0, {zero}, {{negativeZero, 0}}, 0, flushing},
    // ... zeros of either sign, anything where not all is finite, ...
    {copyInt, keeps, 0, 0, {zero, negativeZero}, {{1, 1}}, 0, noSigns},
    {powerInt, keeps, 0, 0, {zero, negativeZero}, {{one, one}}, 3, noSigns},
    {addInt, keeps, 0, 5, {5}, {{zero, 5}}, 0, noSigns},
    {addInt, keeps, 5, infinity, {infinity, zero, one, nan}, {}, 0, finite},
    {multiplyInt, keeps, 2, largest, {infinity, largest, nan}, {}, 0, finite},
    {multiplyInt, keeps, 2, one, {0x40000000}, {{0x40000001, 1}, {nan, nullopt}}, 0, finite},
    // ... and a greater error, as long as it is one.
    {addInt, keeps, 1, one, {0x40000000, 0x40002000}, {{0x40002001, 8193}}, 0, unsafeMath},
    {addInt, keeps, 5, infinity, {infinity}, {{one, 0x40000000}}, 0, unsafeMath},
    {addInt, keeps, 0, 5, {5, zero, negativeZero}, {{one, 0x3F7FFFFB}}, 0, relaxed},
    {addInt, keeps, 5, infinity, {infinity, one}, {}, 0, relaxed},
    {multiplyInt, keeps, 3, one, {0x40400001}, {{0xC0400000, nullopt}}, 0, relaxed},
    {powerInt, keeps, 3, 0, {0x41100000, 0x41102000}, {{0x41102001, 8193}}, 2, relaxed},

    // Products.
    {multiplyInt, keeps, 3, 0x40400000, {0x41100000}, {{0xC1100000, nullopt}}},
    {multiplyInt, keeps, 0xFFFFFFFF, zero, {negativeZero}, {{zero, 0}}},
    {multiplyInt, keeps, 0, infinity, {nan, 0xFFC00001}, {{zero, nullopt}, {infinity, nullopt}}},
    {multiplyInt, keeps, 0xFFFFFFFF, infinity, {0xFF800000}, {{infinity, nullopt}}},
    {multiplyInt, keeps, 2, largest, {infinity}, {{largest, 1}}},
    {multiplyInt, towardZero, 2, largest, {largest}, {{infinity, 1}}},
    {multiplyInt, keeps, 3, 0x3F800001, {0x40400002}, {{0x40400001, 1}}},
    {multiplyInt, towardZero, 3, 0x3F800001, {0x40400001}, {{0x40400002, 1}}},

    // Powers within 16 units in the last place of the exact result. (Of 1.0 the unit is the one
    // below it; of 16777215 squared, the exact result lies just above a float near a binade's end.)
    {powerInt, keeps, 0, 0, {one, 0x3F800008, 0x3F7FFFF0}, {{zero, one}, {nan, nullopt}}, 0},
    {powerInt, keeps, 0xFFFFFFFB, 0, {one}, {{0x3F800009, 9}, {0x3F7FFFEF, 17}}, 0},
    {powerInt, keeps, 0, 0, {zero}, {{negativeZero, 0}, {1, 1}}, 3},
    {powerInt, keeps, 3, 0, {0x41100000, 0x41100010, 0x410FFFF0}, {{0x41100011, 17}}, 2},
    {powerInt, keeps, 2, 0, {0x41000000, 0x41000008, 0x40FFFFF0}, {{0x41000009, 9}}, 3},
    {powerInt, keeps, 2, 0, {0x41000000}, {{0x40FFFFEF, 17}}, 3},
    {powerInt, keeps, 0xFFFFFFFD, 0, {0xC1D80000, 0xC1D80010}, {{0x41D80000, nullopt}}, 3},
    {powerInt, keeps, 0xFFFFFFFD, 0, {0x41100000}, {{0xC1100000, nullopt}, {nan, nullopt}}, 2},
    {powerInt,
     keeps,
     16777215,
     0,
     {0x577FFFFE, 0x57800007, 0x577FFFEF},
     {{0x57800008, 10}, {0x577FFFEE, 16}},
     2},
    {powerInt, keeps, 0x7FFFFFFF, 0, {infinity}, {{largest, 1}, {nan, nullopt}}, 5},
    {powerInt, towardZero, 0x7FFFFFFF, 0, {infinity, largest}, {{0xFF800000, nullopt}}, 5},
    {powerInt, keeps, 0x80000000, 0, {0xFF800000}, {{infinity, nullopt}}, 9},
};

TEST(Opinion, AgreesWithWorkedAnswers) {
  for (const Worked& worked : cases) {
    const Row row = RowNamed(worked.row).value();
    const auto judge = [&](std::uint32_t answer) {
      Repetition repetition = RightRepetition(row);
      const std::size_t at = row.stride * static_cast<std::size_t>(worked.element);
      Put(repetition.inputA, at, worked.a);
      if (row.twoInputs) Put(repetition.inputB, at, worked.b);
      Put(repetition.result, at, answer);
      Record record = RecordOf(worked.row, {repetition});
      record.buildOptions = worked.buildOptions;
      return OpinionOf(record, DeviceWith(worked.config));
    };
    const auto what = [&](std::uint32_t answer) {
      return testing::Message() << std::hex << worked.row << ' ' << worked.buildOptions << " of 0x"
                                << worked.a << ", 0x" << worked.b << ": 0x" << answer;
    };
    for (const std::uint32_t answer : worked.right) {
      SCOPED_TRACE(what(answer));
      const Opinion opinion = judge(answer);
      EXPECT_EQ(opinion.verdict, Opinion::Verdict::right);
      EXPECT_EQ(opinion.lanes, 10);
    }
    for (const auto& [answer, ulps] : worked.wrong) {
      SCOPED_TRACE(what(answer));
      const Opinion opinion = judge(answer);
      EXPECT_EQ(opinion.verdict, Opinion::Verdict::wrong);
      ASSERT_EQ(opinion.wrong.size(), 1U);
      const WrongLane& lane = opinion.wrong.front();
      EXPECT_EQ(lane.element, worked.element);
      EXPECT_EQ(std::bit_cast<std::uint32_t>(lane.answer), answer);
      EXPECT_EQ(lane.ulps, ulps);
      EXPECT_EQ(opinion.greatestUlps, ulps.value_or(0));
    }
  }
}

TEST(Opinion, CountsFromTheAnswerToTheRightOne) {
  const float noNumber = std::numeric_limits<float>::quiet_NaN();
  const struct {
    float answer;
    float right;
    std::optional<std::uint64_t> ulps;
  } distances[] = {
      {0.5F, 0.50000006F, 1}, {-0.5F, -0.50000006F, 1}, {2.0F, 1.0F, 1U << 23},
      {0.0F, -0.0F, 0},       {-0.0F, 1e-45F, 1},       {-1.0F, 1.0F, {}},
      {1e-45F, -1e-45F, {}},  {noNumber, 1.0F, {}},     {1.0F, noNumber, {}},
  };
  for (const auto& [answer, right, ulps] : distances)
    EXPECT_EQ(DistanceBetween(answer, right), ulps) << answer << ' ' << right;

  FloatMode mode;
  mode.operands = mode.results = Denormals::mayBeFlushed;
  const RightAnswers nine = RightAnswersOf(Operation::power, 3, 0, 2, mode);
  EXPECT_TRUE(nine.Allow(9));
  EXPECT_FALSE(nine.Allow(0));
}

TEST(Opinion, LooksAtEveryLaneOfEveryRepetition) {
  for (const char* name : {"copy_union_arrays_5", "floor_union_vector16_6", "power_union_vector3_3",
                           "add_union_vector8_1", "multiply_union_scalar_2"}) {
    const Row row = RowNamed(name).value();
    const Repetition right = RightRepetition(row);
    for (int element = 0; element < elementsOfRow; ++element) {
      for (int lane = 0; lane < row.lanes; ++lane) {
        Repetition wrong = right;
        Put(wrong.result,
            row.stride * static_cast<std::size_t>(element) + 4 * static_cast<std::size_t>(lane),
            0xC1000000);
        const Opinion opinion = OpinionOf(RecordOf(name, {right, right, wrong}), DeviceWith(keeps));
        EXPECT_EQ(opinion.lanes, 3 * elementsOfRow * row.lanes);
        ASSERT_EQ(opinion.wrong.size(), 1U) << name << ' ' << element << ' ' << lane;
        EXPECT_EQ(opinion.wrong[0].repetition, 3);
        EXPECT_EQ(opinion.wrong[0].element, element);
        EXPECT_EQ(opinion.wrong[0].lane, lane);
      }
    }
  }
}

TEST(Opinion, HasNoneOfWhatDidNotComeBack) {
  const Row row = RowNamed(addInt).value();
  const Repetition right = RightRepetition(row);
  Repetition noResult = right;
  noResult.result.clear();
  Repetition noInput = right;
  noInput.inputB.clear();
  EXPECT_EQ(OpinionOf(RecordOf(addInt, {}), DeviceWith(keeps)).verdict, Opinion::Verdict::unseen);
  EXPECT_EQ(OpinionOf(RecordOf(addInt, {noResult, noInput}), DeviceWith(keeps)).verdict,
            Opinion::Verdict::unseen);
  const Opinion opinion = OpinionOf(RecordOf(addInt, {noResult, right}), DeviceWith(keeps));
  EXPECT_EQ(opinion.verdict, Opinion::Verdict::right);
  EXPECT_EQ(opinion.lanes, 10);
}

// The power of every base that the low bits of an element can make, against long double, whose own
// error is far below what could move a bound.
TEST(Opinion, BoundsPowersAsTheExactResultDoes) {
  std::uint64_t state = 1;
  for (int n = 0; n < 20000; ++n) {
    state = state * 6364136223846793005U + 1442695040888963407U;
    const auto bits = static_cast<std::int32_t>(state >> 32) >> (n % 31);
    const float base = Converted(bits, Rounding::toNearest);
    const int exponent = 1 + n % 9;
    long double exact = 1;
    for (int i = 0; i < exponent; ++i) exact *= static_cast<long double>(base);
    const auto nearest = static_cast<float>(exact);
    if (std::isinf(nearest) || nearest == 0.0F) continue;
    const RightAnswers answers = Power(base, exponent, Rounding::toNearest, ulpsOfPower);
    ASSERT_EQ(answers.NearestTo(nearest), nearest) << base << ' ' << exponent;
    int binade = 0;
    const long double fraction = std::frexp(std::fabs(exact), &binade);
    const long double ulp = std::ldexp(1.0L, binade - 24 - (fraction == 0.5L ? 1 : 0));
    for (const int steps : {-34, -33, -32, -17, -16, -15, -9, -8, -7, 7, 8, 9, 15, 16, 17}) {
      const auto moved = static_cast<std::int32_t>(std::bit_cast<std::uint32_t>(nearest)) + steps;
      const auto answer = std::bit_cast<float>(moved);
      if (std::isinf(answer) || std::isnan(answer)) continue;
      const long double error = std::fabs(static_cast<long double>(answer) - exact) / ulp;
      ASSERT_EQ(answers.Allow(answer), error <= 16) << base << ' ' << exponent << ' ' << steps;
    }
  }
}

}  // namespace
}  // namespace diagnosis
