// The driver: the probe, the host's rounding mode, the tally.

#include "harness/driver.h"

#include "tests/fixture.h"
#include "tests/rows.h"

namespace {

class Driver : public SuiteTest {
 protected:
  Driver() { Machine().device = DeviceFor(RowNamed("add_union_arrays_1")); }
};

TEST_F(Driver, WithoutAGpuThereIsNoOutput) {
  for (const char* entryPoint : {"clGetPlatformIDs", "clGetDeviceIDs"}) {
    ResetMachine();
    Machine().Fail(entryPoint, CL_DEVICE_NOT_FOUND);
    const Outcome outcome = Collect(RunSuite);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.out + outcome.err, "");
    EXPECT_EQ(Machine().calls.back().substr(0, std::string(entryPoint).size()), entryPoint);
  }
}

TEST_F(Driver, TakesTheRoundingModeFromTheDevice) {
  const struct {
    cl_device_fp_config config;
    cl_int code;
    int expected;
  } cases[] = {
      {CL_FP_ROUND_TO_NEAREST | CL_FP_DENORM, CL_SUCCESS, FE_TONEAREST},
      {CL_FP_ROUND_TO_NEAREST, CL_SUCCESS, FE_TONEAREST},
      {CL_FP_DENORM | CL_FP_ROUND_TO_ZERO, CL_SUCCESS, FE_TOWARDZERO},
      {0, CL_SUCCESS, FE_TOWARDZERO},
      {CL_FP_ROUND_TO_NEAREST | CL_FP_DENORM, CL_INVALID_VALUE, FE_TOWARDZERO},
  };
  for (const auto& [config, code, expected] : cases) {
    ResetMachine();
    std::fesetround(FE_TONEAREST);
    Machine().singleFpConfig = config;
    Machine().Fail("clGetDeviceInfo", code);
    Machine().Fail("clCreateContextFromType", CL_DEVICE_NOT_AVAILABLE, 0);
    EXPECT_EQ(Collect(RunSuite).result, 0);
    EXPECT_EQ(std::fegetround(), expected) << config << ", " << code;
    const std::vector<std::string> probe = {"clGetPlatformIDs", "clGetDeviceIDs type 4",
                                            "clGetDeviceInfo 4123 size 8"};
    EXPECT_EQ(std::vector(Machine().calls.begin(), Machine().calls.begin() + 3), probe);
  }
}

}  // namespace
