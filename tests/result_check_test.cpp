// The verdict on single values, through the real row add_union_arrays_1.

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "harness/rows.h"
#include "tests/devices.h"
#include "tests/fixture.h"

namespace {

constexpr char announcement[] = "Running test add_union_arrays_1...";

class ResultCheck : public SuiteTest {
 protected:
  // The outcome if the device's value of one lane in the first repetition is `d`.
  static Outcome WithValue(int element, int lane, float d) {
    ResetMachine();
    Machine().device = DeviceFor(row, [=](int launch, int i, int j, float right) {
      return launch == 1 && i == element && j == lane ? d : right;
    });
    return Collect(row.run);
  }

  static const Row& row;
};
const Row& ResultCheck::row = RowNamed("add_union_arrays_1");

std::string FirstLineAfterAnnouncement(const Outcome& outcome) {
  std::istringstream lines(outcome.out);
  std::string line;
  std::getline(lines, line);
  EXPECT_EQ(line, announcement);
  std::getline(lines, line);
  return line;
}

TEST_F(ResultCheck, AcceptsTwoUnitsInTheLastPlaceAroundTheReference) {
  const struct {
    std::uint32_t d;
    const char* line;
  } cases[] = {
      {0x4E932D68, "RUN 1: PASSED"},  // 1234613248.0, the reference
      {0x4E932D66, "RUN 1: PASSED"},
      {0x4E932D6A, "RUN 1: PASSED"},
      {0xCE932D66, "RUN 1: PASSED"},  // only magnitudes count
      {0xCE932D6A, "RUN 1: PASSED"},
      {0x4E932D65, "  c:1.23461e+09 ocl:1.23461e+09"},
      {0x4E932D6B, "  c:1.23461e+09 ocl:1.23461e+09"},
      {0xCE932D6B, "  c:1.23461e+09 ocl:-1.23461e+09"},
      {0x41414000, "  c:1.23461e+09 ocl:12.0781"},
      {0x00000000, "  c:1.23461e+09 ocl:0"},
      {0x7F800000, "  c:1.23461e+09 ocl:inf"},
      {0xFF800000, "  c:1.23461e+09 ocl:-inf"},
      {0x7FC00000, "RUN 1: PASSED"},  // a NaN compares false with everything
      {0xFF800001, "RUN 1: PASSED"},
  };
  for (const auto& [d, line] : cases) {
    ResetRand();
    ScriptRand({7, 1234567, 9, 3});
    const Outcome outcome = WithValue(0, 0, std::bit_cast<float>(d));
    EXPECT_EQ(FirstLineAfterAnnouncement(outcome), line) << std::hex << d;
  }
}

TEST_F(ResultCheck, AroundZeroOnlyTheUpperBoundCounts) {
  for (const auto& [d, passes] : {std::pair{0x00000002U, true},
                                  {0x80000002U, true},
                                  {0x00000003U, false},
                                  {0x80000003U, false},
                                  {0x00800000U, false}}) {
    ResetRand();
    ScriptRand({0, 0, 0, 0});
    const Outcome outcome = WithValue(0, 0, std::bit_cast<float>(d));
    EXPECT_EQ(FirstLineAfterAnnouncement(outcome) == "RUN 1: PASSED", passes) << std::hex << d;
  }
}

TEST_F(ResultCheck, LooksAtEveryLaneOfTheTenElementsAndReportsTheFirst) {
  for (const auto& [element, lane] : {std::pair{0, 0}, {0, 3}, {9, 0}, {9, 3}}) {
    ResetRand();
    EXPECT_EQ(WithValue(element, lane, -0.5F).result, 0) << element << ", " << lane;
  }
  ResetRand();
  ResetMachine();
  Machine().device = DeviceFor(row, [](int launch, int element, int lane, float right) {
    if (launch != 1 || element < 3 || (element == 3 && lane < 2)) return right;
    return static_cast<float>(100 * element + lane);
  });
  const Outcome outcome = Collect(row.run);
  EXPECT_TRUE(FirstLineAfterAnnouncement(outcome).ends_with(" ocl:302"));
  EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 12);
}

TEST_F(ResultCheck, LooksAtNothingBehindTheTenElements) {
  Machine().device = [](const Launch& launch) {
    DeviceFor(row)(launch);
    const auto behind = launch.buffers.back().subspan(10 * row.stride);
    std::fill(behind.begin(), behind.end(), std::byte{0x7F});
    for (std::size_t element = 0; element < 10; ++element) {
      const auto tail = launch.buffers.back().subspan(element * row.stride + 16, 16);
      std::fill(tail.begin(), tail.end(), std::byte{0x7F});
    }
  };
  EXPECT_EQ(Collect(row.run).out, Lines(announcement, Words(10, "PASSED")));
}

TEST_F(ResultCheck, ComputesTheReferenceInTheHostsRoundingMode) {
  for (const int mode : {FE_TONEAREST, FE_TOWARDZERO, FE_UPWARD, FE_DOWNWARD}) {
    ResetRand();
    ResetMachine();
    std::fesetround(mode);
    Machine().device = DeviceFor(row);
    EXPECT_EQ(Collect(row.run).out, Lines(announcement, Words(10, "PASSED"))) << mode;
  }
  // 1234613304 lies between two floats, whose last bytes are 68 and 69, and so does its sum with 3:
  // upward the reference ends in 6A, to nearest and toward zero in 68.
  for (const auto& [mode, d, passes] : {std::tuple{FE_TONEAREST, 0x4E932D65U, false},
                                        {FE_TOWARDZERO, 0x4E932D65U, false},
                                        {FE_UPWARD, 0x4E932D6BU, true},
                                        {FE_TONEAREST, 0x4E932D6BU, false},
                                        {FE_UPWARD, 0x4E932D66U, false}}) {
    ResetRand();
    std::fesetround(mode);
    ScriptRand({7, 1234567, 9, 3});
    const Outcome outcome = WithValue(0, 0, std::bit_cast<float>(d));
    EXPECT_EQ(FirstLineAfterAnnouncement(outcome) == "RUN 1: PASSED", passes)
        << mode << std::hex << " " << d;
  }
}

}  // namespace
