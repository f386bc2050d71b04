// What is told of a program that is run in a worker, on a driver that may not be well, or given to
// a compiler.

#include <gtest/gtest.h>

#include <cstdlib>
#include <deque>
#include <string>
#include <vector>

#include "common/workers/jobs.h"
#include "exploration/execution/device.h"
#include "exploration/execution/events.h"
#include "exploration/execution/outcome.h"
#include "exploration/execution/runner.h"

namespace exploration {
namespace {

using Kind = Outcome::Kind;

/// Two work-items, each of which adds one to its input.
RunnableProgram Increment() {
  RunnableProgram program;
  program.text =
      "__kernel void test(__global const long *in, __global long *out)\n"
      "{\n  out[get_global_id(0)] = in[get_global_id(0)] + 1L;\n}\n";
  program.globalSize = 2;
  RunnableBuffer in{"in", std::vector<std::uint8_t>(16), false, {}, {}, {}};
  in.bytes[0] = 4;
  in.bytes[8] = 6;
  RunnableBuffer out{"out", std::vector<std::uint8_t>(16, 0xA5), true, {}, {}, {}};
  out.expected.assign(16, 0);
  out.expected[0] = 5;
  out.expected[8] = 7;
  out.known.assign(16, 0xFF);
  out.customary.assign(16, 0);
  program.buffers = {in, out};
  return program;
}

Task TaskOf(const std::string& text) {
  Task task;
  task.program = Increment();
  if (!text.empty()) task.program.text = text;
  return task;
}

class Execution : public testing::Test {
 protected:
  Execution() {
    setenv("OCL_ICD_VENDORS", SIMULATED_DRIVER, 1);
    setenv("OPENCL_LAYERS", SIMULATED_GPU ":" BAD_DRIVER, 1);
    setenv("BAD_DRIVER", "none@nowhere", 1);
    // A sanitizer in the worker leaves the driver's signals alone.
    setenv("ASAN_OPTIONS", "handle_segv=0:handle_abort=0:detect_leaks=0", 1);
    options_.protocol = deviceRunner.protocol;
  }
  ~Execution() override {
    for (const char* name :
         {"OCL_ICD_VENDORS", "OPENCL_LAYERS", "BAD_DRIVER", "ASAN_OPTIONS", "COMPILERS_ONLY"})
      unsetenv(name);
  }

  void UseCompilers() {
    setenv("COMPILERS_ONLY", "1", 1);
    options_.protocol = compilerRunner.protocol;
  }

  std::vector<Outcome> RunAll(const std::vector<Task>& tasks) {
    std::vector<Outcome> outcomes(tasks.size());
    std::size_t given = 0;
    workers::PoolListener listener;
    listener.next = [&]() -> std::optional<workers::Job> {
      if (given == tasks.size()) return std::nullopt;
      workers::Job job{given, Packed(tasks[given]), tasks[given].seconds, false};
      ++given;
      return job;
    };
    listener.device = [this](const std::string& said) { device_ = said; };
    listener.ended = [&](const workers::Job& job, const workers::Answer& answer) {
      outcomes.at(job.number) = Judged(tasks.at(job.number), answer);
      return workers::Afterwards::keepRunner;
    };
    EXPECT_EQ(workers::RunJobs(options_, listener).kind, workers::PoolEnd::Kind::finished);
    return outcomes;
  }

  workers::PoolOptions options_;
  std::string device_;
};

TEST_F(Execution, TellsWhatDeviceThereIs) {
  RunAll({TaskOf("")});
  const Device device = DeviceFrom(device_);
  EXPECT_EQ(device.platform, "Oclgrind");
  EXPECT_NE(device.driverVersion, "");
  EXPECT_TRUE(device.hasDouble);
  EXPECT_GE(device.maxWorkGroupSize, 2U);
  EXPECT_NE(device.singleFpConfig, 0U);
  EXPECT_THROW(DeviceFrom("{}"), std::runtime_error);
}

TEST_F(Execution, JudgesWhatIsAnswered) {
  Task otherwise = TaskOf("");
  otherwise.program.buffers[1].expected[8] = 8;
  Task unknown = otherwise;
  unknown.program.buffers[1].known[8] = 0;
  unknown.program.buffers[1].customary[8] = 0xFF;
  const Task untouched =
      TaskOf("__kernel void test(__global const long *in, __global long *out) {}");
  const Task refused = TaskOf("__kernel void test() { int x = y; }");
  const Task noKernel = TaskOf("__kernel void other() {}");
  Task defined = TaskOf(
      "__kernel void test(__global const long *in, __global long *out)"
      "{ out[get_global_id(0)] = in[get_global_id(0)] + STEP; }");
  defined.buildOptions = "-DSTEP=1";
  const std::vector<Task> tasks = {TaskOf(""), otherwise, unknown, untouched,
                                   refused,    noKernel,  defined};
  const std::vector<Outcome> outcomes = RunAll(tasks);
  const Kind expected[] = {Kind::right,   Kind::wrongAnswer, Kind::right, Kind::wrongAnswer,
                           Kind::refused, Kind::callFailed,  Kind::right};
  for (std::size_t i = 0; i < tasks.size(); ++i)
    EXPECT_EQ(outcomes[i].kind, expected[i]) << i << ": " << Told(outcomes[i]) << outcomes[i].text;

  const std::vector<Difference> differences = DifferencesOf(otherwise.program, outcomes[1]);
  ASSERT_EQ(differences.size(), 1U);
  EXPECT_EQ(differences[0].offset, 8U);
  EXPECT_EQ(differences[0].expected, 8);
  EXPECT_EQ(differences[0].actual, 7);
  EXPECT_TRUE(DifferencesOf(unknown.program, outcomes[2]).empty());
  EXPECT_EQ(DifferencesOf(unknown.program, outcomes[2], true).size(), 1U);
  EXPECT_EQ(outcomes[3].answers.at(0), std::vector<std::uint8_t>(16, 0xA5));
  EXPECT_NE(outcomes[4].text.find("undeclared identifier 'y'"), std::string::npos);
  EXPECT_EQ(Told(outcomes[4]), "clBuildProgram fails with CL_BUILD_PROGRAM_FAILURE (-11)");
  EXPECT_EQ(Told(outcomes[5]), "clCreateKernel fails with CL_INVALID_KERNEL_NAME (-46)");
}

// And the programs behind it are run as if nothing had been.
TEST_F(Execution, TellsInWhichCallADriverFails) {
  struct {
    const char* fault;
    Kind kind;
    const char* told;
  } const cases[] = {
      {"segv@clBuildProgram#2", Kind::crashed, "a crash (SIGSEGV) in clBuildProgram"},
      {"abort@clEnqueueNDRangeKernel#3", Kind::crashed,
       "a crash (SIGABRT) in clEnqueueNDRangeKernel"},
      {"exit 3@clCreateKernel#2", Kind::crashed,
       "the process ends with status 3 in clCreateKernel"},
      {"hang@clBuildProgram#2", Kind::hung, "a hang in clBuildProgram"},
      {"error@clSetKernelArg#3", Kind::callFailed,
       "clSetKernelArg fails with CL_OUT_OF_RESOURCES (-5)"},
      {"error@clBuildProgram#2", Kind::refused,
       "clBuildProgram fails with CL_OUT_OF_RESOURCES (-5)"},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(expected.fault);
    setenv("BAD_DRIVER", expected.fault, 1);
    Task task = TaskOf("");
    if (expected.kind == Kind::hung) task.seconds = 1;
    const std::vector<Outcome> outcomes = RunAll({TaskOf(""), task, TaskOf("")});
    EXPECT_EQ(outcomes[0].kind, Kind::right);
    EXPECT_EQ(outcomes[1].kind, expected.kind);
    EXPECT_EQ(Told(outcomes[1]), expected.told);
    EXPECT_EQ(outcomes[2].kind, Kind::right);
  }
}

TEST_F(Execution, CompilersNeedNoDevice) {
  UseCompilers();
  setenv("OCL_ICD_VENDORS", "/nothing", 1);
  struct {
    const char* command;
    Kind kind;
    const char* told;
  } const cases[] = {
      {"grep -q __kernel", Kind::right, "right"},
      {"sh -c 'echo \"error: no\" >&2; exit 1'", Kind::refused,
       "the compiler refuses it with status 1"},
      {"sh -c 'kill -SEGV $$'", Kind::crashed, "a crash (SIGSEGV) in the compiler"},
      {"sh -c 'exit 254'", Kind::crashed, "the process ends with status 254 in the compiler"},
      {"sh -c 'echo internal compiler error; exit 4'", Kind::crashed,
       "the process ends with status 4 in the compiler"},
      {"sh -c 'sleep 600'", Kind::hung, "a hang in the compiler"},
      {"no_such_command", Kind::notRun, "not run"},
      {"./no_such_command", Kind::notRun, "not run"},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(expected.command);
    Task task = TaskOf("");
    task.compiler = expected.command;
    if (expected.kind == Kind::hung) task.seconds = 1;
    const Outcome outcome = RunAll({task}).front();
    EXPECT_EQ(outcome.kind, expected.kind) << outcome.text;
    EXPECT_EQ(Told(outcome), expected.told);
  }
}

// What a crash leaves in memory may end anywhere.
TEST(Events, AreReadAsFarAsTheyGo) {
  std::string bytes(
      "\x00\x02\x00\x00\x00"
      "ab"
      "\x06\x00\x00\x00\x00",
      12);
  ASSERT_EQ(EventsIn(bytes).size(), 2U);
  EXPECT_EQ(EventsIn(bytes)[0].bytes, "ab");
  for (std::size_t size = 0; size < bytes.size(); ++size)
    EXPECT_EQ(EventsIn(std::string_view(bytes).substr(0, size)).size(), size < 7 ? 0U : 1U) << size;
  bytes[0] = '\x7F';
  EXPECT_TRUE(EventsIn(bytes).empty());
}

TEST(Tasks, ArriveAsTheyWereSent) {
  Task task = TaskOf("");
  task.buildOptions = "-cl-opt-disable";
  task.throughIl = true;
  task.seconds = 2.5;
  const Task arrived = TaskFrom(Packed(task));
  EXPECT_EQ(arrived.program.text, task.program.text);
  EXPECT_EQ(arrived.program.buffers[0].bytes, task.program.buffers[0].bytes);
  EXPECT_TRUE(arrived.program.buffers[1].isAnswer);
  EXPECT_EQ(arrived.program.globalSize, 2U);
  EXPECT_EQ(arrived.buildOptions, task.buildOptions);
  EXPECT_TRUE(arrived.throughIl);
  EXPECT_EQ(arrived.seconds, 2.5);
  EXPECT_THROW(TaskFrom("nothing"), std::runtime_error);
}

}  // namespace
}  // namespace exploration

// The tests are their own workers.
int main(int argc, char** argv) {
  if (argc == 2 && std::string_view(argv[1]) == "worker")
    return workers::WorkerMain(std::getenv("COMPILERS_ONLY") != nullptr
                                   ? exploration::compilerRunner
                                   : exploration::deviceRunner);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
