// The driver: the probe, the host's rounding mode, the tally.

#include "harness/driver.h"

#include <algorithm>
#include <fstream>
#include <new>
#include <sstream>

#include "tests/devices.h"
#include "tests/fixture.h"

namespace {

class Driver : public SuiteTest {
 protected:
  Driver() { Machine().device = DeviceForAll(); }
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

TEST_F(Driver, TakesTheRoundingModeFromTheFirstDevice) {
  const struct {
    cl_device_fp_config config;
    cl_int code;
    int expected;
  } cases[] = {
      {CL_FP_ROUND_TO_NEAREST | CL_FP_DENORM, CL_SUCCESS, FE_TONEAREST},
      {CL_FP_ROUND_TO_NEAREST, CL_SUCCESS, FE_TONEAREST},
      {~cl_device_fp_config{CL_FP_ROUND_TO_NEAREST}, CL_SUCCESS, FE_TOWARDZERO},
      {0, CL_SUCCESS, FE_TOWARDZERO},
      {CL_FP_ROUND_TO_NEAREST | CL_FP_DENORM, CL_INVALID_VALUE, FE_TOWARDZERO},
  };
  for (const auto& [config, code, expected] : cases) {
    ResetMachine();
    std::fesetround(FE_TONEAREST);
    Machine().platforms = 2;
    Machine().devices = 2;
    Machine().singleFpConfig = config;
    Machine().Fail("clGetDeviceInfo", code);
    Machine().Fail("clCreateContextFromType", CL_DEVICE_NOT_AVAILABLE, 0);
    EXPECT_EQ(Collect(RunSuite).result, 0);
    EXPECT_EQ(std::fegetround(), expected) << config << ", " << code;
    const std::vector<std::string> probe = {"clGetPlatformIDs", "clGetDeviceIDs platform 0 type 4",
                                            "clGetDeviceInfo device 0 4123 size 8"};
    EXPECT_EQ(std::vector(Machine().calls.begin(), Machine().calls.begin() + 3), probe);
  }
}

std::string Summary(int passed) {
  return "TOTAL : 210\nPASSED: " + std::to_string(passed) +
         "\nFAILED: " + std::to_string(210 - passed) + "\n";
}

TEST_F(Driver, RunsTheScheduleInItsOrder) {
  RowsByText();
  ResetRand();
  Machine().device = DeviceForAll();
  const Outcome outcome = Collect(RunSuite);

  // The matrix without power, in the order of its operations.
  std::vector<std::string> expected;
  for (const char* operation : {"add", "copy", "floor", "multiply"}) {
    for (const char* shape :
         {"arrays", "scalar", "vector16", "vector2", "vector3", "vector4", "vector8"}) {
      for (int variant = 1; variant <= 6; ++variant)
        expected.push_back(
            std::string(operation).append("_union_").append(shape).append("_").append(
                std::to_string(variant)));
    }
  }
  std::vector<std::string> order;
  for (const std::string& source : Machine().sources)
    order.push_back(RowsByText().at(source)->name);
  EXPECT_EQ(order, expected);

  EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 1851);
  EXPECT_EQ(outcome.out.find("FAILED!"), std::string::npos);
  EXPECT_TRUE(outcome.out.ends_with(Summary(210)));
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(Machine().launches.size(), 1635U);
  // Ten repetitions of ten elements: 38 lanes a variant, with four draws in add and multiply and
  // two in copy and floor; the five copy rows that run once leave out nine times 20 draws each.
  EXPECT_EQ(Draws(), 100 * 6 * 38 * (4 + 2 + 2 + 4) - 5 * 180);
  EXPECT_EQ(LiveObjects(), 0);
}

// A device that computes in another way than the simulated GPU, from the bytes alone, writes what
// the simulated GPU writes.
TEST_F(Driver, WritesTheGoldenFilesOnTheScriptedDeviceToo) {
  for (const auto& [denormals, file] : {std::pair{Denormals::flushed, "denormals_flushed.txt"},
                                        {Denormals::kept, "denormals_kept.txt"}}) {
    RowsByText();
    ResetMachine();
    ResetRand();
    Machine().device = DeviceForAll(denormals);
    std::ostringstream golden;
    golden << std::ifstream(std::string(GOLDEN_FILES "/") + file).rdbuf();
    EXPECT_EQ(Collect(RunSuite).out, golden.str()) << file;
  }
}

TEST_F(Driver, AnExceptionOtherThanClErrorEndsTheRunWithoutASummary) {
  int launches = 0;
  Machine().device = [&](const Launch& launch) {
    if (++launches == 13) throw std::bad_alloc();
    DeviceForAll()(launch);
  };
  const Outcome outcome = CollectUntilBadAlloc(RunSuite);
  EXPECT_TRUE(outcome.out.ends_with("...\nRUN 1: PASSED\nRUN 2: PASSED\n")) << outcome.out;
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(launches, 13);
  EXPECT_EQ(LiveObjects(), 0);
}

TEST_F(Driver, CountsWhatTheRunnersReturn) {
  Machine().device = [](const Launch& launch) {
    for (std::byte& byte : launch.buffers.back()) byte = std::byte{0x42};
  };
  const Outcome wrong = Collect(RunSuite);
  EXPECT_TRUE(wrong.out.ends_with(Summary(42))) << wrong.out.substr(wrong.out.size() - 40);
  EXPECT_EQ(wrong.result, 0);

  ResetMachine();
  Machine().Fail("clBuildProgram", CL_BUILD_PROGRAM_FAILURE, 0);
  const Outcome unbuilt = Collect(RunSuite);
  EXPECT_EQ(unbuilt.out, Summary(210));
  std::string errors;
  for (int row = 0; row < 168; ++row) errors += "\n\nERROR: clBuildProgram(-11)\n";
  EXPECT_EQ(unbuilt.err, errors);
  EXPECT_EQ(unbuilt.result, 0);
}

}  // namespace
