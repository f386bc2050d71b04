#include "harness/host_floating_point.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <bit>
#include <cfenv>
#include <csignal>
#include <cstdint>
#include <limits>

#if defined(__aarch64__)
static_assert(FE_TONEAREST == 0 && FE_UPWARD == 0x400000 && FE_DOWNWARD == 0x800000 &&
              FE_TOWARDZERO == 0xC00000);
#endif

namespace {

bool inUnknownMode = false;

}  // namespace

// Stands before the C library's, to tell of a rounding mode that no processor here has.
extern "C" int fegetround() noexcept {
  static const auto real = reinterpret_cast<int (*)()>(dlsym(RTLD_NEXT, "fegetround"));
  return inUnknownMode ? -1 : real();
}

namespace {

class HostFloatingPoint : public testing::Test {
 protected:
  HostFloatingPoint() { std::fesetround(FE_TONEAREST); }
  ~HostFloatingPoint() override { std::fesetround(FE_TONEAREST); }
};

TEST_F(HostFloatingPoint, SetHostRoundingSetsEveryEntryOfItsTable) {
  const struct {
    int mode, dataType, expected;
  } cases[] = {
      {0, 0, FE_TOWARDZERO}, {1, 0, FE_TONEAREST},   {2, 0, FE_UPWARD},    {3, 0, FE_DOWNWARD},
      {4, 0, FE_TOWARDZERO}, {0, 6, FE_TONEAREST},   {1, 6, FE_TONEAREST}, {2, 6, FE_UPWARD},
      {3, 6, FE_DOWNWARD},   {4, 6, FE_TOWARDZERO},  {0, 7, FE_TONEAREST}, {0, 5, FE_TOWARDZERO},
      {0, 8, FE_TOWARDZERO}, {0, -1, FE_TOWARDZERO},
  };
  for (const auto& [mode, dataType, expected] : cases) {
    SetHostRounding(mode, dataType);
    EXPECT_EQ(std::fegetround(), expected) << mode << ", " << dataType;
  }
}

TEST_F(HostFloatingPoint, SetHostRoundingReturnsTheModeBefore) {
  EXPECT_EQ(SetHostRounding(4, 6), 1);
  EXPECT_EQ(SetHostRounding(4, 6), 4);
  EXPECT_EQ(SetHostRounding(2, 6), 4);
  EXPECT_EQ(SetHostRounding(3, 6), 2);
  EXPECT_EQ(SetHostRounding(1, 6), 3);
  EXPECT_EQ(SetHostRounding(1, 6), 1);
}

TEST_F(HostFloatingPoint, SetHostRoundingAbortsIfItFindsAnUnknownMode) {
  const auto call = [] {
    inUnknownMode = true;
    SetHostRounding(4, 6);
  };
  EXPECT_EXIT(call(), testing::KilledBySignal(SIGABRT), "");
}

TEST_F(HostFloatingPoint, ForceFlushToZeroLeavesDenormalsAlone) {
  EXPECT_EQ(ForceFlushToZero(), 0);
  volatile float denormal = std::numeric_limits<float>::denorm_min();
  EXPECT_NE(denormal * 1.0F, 0.0F);
  EXPECT_EQ(std::fegetround(), FE_TONEAREST);
}

TEST_F(HostFloatingPoint, FlushDenormalWorksOnBits) {
  const struct {
    std::uint32_t argument, expected;
  } cases[] = {
      {0x00000000, 0x00000000}, {0x80000000, 0x00000000},  // zeros
      {0x00000001, 0x00000000}, {0x80000001, 0x00000000},  // smallest denormals
      {0x007FFFFF, 0x00000000}, {0x807FFFFF, 0x00000000},  // largest denormals
      {0x00800000, 0x00800000}, {0x80800000, 0x80800000},  // FLT_MIN
      {0x3F800000, 0x3F800000}, {0x7F7FFFFF, 0x7F7FFFFF},
      {0x7F800000, 0x7F800000}, {0xFF800000, 0xFF800000},  // infinities
      {0x7FC12345, 0x7FC12345}, {0xFFC00001, 0xFFC00001},  // NaNs
  };
  for (const auto& [argument, expected] : cases) {
    EXPECT_EQ(std::bit_cast<std::uint32_t>(FlushDenormal(std::bit_cast<float>(argument))), expected)
        << std::hex << argument;
  }
}

}  // namespace
