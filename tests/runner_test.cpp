// The life of one test, seen from OpenCL and from the two output streams.

#include <algorithm>
#include <sstream>
#include <tuple>
#include <utility>

#include "add/add_case.h"
#include "harness/rows.h"
#include "tests/devices.h"
#include "tests/fixture.h"

namespace {

constexpr char announcement[] = "Running test add_union_arrays_1...";

class Runner : public SuiteTest {
 protected:
  Runner() { Machine().device = DeviceFor(row); }

  // Device results that are wrong in these launches, in one lane of one element.
  static void SpoilLaunches(const std::vector<int>& launches) {
    Machine().device = DeviceFor(row, [launches](int launch, int element, int lane, float right) {
      const bool spoil = element == 4 && lane == 2 &&
                         std::find(launches.begin(), launches.end(), launch) != launches.end();
      return spoil ? -12.5F : right;
    });
  }

  static const Row& row;
};
const Row& Runner::row = RowNamed("add_union_arrays_1");

TEST_F(Runner, MakesTheseCallsInThisOrder) {
  const Outcome outcome = Collect(RunTest_add_union_arrays_1);
  std::vector<std::string> expected = {
      "clGetPlatformIDs",
      "clGetPlatformIDs",
      "clCreateContextFromType type 4",
      "clGetContextInfo",
      "clGetContextInfo",
      "clGetDeviceInfo device 0 4145 size 8",  // the platform of the device
      "clGetPlatformInfo 2305",                // its version: twice, for the size and for the text
      "clGetPlatformInfo 2305",
      "clCreateProgramWithSource length 4728",
      "clBuildProgram devices 1",
      "clCreateKernel sum",
      "clCreateBuffer flags 4 size 8192",
      "clCreateBuffer flags 4 size 8192",
      "clCreateBuffer flags 2 size 8192",
      "clSetKernelArg 0 size 8 buffer 0",
      "clSetKernelArg 1 size 8 buffer 1",
      "clSetKernelArg 2 size 8 buffer 2",
      "clSetKernelArg 3 size 4 int 10",
  };
  for (int repetition = 1; repetition <= 10; ++repetition) {
    expected.insert(expected.end(), {"clCreateCommandQueue device 0 properties 0",
                                     "clEnqueueWriteBuffer buffer 0 blocking 0 offset 0 size 8192",
                                     "clEnqueueWriteBuffer buffer 1 blocking 0 offset 0 size 8192",
                                     "clEnqueueNDRangeKernel sum global 256",
                                     "clEnqueueReadBuffer buffer 2 blocking 1 offset 0 size 8192"});
  }
  EXPECT_EQ(Machine().WorkCalls(), expected);
  EXPECT_EQ(outcome.out, Lines(announcement, Words(10, "PASSED")));
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.result, 1);
  EXPECT_EQ(Draws(), 1600);
  EXPECT_EQ(LiveObjects(), 0);
}

TEST_F(Runner, SetsTheArgumentsOfOneInputInTheirOrder) {
  const Row& one = RowNamed("floor_union_vector2_1");
  Machine().device = DeviceFor(one);
  Collect(one.run);
  std::vector<std::string> arguments = Machine().WorkCalls();
  std::erase_if(arguments,
                [](const std::string& call) { return !call.starts_with("clSetKernelArg"); });
  EXPECT_EQ(arguments, (std::vector<std::string>{"clSetKernelArg 0 size 8 buffer 0",
                                                 "clSetKernelArg 1 size 8 buffer 1",
                                                 "clSetKernelArg 2 size 4 int 10"}));
}

TEST_F(Runner, ReleasesLastMadeFirst) {
  // Of the test object, and then of the runner.
  const std::vector<std::string> behindTheBuffers = {"clReleaseKernel",  "clReleaseContext",
                                                     "clReleaseProgram", "clReleaseProgram",
                                                     "clReleaseDevice",  "clReleaseContext"};
  for (const auto& [name, buffers] :
       {std::pair{"add_union_arrays_1", 3}, {"floor_union_vector2_1", 2}}) {
    ResetMachine();
    Machine().device = DeviceFor(RowNamed(name));
    Collect(RowNamed(name).run);
    std::vector<std::string> expected;
    for (int buffer = buffers; buffer-- > 0;)
      expected.push_back("clReleaseMemObject buffer " + std::to_string(buffer));
    expected.insert(expected.end(), behindTheBuffers.begin(), behindTheBuffers.end());
    const auto count = static_cast<std::ptrdiff_t>(expected.size());
    const std::vector<std::string> ends(Machine().calls.end() - count, Machine().calls.end());
    EXPECT_EQ(ends, expected) << name;
  }
}

TEST_F(Runner, MakesAndFreesTheHostArraysInTheirOrder) {
  for (const auto& [name, stride, inputs] : {std::tuple{"multiply_union_arrays_2", 32U, 2U},
                                             {"add_union_vector16_5", 64U, 2U},
                                             {"copy_union_vector3_4", 32U, 1U},
                                             {"power_union_vector16_1", 64U, 1U}}) {
    SCOPED_TRACE(name);
    ResetMachine();
    Machine().device = DeviceFor(RowNamed(name));
    const HostArrays arrays = Collect(RowNamed(name).run).hostArrays;
    // The inputs, which are written; the device's results, which are read; the references.
    std::vector<std::size_t> sizes(inputs + 1, std::size_t{256} * stride);
    sizes.push_back(std::size_t{10} * stride);
    EXPECT_EQ(arrays.sizes, sizes);
    EXPECT_EQ(arrays.freed, arrays.made);
    ASSERT_EQ(Machine().hostEnds.size(), 10 * (inputs + 1));
    for (std::size_t i = 0; i < Machine().hostEnds.size(); ++i)
      EXPECT_EQ(Machine().hostEnds[i], arrays.made.at(i % (inputs + 1)));
  }
}

TEST_F(Runner, ReleasesTheQueueOfEachRepetitionBeforeTheNext) {
  Collect(RunTest_add_union_arrays_1);
  int alive = 0;
  for (const std::string& call : Machine().calls) {
    if (call.starts_with("clCreateCommandQueue")) ++alive;
    if (call.starts_with("clReleaseCommandQueue")) --alive;
    EXPECT_LE(alive, 1);
  }
  EXPECT_EQ(Machine().Count("clReleaseCommandQueue"), 10);
}

// These calls came with 1.2, and an older platform may have nothing in their place.
TEST_F(Runner, RetainsNoDeviceOfAPlatformOlderThan12) {
  for (const auto& [version, devices] : {std::pair{"OpenCL 1.0 a", 0},
                                         {"OpenCL 1.1 b", 0},
                                         {"OpenCL 1.2 c", 2},
                                         {"OpenCL 3.0 d", 2}}) {
    SCOPED_TRACE(version);
    ResetMachine();
    Machine().platformVersion = version;
    Machine().devices = 2;
    Machine().device = DeviceFor(row);
    const Outcome outcome = Collect(RunTest_add_union_arrays_1);
    EXPECT_EQ(outcome.out, Lines(announcement, Words(10, "PASSED")));
    EXPECT_EQ(Machine().Count("clRetainDevice"), devices);
    EXPECT_EQ(Machine().Count("clReleaseDevice"), devices);
    EXPECT_EQ(LiveObjects(), 0);
  }
}

// The three forms of repetition, on test objects of one class.
class LocalCase : public AddCase<Arrays<cl_int>> {
 public:
  using AddCase::AddCase;
  static inline const char* kernelSource = KernelText<Operation::add, Layout>;
  static constexpr char announcement[] = "local";
  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};
int RunCumulative() { return RunTest<LocalCase>(Cumulative(10)); }
int RunPerRepetition() { return RunTest<LocalCase>(PerRepetition(9)); }
int RunOneRun() { return RunTest<LocalCase>(OneRun(10)); }

TEST_F(Runner, RepeatsInTheFormOfTheRow) {
  const std::string p = "PASSED";
  const std::string f = "FAILED!";
  const struct {
    const char* description;
    int (*run)();
    std::vector<int> spoiled;
    std::vector<std::string> words;
    int launches, result;
  } cases[] = {
      {"cumulative, all pass", RunCumulative, {}, Words(10, p), 10, 1},
      {"cumulative, first fails", RunCumulative, {1}, Words(10, f), 10, 0},
      {"cumulative, third fails", RunCumulative, {3}, {p, p, f, f, f, f, f, f, f, f}, 10, 0},
      {"cumulative, last fails", RunCumulative, {10}, {p, p, p, p, p, p, p, p, p, f}, 10, 0},
      {"each for itself, all pass", RunPerRepetition, {}, Words(9, p), 9, 1},
      {"each for itself, first fails", RunPerRepetition, {1}, {f, p, p, p, p, p, p, p, p}, 9, 0},
      {"each for itself, two fail", RunPerRepetition, {2, 9}, {p, f, p, p, p, p, p, p, f}, 9, 0},
      {"one run, passes", RunOneRun, {2}, Words(10, p), 1, 1},
      {"one run, fails", RunOneRun, {1}, Words(10, f), 1, 0},
  };
  for (const auto& [description, run, spoiled, words, launches, result] : cases) {
    SCOPED_TRACE(description);
    ResetMachine();
    ResetRand();
    SpoilLaunches(spoiled);
    const Outcome outcome = Collect(run);
    // A mismatch line stands before the RUN line of its repetition.
    std::string lines = "local\n";
    std::istringstream written(outcome.out);
    std::string line;
    std::getline(written, line);
    EXPECT_EQ(line, "local");
    for (int repetition = 1; repetition <= static_cast<int>(words.size()); ++repetition) {
      std::getline(written, line);
      if (std::find(spoiled.begin(), spoiled.end(), repetition) != spoiled.end() &&
          repetition <= launches) {
        EXPECT_TRUE(line.starts_with("  c:") && line.ends_with(" ocl:-12.5")) << line;
        std::getline(written, line);
      }
      EXPECT_EQ(line, "RUN " + std::to_string(repetition) + ": " +
                          words[static_cast<std::size_t>(repetition - 1)]);
    }
    EXPECT_FALSE(std::getline(written, line)) << line;
    EXPECT_EQ(Machine().Count("clEnqueueNDRangeKernel"), launches);
    EXPECT_EQ(Draws(), 160 * launches);
    EXPECT_EQ(outcome.result, result);
    EXPECT_EQ(outcome.err, "");
  }
}

// A test of another number of elements, all of which it fills and compares.
template <int count>
class Counted : public LocalCase {
 public:
  Counted(const cl::Program& program, const cl::Context& context, std::vector<cl::Device>* devices,
          int /*numElements*/)
      : LocalCase(program, context, devices, count) {}
};
template <int count>
int RunCounted() {
  return RunTest<Counted<count>>(OneRun(1));
}

TEST_F(Runner, RoundsTheElementCountUpToWholeWorkGroups) {
  const struct {
    int (*run)();
    int count, globalSize;
  } cases[] = {
      {RunCounted<0>, 0, 0},       {RunCounted<1>, 1, 256},     {RunCounted<255>, 255, 256},
      {RunCounted<256>, 256, 256}, {RunCounted<257>, 257, 512}, {RunCounted<512>, 512, 512},
  };
  for (const auto& [run, count, globalSize] : cases) {
    SCOPED_TRACE(count);
    ResetMachine();
    Machine().device = [](const Launch& launch) {
      for (std::byte& byte : launch.buffers.back()) byte = std::byte{0x42};
    };
    const Outcome outcome = Collect(run);
    const auto size = static_cast<std::size_t>(globalSize) * 32;
    EXPECT_EQ(outcome.hostArrays.sizes,
              (std::vector<std::size_t>{size, size, size, static_cast<std::size_t>(count) * 32}));
    ASSERT_EQ(Machine().launches.size(), 1U);
    EXPECT_EQ(Machine().launches[0].globalSize, static_cast<std::size_t>(globalSize));
    EXPECT_EQ(Machine().launches[0].numElements, count);
    EXPECT_EQ(outcome.draws, 16 * count);
    EXPECT_EQ(outcome.result, count == 0 ? 1 : 0);
  }
}

TEST_F(Runner, RunsOnTheFirstOfSeveralPlatforms) {
  // The scripted OpenCL holds the context to its first platform.
  Machine().platforms = 3;
  EXPECT_EQ(Collect(RunTest_add_union_arrays_1).out, Lines(announcement, Words(10, "PASSED")));
}

TEST_F(Runner, WithoutPlatformsTheTestFails) {
  Machine().platforms = 0;
  const Outcome outcome = Collect(RunTest_add_union_arrays_1);
  EXPECT_EQ(outcome.result, 0);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "Failed to find any platforms.\n");
}

TEST_F(Runner, WithoutATextTheTestFailsOnceTheDevicesAreKnown) {
  const char* const text = std::exchange(LocalCase::kernelSource, nullptr);
  const Outcome outcome = Collect(RunCumulative);
  LocalCase::kernelSource = text;
  EXPECT_EQ(outcome.result, 0);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "OpenCL program not found.\n");
  EXPECT_EQ(Machine().Count("clGetContextInfo"), 2);
  EXPECT_EQ(Machine().Count("clCreateProgramWithSource"), 0);
  EXPECT_EQ(LiveObjects(), 0);
}

TEST_F(Runner, AFailingBuildWritesTheLogOfEachDevice) {
  Machine().devices = 2;
  Machine().buildLogs = {"first log\nof two lines", std::string("second\0hidden", 13)};
  Machine().Fail("clBuildProgram", CL_BUILD_PROGRAM_FAILURE);
  const Outcome outcome = Collect(RunTest_add_union_arrays_1);
  EXPECT_EQ(outcome.result, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err,
            "first log\nof two lines\n\n"
            "second\n\n"
            "ERROR: clBuildProgram(-11)\n");
  EXPECT_EQ(outcome.aliveAtError, 0);
}

TEST_F(Runner, AFailingLogQueryTakesTheBuildErrorsPlace) {
  Machine().devices = 2;
  Machine().buildLogs = {"first", "second"};
  Machine().Fail("clBuildProgram", CL_BUILD_PROGRAM_FAILURE);
  Machine().Fail("clGetProgramBuildInfo", CL_OUT_OF_RESOURCES, 3);
  const Outcome outcome = Collect(RunTest_add_union_arrays_1);
  EXPECT_EQ(outcome.result, 1);
  EXPECT_EQ(outcome.err, "first\n\nERROR: clGetProgramBuildInfo(-5)\n");
  EXPECT_EQ(LiveObjects(), 0);
}

TEST_F(Runner, BuildsForAllDevicesAndRunsOnTheFirst) {
  Machine().devices = 2;
  const Outcome outcome = Collect(RunTest_add_union_arrays_1);
  EXPECT_EQ(outcome.result, 1);
  const auto calls = Machine().WorkCalls();
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "clBuildProgram devices 2"), 1);
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "clCreateCommandQueue device 0 properties 0"),
            10);
}

TEST_F(Runner, AFailingCallEndsTheTestWithTheResultItHad) {
  const struct {
    const char* entryPoint;
    int occurrence, code;
    std::vector<int> spoiled;
    const char* error;
    int runLines, result;
  } cases[] = {
      {"clGetPlatformIDs", 1, -1001, {}, "clGetPlatformIDs(-1001)", -1, 1},
      {"clCreateContextFromType", 1, -2, {}, "clCreateContextFromType(-2)", -1, 1},
      {"clGetContextInfo", 2, -5, {}, "clGetContextInfo(-5)", -1, 1},
      {"clCreateProgramWithSource", 1, -6, {}, "clCreateProgramWithSource(-6)", -1, 1},
      {"clRetainProgram", 1, -44, {}, "Retain Object(-44)", 0, 1},
      {"clRetainContext", 1, -34, {}, "Retain Object(-34)", 0, 1},
      {"clCreateKernel", 1, -46, {}, "clCreateKernel(-46)", 0, 1},
      {"clCreateBuffer", 3, -61, {}, "clCreateBuffer(-61)", 0, 1},
      {"clSetKernelArg", 4, -51, {}, "clSetKernelArg(-51)", 0, 1},
      {"clCreateCommandQueue", 1, -6, {}, "clCreateCommandQueue(-6)", 0, 1},
      {"clEnqueueWriteBuffer", 4, -4, {}, "clEnqueueWriteBuffer(-4)", 1, 1},
      {"clEnqueueNDRangeKernel", 5, -54, {}, "clEnqueueNDRangeKernel(-54)", 4, 1},
      {"clEnqueueNDRangeKernel", 5, -54, {2}, "clEnqueueNDRangeKernel(-54)", 4, 0},
      {"clEnqueueReadBuffer", 10, -5, {}, "clEnqueueReadBuffer(-5)", 9, 1},
  };
  for (const auto& [entryPoint, occurrence, code, spoiled, error, runLines, result] : cases) {
    SCOPED_TRACE(error);
    ResetMachine();
    SpoilLaunches(spoiled);
    Machine().Fail(entryPoint, code, occurrence);
    const Outcome outcome = Collect(RunTest_add_union_arrays_1);
    EXPECT_EQ(outcome.err, "ERROR: " + std::string(error) + "\n");
    EXPECT_EQ(outcome.result, result);
    EXPECT_EQ(outcome.out.starts_with(announcement), runLines >= 0);
    const auto lines = std::count(outcome.out.begin(), outcome.out.end(), '\n');
    EXPECT_EQ(lines, 1 + runLines + static_cast<int>(spoiled.size()));
    EXPECT_EQ(outcome.aliveAtError, 0);
    EXPECT_EQ(LiveObjects(), 0);
  }
}

TEST_F(Runner, AFailingReleaseIsNobodysError) {
  for (const char* entryPoint : {"clReleaseCommandQueue", "clReleaseMemObject", "clReleaseKernel",
                                 "clReleaseProgram", "clReleaseContext", "clReleaseDevice"}) {
    SCOPED_TRACE(entryPoint);
    ResetMachine();
    Machine().device = DeviceFor(row);
    Machine().Fail(entryPoint, CL_OUT_OF_HOST_MEMORY, 0);
    const Outcome outcome = Collect(RunTest_add_union_arrays_1);
    EXPECT_EQ(outcome.out, Lines(announcement, Words(10, "PASSED")));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.result, 1);
  }
}

TEST_F(Runner, AnyOtherExceptionPassesThrough) {
  // Out of the build it takes the logs along.
  for (const auto& [entryPoint, out, err] :
       {std::tuple{"clBuildProgram", "", "first\n\nsecond\n\n"},
        {"clCreateContextFromType", "", ""},
        {"clEnqueueReadBuffer", "Running test add_union_arrays_1...\n", ""}}) {
    SCOPED_TRACE(entryPoint);
    ResetMachine();
    Machine().devices = 2;
    Machine().buildLogs = {"first", "second"};
    Machine().Throw(entryPoint);
    const Outcome outcome = CollectUntilBadAlloc(RunTest_add_union_arrays_1);
    EXPECT_EQ(outcome.out, out);
    EXPECT_EQ(outcome.err, err);
    EXPECT_EQ(LiveObjects(), 0);
  }
}

}  // namespace
