// Every OpenCL call in the life of a test fails once.

#include <algorithm>
#include <map>
#include <set>

#include "harness/driver.h"
#include "tests/devices.h"
#include "tests/fixture.h"

namespace {

class FailingCalls : public SuiteTest {};

constexpr cl_int code = -9999;

std::string EntryPoint(const std::string& call) { return call.substr(0, call.find(' ')); }

int CountBefore(const std::vector<std::string>& calls, std::size_t end, const std::string& name) {
  return static_cast<int>(
      std::count_if(calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(end),
                    [&](const std::string& call) { return EntryPoint(call) == name; }));
}

// A device that is wrong in the first repetition if `mismatch`, and right in all others.
Device DeviceWith(const Row& row, bool mismatch) {
  return DeviceFor(row, [mismatch](int launch, int element, int, float right) {
    return mismatch && launch == 1 && element == 0 ? -0.25F : right;
  });
}

// What must come of the failure of call `failed` in a test whose calls and lines, all being well,
// are those of `good`.
void Check(const Row& row, bool mismatch, const std::vector<std::string>& calls, std::size_t failed,
           const Outcome& good, const Outcome& outcome) {
  const std::string name = EntryPoint(calls[failed]);
  EXPECT_EQ(LiveObjects(), 0);
  if (name.starts_with("clRelease")) {
    EXPECT_EQ(outcome.out, good.out);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.result, good.result);
    EXPECT_EQ(outcome.draws, good.draws);
    EXPECT_EQ(outcome.hostArrays.Alive(), 0);
    return;
  }
  const std::string shown = name.starts_with("clRetain") ? "Retain Object" : name;
  std::string error = "ERROR: " + shown + "(" + std::to_string(code) + ")\n";
  if (name == "clBuildProgram") error = "the log\n\n" + error;
  EXPECT_EQ(outcome.err, error);
  EXPECT_EQ(outcome.aliveAtError, 0);

  // A repetition has been reported once its queue is gone, and has drawn before it asks for one.
  const bool announced = CountBefore(calls, failed, "clBuildProgram") > 0;
  const int reported = CountBefore(calls, failed, "clReleaseCommandQueue");
  const int drawn = CountBefore(calls, failed + 1, "clCreateCommandQueue");
  const int lines = announced ? 1 + reported + (mismatch && reported > 0 ? 1 : 0) : 0;
  EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), lines);
  EXPECT_TRUE(good.out.starts_with(outcome.out)) << outcome.out;
  EXPECT_EQ(outcome.draws, drawn * DrawsPerRun(row));
  EXPECT_EQ(outcome.result, mismatch && reported > 0 ? 0 : 1);
  const bool allocated = CountBefore(calls, failed, "clCreateKernel") > 0;
  EXPECT_EQ(outcome.hostArrays.Alive(), allocated ? (row.twoInputs ? 4 : 3) : 0);
}

TEST_F(FailingCalls, EachCallAtItsFirstMiddleAndLastOccurrence) {
  // Each object form, and each form of repetition.
  for (const char* test : {"add_union_arrays_1", "multiply_union_vector16_5", "copy_union_scalar_2",
                           "copy_union_scalar_1", "power_union_vector3_4"}) {
    const Row& row = RowNamed(test);
    for (const bool mismatch : {false, true}) {
      const auto run = [&] {
        ResetRand();
        Machine().device = DeviceWith(row, mismatch);
        Machine().buildLogs = {"the log"};
        return Collect(row.run);
      };
      ResetMachine();
      const Outcome good = run();
      EXPECT_EQ(good.result, mismatch ? 0 : 1);
      EXPECT_EQ(good.hostArrays.Alive(), 0);
      const std::vector<std::string> calls = Machine().calls;

      std::map<std::string, std::vector<std::size_t>> occurrences;
      for (std::size_t i = 0; i < calls.size(); ++i) occurrences[EntryPoint(calls[i])].push_back(i);
      EXPECT_EQ(occurrences.size(), 23U);
      // With these the bindings ask for the version of a device's platform, and rely on an answer.
      occurrences.erase("clGetDeviceInfo");
      occurrences.erase("clGetPlatformInfo");
      for (const auto& [name, at] : occurrences) {
        for (const std::size_t which : std::set<std::size_t>{0, at.size() / 2, at.size() - 1}) {
          SCOPED_TRACE(std::string(test) + (mismatch ? " after a mismatch" : "") + ", " + name +
                       " " + std::to_string(which + 1) + " of " + std::to_string(at.size()));
          ResetMachine();
          Machine().Fail(name, code, static_cast<int>(which) + 1);
          Check(row, mismatch, calls, at[which], good, run());
        }
      }
    }
  }
}

TEST_F(FailingCalls, FaultsInSeveralTestsOfOneRun) {
  Machine().device = DeviceForAll();
  const Outcome good = Collect(RunSuite);

  // The context of the second test, the kernel of the fourth, one launch of the tenth, and a wrong
  // answer to every launch of the last.
  ResetMachine();
  ResetRand();
  Machine().Fail("clCreateContextFromType", CL_OUT_OF_RESOURCES, 2);
  Machine().Fail("clCreateKernel", CL_INVALID_KERNEL_NAME, 3);
  Machine().Fail("clEnqueueNDRangeKernel", CL_OUT_OF_RESOURCES, 75);
  Machine().device = [](const Launch& launch) {
    const Row& row = *RowsByText().at(launch.source);
    const bool last = row.name == "multiply_union_vector8_6";
    DeviceFor(row, [last](int, int, int, float right) { return last ? 0.25F : right; })(launch);
  };
  const Outcome outcome = Collect(RunSuite);
  EXPECT_EQ(outcome.err,
            "ERROR: clCreateContextFromType(-5)\n"
            "ERROR: clCreateKernel(-46)\n"
            "ERROR: clEnqueueNDRangeKernel(-5)\n");
  EXPECT_TRUE(outcome.out.ends_with("RUN 10: FAILED!\nTOTAL : 210\nPASSED: 209\nFAILED: 1\n"));
  EXPECT_EQ(outcome.out.find("add_union_arrays_2..."), std::string::npos);
  EXPECT_NE(outcome.out.find("add_union_arrays_4...\nRunning test add_union_arrays_5...\n"),
            std::string::npos);
  EXPECT_NE(outcome.out.find("add_union_scalar_4...\nRUN 1: PASSED\nRUN 2: PASSED\nRUN 3: PASSED\n"
                             "RUN 4: PASSED\nRunning test add_union_scalar_5...\n"),
            std::string::npos);
  // The tests that were cut short drew less: ten repetitions of 160 each twice, and five of 40.
  EXPECT_EQ(good.draws - outcome.draws, 2 * 1600 + 5 * 40);
  EXPECT_EQ(LiveObjects(), 0);
}

}  // namespace
