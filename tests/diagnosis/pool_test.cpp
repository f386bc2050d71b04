// Rows in worker processes on the simulated GPU: the data that they get, what becomes of them on
// drivers that do what they should not, and what is left of the processes.

#include "common/workers/pool.h"

#include <CL/cl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <thread>

#include "diagnosis/record/row_facts.h"
#include "diagnosis/verdict/ledger.h"
#include "harness/rows.h"
#include "tests/rows.h"

namespace diagnosis {
namespace {

namespace fs = std::filesystem;

std::string Contents(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::size_t IndexOf(std::string_view name) {
  return static_cast<std::size_t>(std::ranges::find(rows, name, &NamedRunner::name) - rows);
}

// Everything that a run told.
struct Told {
  PoolEnd end = PoolEnd::finished;
  std::vector<Device> devices;
  std::vector<std::string> started;
  std::map<std::string, std::vector<Record>> records;

  const Record& Only(const std::string& row) const {
    static const Record none;
    const auto found = records.find(row);
    EXPECT_TRUE(found != records.end() && found->second.size() == 1) << row;
    return found != records.end() ? found->second.front() : none;
  }
};

class Pool : public testing::Test {
 protected:
  Pool() {
    std::string folder = (fs::temp_directory_path() / "pool_test_XXXXXX").string();
    folder_ = mkdtemp(folder.data());
    Set("OCL_ICD_VENDORS", SIMULATED_DRIVER);
    Set("OPENCL_LAYERS", SIMULATED_GPU);
    // A sanitizer in the worker leaves the driver's signals alone.
    Set("ASAN_OPTIONS", "handle_segv=0:handle_abort=0:detect_leaks=0");
    options_.program = UNION_TRIAGE;
    std::istringstream emulator(EMULATOR);
    options_.launcher.assign(std::istream_iterator<std::string>(emulator), {});
  }

  ~Pool() override {
    for (const std::string& name : set_) unsetenv(name.c_str());
    fs::remove_all(folder_);
  }

  void Set(const std::string& name, const std::string& value) {
    setenv(name.c_str(), value.c_str(), 1);
    set_.push_back(name);
  }

  // The fault, in the rows whose text has `text`, if that is not empty.
  void SetFault(const std::string& fault, const std::string& text = "") {
    Set("OPENCL_LAYERS", std::string(SIMULATED_GPU) + ":" + BAD_DRIVER);
    Set("BAD_DRIVER", fault);
    Set("BAD_DRIVER_TEXT", text);
  }

  void SetFaultOnce() { Set("BAD_DRIVER_ONCE", folder_ / "once"); }

  Told RunAll(const std::vector<Job>& jobs) {
    Told told;
    PoolListener listener;
    listener.device = [&](const Device& device) { told.devices.push_back(device); };
    listener.started = [&](const Job& job) { told.started.emplace_back(rows[job.row].name); };
    listener.ended = [&](const Job& job, Record record) {
      const std::string name(rows[job.row].name);
      EXPECT_EQ(record.row, name);
      told.records[name].push_back(std::move(record));
      if (afterEnd_) afterEnd_();
    };
    told.end = RunJobs(jobs, options_, listener);
    return told;
  }

  static std::vector<Job> Jobs(const std::vector<std::string>& names) {
    std::vector<Job> jobs(names.size());
    std::ranges::transform(names, jobs.begin(),
                           [](const std::string& name) { return Job{.row = IndexOf(name)}; });
    return jobs;
  }

  fs::path folder_;
  std::vector<std::string> set_;
  PoolOptions options_;
  std::function<void()> afterEnd_;
};

// The suite's own run, copied down by a layer, against every row by itself in another order.
TEST_F(Pool, GivesEveryRowTheBytesOfAFullRun) {
  Set("OPENCL_LAYERS", std::string(SIMULATED_GPU) + ":" + RECORD_WRITES_LAYER);
  Set("RECORD_WRITES", folder_ / "writes");
  const std::string command =
      std::string(EMULATOR) + " " + UNION_SUITE + " >" + (folder_ / "out").string();
  ASSERT_EQ(std::system(command.c_str()), 0);
  const std::string writes = Contents(folder_ / "writes");

  Set("OPENCL_LAYERS", SIMULATED_GPU);
  std::vector<Job> jobs;
  for (std::size_t row = 0; row < schedule.size(); ++row) jobs.push_back({.row = row});
  std::shuffle(jobs.begin(), jobs.end(), std::minstd_rand(4));
  options_.workers = 2;
  const Told told = RunAll(jobs);

  std::string out;
  std::size_t at = 0;
  for (const ::Row& row : Rows()) {
    if (row.operation == "power") break;
    const Record& record = told.Only(row.name);
    out += record.out;
    ASSERT_EQ(record.repetitions.size(), static_cast<std::size_t>(Runs(row))) << row.name;
    ASSERT_EQ(record.launches, Runs(row)) << row.name;
    for (const Repetition& repetition : record.repetitions) {
      for (const Bytes* const input : {&repetition.inputA, &repetition.inputB}) {
        if (input == &repetition.inputB && !row.twoInputs) continue;
        // What no store reaches is the heap's, which no run has as another.
        for (std::size_t element = 0; element < 10; ++element) {
          const std::size_t from = element * row.stride;
          const std::size_t size = static_cast<std::size_t>(row.lanes) * sizeof(float);
          const std::string bytes(input->begin(), input->end());
          ASSERT_EQ(bytes.substr(from, size), writes.substr(at + from, size)) << row.name;
        }
        at += 256 * row.stride;
      }
      ASSERT_EQ(repetition.result.size(), 10 * row.stride) << row.name;
    }
    EXPECT_EQ(record.behindA.size(), 246 * row.stride);
    EXPECT_EQ(record.behindB.size(), row.twoInputs ? 246 * row.stride : 0);
    EXPECT_EQ(record.behindResult.size(), 246 * row.stride);
  }
  EXPECT_EQ(at, writes.size());
  out += "TOTAL : 210\nPASSED: 210\nFAILED: 0\n";
  EXPECT_EQ(out, Contents(folder_ / "out"));
}

// The float members of a buffer of vectors of three.
std::vector<std::uint32_t> FloatsOf(const Bytes& buffer) {
  std::vector<std::uint32_t> floats;
  for (std::size_t at = 0; at < buffer.size(); at += at % 32 == 8 ? 24 : 4) {
    floats.emplace_back();
    std::memcpy(&floats.back(), &buffer[at], 4);
  }
  return floats;
}

TEST_F(Pool, KeepsWhatARowLeaves) {
  Job plain{.row = IndexOf("add_union_vector3_2")};
  Job other = plain;
  other.buildOptions = "-DNOTHING -cl-opt-disable";
  other.localSize = 64;
  other.passes = 3;
  const Told told = RunAll({plain, other});
  ASSERT_EQ(told.devices.size(), 1U);
  EXPECT_NE(told.devices[0].name, "");
  EXPECT_NE(told.devices[0].singleFpConfig, 0U);
  const std::vector<Record>& both = told.records.at("add_union_vector3_2");
  ASSERT_EQ(both.size(), 2U);
  for (const Record& record : both) {
    EXPECT_EQ(StatusOf(record), Status::pass) << DetailOf(record);
    EXPECT_EQ(record.source, KernelTextOf(FactsOfRows()[plain.row].row));
    EXPECT_EQ(record.kernel, "sum");
    EXPECT_GT(record.buildSeconds, 0);
    EXPECT_GT(record.seconds, record.buildSeconds);
    EXPECT_EQ(record.err, "");
    EXPECT_EQ(record.driver, "");
    ASSERT_EQ(record.repetitions.size(), 10U);
    EXPECT_EQ(record.repetitions[9].out, "RUN 10: PASSED\n");
    EXPECT_EQ(FloatsOf(record.repetitions[9].inputB), FloatsOf(both[0].repetitions[9].inputB));
  }
  EXPECT_EQ(both[1].buildOptions, other.buildOptions);
  EXPECT_EQ(both[1].localSize, 64U);

  options_.seed = 2;
  const Record seeded = RunAll({plain}).Only("add_union_vector3_2");
  EXPECT_EQ(StatusOf(seeded), Status::pass);
  EXPECT_NE(FloatsOf(seeded.repetitions[0].inputB), FloatsOf(both[0].repetitions[0].inputB));
}

// What is put in reaches the driver: an option that it does not know, a size that does not divide.
TEST_F(Pool, PutsOptionsAndLocalSizeIn) {
  Job options{.row = 0, .buildOptions = "-DNOT=\"A) #error\" -include nothing.h"};
  Job size{.row = 1, .localSize = 7};
  const Told told = RunAll({options, size, {.row = 2}});
  const Record& refused = told.Only(std::string(rows[0].name));
  EXPECT_EQ(StatusOf(refused), Status::buildError);
  EXPECT_NE(refused.buildLog, "");
  const Record& divided = told.Only(std::string(rows[1].name));
  ASSERT_EQ(divided.failedCalls.size(), 1U);
  EXPECT_EQ(divided.failedCalls[0].name, "clEnqueueNDRangeKernel");
  EXPECT_EQ(divided.failedCalls[0].code, CL_INVALID_WORK_GROUP_SIZE);
  EXPECT_EQ(StatusOf(told.Only(std::string(rows[2].name))), Status::pass);
}

// The row under the fault, among others; its text is told apart by these two parts.
const std::string badRow = "copy_union_vector3_3";
const std::string badText = " copy(& short3 a;";
const std::vector<std::string> someRows = {"add_union_arrays_1", badRow, "copy_union_vector3_4",
                                           "power_union_vector3_4"};

struct Case {
  std::string fault;
  Status status;
  std::string detail;
  std::string driver = {};  // is in what the driver wrote
};

void PrintTo(const Case& bad, std::ostream* out) { *out << bad.fault; }

class BadDriver : public Pool, public testing::WithParamInterface<Case> {};

TEST_P(BadDriver, IsChargedToItsRowAlone) {
  const Case& bad = GetParam();
  SetFault(bad.fault, badText);
  options_.timeoutSeconds = bad.status == Status::timeout ? 3 : 60;
  for (const int workers : {1, 3}) {
    options_.workers = workers;
    const Told told = RunAll(Jobs(someRows));
    EXPECT_EQ(told.end, PoolEnd::finished);
    ASSERT_EQ(told.started.size(), someRows.size());
    if (workers == 1) {
      EXPECT_EQ(told.started, someRows);
    }
    for (const std::string& row : someRows) {
      const Record& record = told.Only(row);
      EXPECT_EQ(NameOf(StatusOf(record)), NameOf(row == badRow ? bad.status : Status::pass))
          << row << ": " << DetailOf(record);
      EXPECT_EQ(record.randDrawn, row == badRow && bad.fault.starts_with("rand")) << row;
      if (row != badRow) {
        EXPECT_EQ(record.driver, "") << row;
        EXPECT_EQ(record.err, "") << row;
      }
    }
    const Record& record = told.Only(badRow);
    EXPECT_EQ(DetailOf(record).substr(0, bad.detail.size()), bad.detail);
    EXPECT_NE(record.driver.find(bad.driver), std::string::npos);
    EXPECT_LE(record.driver.size(), 300'000U);
    if (!bad.fault.starts_with("scribble")) {
      EXPECT_EQ(record.source, KernelTextOf(FactsOfRows()[IndexOf(badRow)].row));
    }
  }
}

const std::string passed;
INSTANTIATE_TEST_SUITE_P(
    AtEveryPlace, BadDriver,
    testing::Values(
        // It ends its process.
        Case{"segv@clBuildProgram", Status::crash, "SIGSEGV before the first repetition"},
        Case{"abort@clCreateKernel", Status::crash, "SIGABRT before the first repetition"},
        Case{"kill@clCreateBuffer#2", Status::crash, "SIGKILL before the first repetition"},
        Case{"segv@clEnqueueReadBuffer#5", Status::crash, "SIGSEGV in repetition 5"},
        Case{"signals@clEnqueueNDRangeKernel", Status::crash, "exit status 0 in repetition 1"},
        Case{"throw@clSetKernelArg", Status::crash, "SIGABRT before the first repetition",
             "from the driver"},
        Case{"exit 0@clEnqueueWriteBuffer#3", Status::crash, "exit status 0 in repetition 3"},
        Case{"exit 3@clReleaseCommandQueue#10", Status::crash, "exit status 3 in repetition 10"},
        Case{"exit 0@clReleaseMemObject", Status::crash, "exit status 0 after repetition 10"},
        Case{"abort@clReleaseContext", Status::crash, "SIGABRT"},
        // It hangs.
        Case{"hang@clEnqueueReadBuffer#2", Status::timeout, "after"},
        Case{"hang@clReleaseKernel", Status::timeout, "after"},
        // It fails.
        Case{"error@clBuildProgram", Status::buildError, "clBuildProgram(-5)"},
        Case{"error@clCreateKernel", Status::error, "clCreateKernel(-5)"},
        Case{"error@clCreateCommandQueue#5", Status::error,
             "clCreateCommandQueue(-5) in repetition 5"},
        Case{"error@clEnqueueNDRangeKernel#5", Status::error,
             "clEnqueueNDRangeKernel(-5) in repetition 5"},
        Case{"error@clReleaseKernel", Status::error, "clReleaseKernel(-5)"},
        // It meddles with what is not its own.
        Case{"scribble@clEnqueueReadBuffer#4", Status::crash, "worker lost"},
        Case{"rubbish@clEnqueueWriteBuffer", Status::pass, passed, "union_triage worker 2"},
        Case{"spray@clEnqueueReadBuffer", Status::pass, passed, "union_triage worker 2"},
        Case{"flood@clEnqueueReadBuffer", Status::pass, passed, "[the rest is left out]"},
        Case{"cout@clEnqueueReadBuffer", Status::pass, passed, "from the driver\n"},
        Case{"close@clEnqueueNDRangeKernel", Status::pass, passed},
        Case{"children@clCreateKernel", Status::pass, passed},
        Case{"rand@clBuildProgram", Status::pass, passed}),
    [](const auto& bad) {
      std::string name = bad.param.fault;
      std::ranges::replace_if(
          name, [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
      return name;
    });

// Outside the rows, where no row is to blame.
TEST_F(Pool, SurvivesADriverThatFailsOutsideTheRows) {
  for (const std::string place : {"load", "clGetPlatformIDs", "clGetDeviceInfo"}) {
    for (const std::string fault : {"segv", "exit 0", "hang"}) {
      SCOPED_TRACE(fault + "@" + place);
      SetFault(fault + "@" + place);
      SetFaultOnce();
      options_.timeoutSeconds = fault == "hang" ? 3 : 60;
      const Told told = RunAll(Jobs(someRows));
      for (const std::string& row : someRows) EXPECT_EQ(DetailOf(told.Only(row)), "") << row;
      fs::remove(folder_ / "once");
    }
  }
  unsetenv("BAD_DRIVER_ONCE");
  options_.timeoutSeconds = 60;
  for (const std::string fault : {"segv@end", "exit 3@end"}) {
    SetFault(fault);
    for (const bool isolate : {false, true}) {
      options_.isolate = isolate;
      const Told told = RunAll(Jobs(someRows));
      for (const std::string& row : someRows) EXPECT_EQ(DetailOf(told.Only(row)), "") << row;
    }
  }
}

TEST_F(Pool, GivesUpOnADriverThatNeverComesUp) {
  struct {
    std::string fault;
    std::string reason;
  } const cases[] = {
      {"segv@load", "OpenCL does not come up: SIGSEGV"},
      {"throw@load", "OpenCL does not come up: SIGABRT, \"  what():  from the driver\""},
      {"exit 3@clGetDeviceIDs", "OpenCL does not come up: exit status 3"},
  };
  for (const auto& [fault, reason] : cases) {
    SetFault(fault);
    options_.workers = 2;
    const Told told = RunAll(Jobs(someRows));
    EXPECT_EQ(told.end, PoolEnd::finished);
    EXPECT_TRUE(told.started.empty());
    EXPECT_TRUE(told.devices.empty());
    for (const std::string& row : someRows) {
      EXPECT_EQ(StatusOf(told.Only(row)), Status::missing);
      EXPECT_EQ(told.Only(row).ending.reason, reason);
    }
  }
  SetFault("error@clGetDeviceIDs");
  const Told told = RunAll(Jobs(someRows));
  EXPECT_EQ(told.end, PoolEnd::noDevice);
  EXPECT_EQ(told.records.size(), someRows.size());
}

// The way to the workers is open once.
TEST_F(Pool, KeepsWhatWasDoneBeforeTheWorkersWereGone) {
  SetFault("kill parent@clCreateKernel", badText);
  options_.launcher = {"sh", "-c", "mkdir $1 && shift && exec \"$@\"; exit 7", "sh",
                       folder_ / "once"};
  const Told told = RunAll(Jobs(someRows));
  EXPECT_EQ(told.end, PoolEnd::finished);
  EXPECT_EQ(told.started, std::vector(someRows.begin(), someRows.begin() + 2));
  for (std::size_t i = 0; i < someRows.size(); ++i) {
    const Record& record = told.Only(someRows[i]);
    EXPECT_EQ(NameOf(StatusOf(record)), NameOf(i < 1    ? Status::pass
                                               : i == 1 ? Status::crash
                                                        : Status::missing));
    EXPECT_EQ(record.ending.reason.substr(0, 27), i < 1    ? ""
                                                  : i == 1 ? "'sh' ended with signal 9"
                                                           : "'sh' ended with status 7: m");
  }
}

TEST_F(Pool, RunsEachRowInAFreshProcessIfItIsTold) {
  // Each process dies in its second row.
  SetFault("segv@clCreateContextFromType#2");
  const auto crashes = [&](const std::vector<Job>& jobs) {
    const Told told = RunAll(jobs);
    return std::ranges::count_if(someRows, [&](const std::string& row) {
      return StatusOf(told.Only(row)) == Status::crash;
    });
  };
  std::vector<Job> jobs = Jobs(someRows);
  EXPECT_EQ(crashes(jobs), 2);
  jobs[1].freshWorker = true;
  EXPECT_EQ(crashes(jobs), 1);
  options_.isolate = true;
  EXPECT_EQ(crashes(jobs), 0);
}

bool Alive(pid_t process) {
  // A zombie is not.
  const std::string stat = Contents("/proc/" + std::to_string(process) + "/stat");
  return !stat.empty() && stat.find(") Z") == std::string::npos;
}

// Whether every process that a fault met goes within some seconds.
bool AllGo(const fs::path& pids) {
  std::ifstream file(pids);
  bool any = false;
  for (pid_t process = 0; file >> process;) {
    any = true;
    for (int i = 0; Alive(process); ++i) {
      if (i == 200) return false;
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
  }
  return any;
}

TEST_F(Pool, LosesOneRowWithAWorkerAndLeavesNoProcess) {
  SetFault("kill parent@clEnqueueReadBuffer#3", badText);
  Set("BAD_DRIVER_PIDS", folder_ / "pids");
  for (const bool launcher : {false, true}) {
    for (const bool once : {false, true}) {
      SCOPED_TRACE(std::string(launcher ? "launcher" : "") + (once ? " once" : ""));
      fs::remove(folder_ / "once");
      if (once) SetFaultOnce();
      options_.launcher.clear();
      if (launcher) options_.launcher = {"env", "SOMETHING=else"};
      const Told told = RunAll(Jobs(someRows));
      unsetenv("BAD_DRIVER_ONCE");
      for (const std::string& row : someRows)
        EXPECT_EQ(row == badRow || StatusOf(told.Only(row)) == Status::pass, true) << row;
      const Record& record = told.Only(badRow);
      const std::string lost = "'env' ended with signal 9";
      if (!launcher) {
        EXPECT_EQ(DetailOf(record), "SIGKILL before the first repetition");
      } else if (once) {
        // Lost with the way to it, it is run once more.
        EXPECT_EQ(StatusOf(record), Status::pass);
        EXPECT_EQ(record.ending.reason, "run once more after the first worker was lost: " + lost);
      } else {
        EXPECT_EQ(record.ending.kind, Ending::Kind::lost);
        EXPECT_EQ(record.ending.reason.substr(0, lost.size()), lost);
      }
      EXPECT_EQ(told.started.size(), someRows.size());
      EXPECT_TRUE(AllGo(folder_ / "pids"));
      fs::remove(folder_ / "pids");
    }
  }
}

TEST_F(Pool, EndsAtAnInterruptWithEveryRowAccountedFor) {
  SetFault("hang@clCreateKernel", badText);
  Set("BAD_DRIVER_PIDS", folder_ / "pids");
  options_.workers = 2;
  for (const int signal : {SIGINT, SIGTERM}) {
    std::thread interrupt([&] {
      while (Contents(folder_ / "pids").empty())
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
      kill(getpid(), signal);
    });
    // Behind them, so that the other worker has something to do.
    std::vector<Job> jobs = Jobs(someRows);
    for (int i = 0; i < 20; ++i) jobs.push_back(jobs.front());
    const Told told = RunAll(jobs);
    interrupt.join();
    EXPECT_EQ(told.end, PoolEnd::interrupted);
    std::size_t ended = 0;
    for (const auto& [row, records] : told.records) ended += records.size();
    EXPECT_EQ(ended, jobs.size());
    EXPECT_EQ(told.Only(badRow).ending.kind, Ending::Kind::notRun);
    EXPECT_EQ(told.Only(badRow).ending.reason, "interrupted");
    EXPECT_TRUE(AllGo(folder_ / "pids"));
    fs::remove(folder_ / "pids");
  }
}

TEST_F(Pool, LeavesNoProcessWhenItIsKilled) {
  SetFault("hang@clCreateKernel", badText);
  Set("BAD_DRIVER_PIDS", folder_ / "pids");
  const pid_t tool = fork();
  if (tool == 0) {
    RunAll(Jobs(someRows));
    _exit(0);
  }
  while (Contents(folder_ / "pids").empty())
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  kill(tool, SIGKILL);
  waitpid(tool, nullptr, 0);
  EXPECT_TRUE(AllGo(folder_ / "pids"));
}

TEST_F(Pool, SaysWhyThereIsNoWorker) {
  struct {
    std::vector<std::string> launcher;
    std::string reason;
  } const cases[] = {
      {{"no-such-command", "there"},
       "'no-such-command' cannot be started: no such file or directory"},
      {{"sh", "-c", "echo one; echo Permission denied >&2; exit 255"},
       "'sh' ended with status 255: Permission denied"},
      {{"sh", "-c", "kill -9 $$"}, "'sh' ended with signal 9"},
      {{"echo"}, "'echo' ended with status 0"},
      {{"sh", "-c", R"(printf '\002union_triage worker 2\003\n\377\377\377\377')"},
       "'sh' sent a message that is too long"},
      {{"sh", "-c", R"(printf '\002union_triage worker 2\003\n\001\0\0\0x\n')"},
       "'sh' sent a message that cannot be understood"},
  };
  for (const auto& [launcher, reason] : cases) {
    options_.launcher = launcher;
    options_.workers = 2;
    const Told told = RunAll(Jobs(someRows));
    EXPECT_EQ(told.end, PoolEnd::finished);
    EXPECT_TRUE(told.started.empty());
    for (const std::string& row : someRows) EXPECT_EQ(told.Only(row).ending.reason, reason);
  }
}

TEST_F(Pool, PassesOverWhatALauncherSays) {
  options_.launcher = {"sh", "-c", "echo Welcome; echo to the board >&2; exec \"$0\" \"$@\""};
  options_.workers = 8;
  const Told told = RunAll(Jobs(someRows));
  for (const std::string& row : someRows) {
    EXPECT_EQ(DetailOf(told.Only(row)), "");
    EXPECT_EQ(told.Only(row).driver, "");
  }
}

// As srun does.
TEST_F(Pool, GetsThroughALauncherThatPassesOnWholeLines) {
  options_.launcher = {"sh", "-c", "sed -u '' | \"$0\" \"$@\" | sed -u ''"};
  const Told told = RunAll(Jobs(someRows));
  for (const std::string& row : someRows) EXPECT_EQ(DetailOf(told.Only(row)), "");
}

TEST_F(Pool, LetsWhatTheListenerThrowsOut) {
  int ended = 0;
  afterEnd_ = [&] {
    if (++ended == 2) throw std::runtime_error("no space left");
  };
  options_.workers = 2;
  EXPECT_THROW(RunAll(Jobs(someRows)), std::runtime_error);
  EXPECT_EQ(ended, 2);
}

}  // namespace
}  // namespace diagnosis
