// Rows on drivers that do what they should not: what becomes of them, and of the others.

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "diagnosis/record/row_facts.h"
#include "diagnosis/verdict/ledger.h"
#include "tests/diagnosis/rows_in_workers.h"

namespace diagnosis {
namespace {

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

class BadDriver : public RowsInWorkers, public testing::WithParamInterface<Case> {};

TEST_P(BadDriver, IsChargedToItsRowAlone) {
  const Case& bad = GetParam();
  SetFault(bad.fault, badText);
  options_.timeoutSeconds = bad.status == Status::timeout ? 3 : 60;
  for (const int workers : {1, 3}) {
    options_.workers = workers;
    const Told told = RunAll(JobsOf(someRows));
    EXPECT_EQ(told.end.kind, workers::PoolEnd::Kind::finished);
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
        Case{"scribble@clEnqueueReadBuffer#4", Status::crash,
             "the driver has overwritten the row's own record"},
        Case{"rubbish@clEnqueueWriteBuffer", Status::pass, passed, "union_triage 4 worker"},
        Case{"spray@clEnqueueReadBuffer", Status::pass, passed, "union_triage 4 worker"},
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
TEST_F(RowsInWorkers, SurvivesADriverThatFailsOutsideTheRows) {
  for (const std::string place : {"load", "clGetPlatformIDs", "clGetDeviceInfo"}) {
    for (const std::string fault : {"segv", "exit 0", "hang"}) {
      SCOPED_TRACE(fault + "@" + place);
      SetFault(fault + "@" + place);
      SetFaultOnce();
      options_.timeoutSeconds = fault == "hang" ? 3 : 60;
      const Told told = RunAll(JobsOf(someRows));
      for (const std::string& row : someRows) EXPECT_EQ(DetailOf(told.Only(row)), "") << row;
      std::filesystem::remove(folder_ / "once");
    }
  }
  unsetenv("BAD_DRIVER_ONCE");
  options_.timeoutSeconds = 60;
  for (const std::string fault : {"segv@end", "exit 3@end"}) {
    SetFault(fault);
    for (const bool isolate : {false, true}) {
      options_.isolate = isolate;
      const Told told = RunAll(JobsOf(someRows));
      for (const std::string& row : someRows) EXPECT_EQ(DetailOf(told.Only(row)), "") << row;
    }
  }
}

TEST_F(RowsInWorkers, GivesUpOnADriverThatNeverComesUp) {
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
    const Told told = RunAll(JobsOf(someRows));
    EXPECT_EQ(told.end.kind, workers::PoolEnd::Kind::noWorker);
    EXPECT_TRUE(told.started.empty());
    EXPECT_TRUE(told.devices.empty());
    for (const std::string& row : someRows) {
      EXPECT_EQ(StatusOf(told.Only(row)), Status::missing);
      EXPECT_EQ(told.Only(row).ending.reason, reason);
    }
  }
  SetFault("error@clGetDeviceIDs");
  const Told told = RunAll(JobsOf(someRows));
  EXPECT_EQ(told.end.kind, workers::PoolEnd::Kind::noDevice);
  EXPECT_EQ(told.records.size(), someRows.size());
}

TEST_F(RowsInWorkers, RunsEachRowInAFreshProcessIfItIsTold) {
  // Each process dies in its second row.
  SetFault("segv@clCreateContextFromType#2");
  const auto crashes = [&](const std::vector<RowJob>& jobs) {
    const Told told = RunAll(jobs);
    return std::ranges::count_if(someRows, [&](const std::string& row) {
      return StatusOf(told.Only(row)) == Status::crash;
    });
  };
  std::vector<RowJob> jobs = JobsOf(someRows);
  EXPECT_EQ(crashes(jobs), 2);
  jobs[1].freshWorker = true;
  EXPECT_EQ(crashes(jobs), 1);
  options_.isolate = true;
  EXPECT_EQ(crashes(jobs), 0);
}

}  // namespace
}  // namespace diagnosis
