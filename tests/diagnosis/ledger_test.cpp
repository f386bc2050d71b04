// What a record by itself tells of its row: the status, and the line behind it.

#include "diagnosis/verdict/ledger.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

namespace diagnosis {
namespace {

using Kind = Ending::Kind;

struct Case {
  const char* what;
  Kind kind;
  int value;
  const char* reason;
  std::vector<const FailedCall*> failedCalls;
  const char* out;
  const char* err;
  Status status;
  const char* detail;
};

constexpr char mismatch[] = "Running test\nRUN 1: PASSED\n  c:1 ocl:2\nRUN 2: FAILED!\n";
const FailedCall launch{.name = "clEnqueueNDRangeKernel", .code = -5, .repetition = 5};
const FailedCall build{.name = "clBuildProgram", .code = -11};
const FailedCall ignored{.name = "clReleaseKernel", .code = -48};
const FailedCall noPlatform{.name = "clGetPlatformIDs", .code = -1001};

Record WithRepetitions(const std::vector<std::string>& outs) {
  Record record;
  for (const std::string& out : outs) record.repetitions.emplace_back().out = out;
  return record;
}

TEST(Ledger, TakesTheGravestOfWhatARowShows) {
  const Case cases[] = {
      {"nothing wrong", Kind::returned, 1, "", {}, "RUN 1: PASSED\n", "", Status::pass, ""},
      {"a mismatch",
       Kind::returned,
       0,
       "",
       {},
       mismatch,
       "",
       Status::fail,
       "c:1 ocl:2 in repetition 2"},
      {"a mismatch, then a failing call",
       Kind::returned,
       0,
       "",
       {&launch},
       mismatch,
       "",
       Status::fail,
       "c:1 ocl:2 in repetition 2"},
      {"a mismatch in a row that passes all the same",
       Kind::returned,
       1,
       "",
       {},
       mismatch,
       "",
       Status::pass,
       ""},
      {"no reason given",
       Kind::returned,
       0,
       "",
       {},
       "",
       "",
       Status::fail,
       "the row returned 0 without a mismatch line"},
      {"a failing launch, which the suite lets pass",
       Kind::returned,
       1,
       "",
       {&launch},
       "",
       "",
       Status::error,
       "clEnqueueNDRangeKernel(-5) in repetition 5"},
      {"a failing release, which the suite ignores",
       Kind::returned,
       1,
       "",
       {&ignored},
       "RUN 1: PASSED\n",
       "",
       Status::error,
       "clReleaseKernel(-48)"},
      {"a failing build, and what follows from it",
       Kind::returned,
       1,
       "",
       {&build, &ignored},
       "",
       "",
       Status::buildError,
       "clBuildProgram(-11): 1 error \\x1B[0m"},
      {"no platform",
       Kind::returned,
       0,
       "",
       {},
       "",
       "Failed to find any platforms.\n",
       Status::missing,
       "no OpenCL platform"},
      {"no platform, said by a failing call",
       Kind::returned,
       1,
       "",
       {&noPlatform},
       "",
       "Failed to find any platforms.\n",
       Status::error,
       "clGetPlatformIDs(-1001)"},
      {"a crash after a mismatch",
       Kind::signalled,
       SIGSEGV,
       "",
       {&launch},
       mismatch,
       "",
       Status::crash,
       "SIGSEGV after repetition 2"},
      {"a quiet exit",
       Kind::exited,
       0,
       "",
       {},
       "",
       "",
       Status::crash,
       "exit status 0 after repetition 2"},
      {"a broken connection",
       Kind::lost,
       0,
       "end of\nfile",
       {},
       "",
       "",
       Status::crash,
       "end of\\x0Afile"},
      {"a hang",
       Kind::timedOut,
       0,
       "",
       {&build},
       "",
       "",
       Status::timeout,
       "after 2.5 s after repetition 2"},
      {"never reached", Kind::notRun, 0, "interrupted", {}, "", "", Status::missing, "interrupted"},
      {"skipped",
       Kind::skipped,
       0,
       "skipped: in known.txt",
       {},
       "",
       "",
       Status::skip,
       "skipped: in known.txt"},
  };
  for (const Case& c : cases) {
    Record record = WithRepetitions({"RUN 1: PASSED\n", "RUN 2: PASSED\n"});
    record.buildLog = "\n  1 error \x1B[0m\nand more";
    for (const FailedCall* call : c.failedCalls) record.failedCalls.push_back(*call);
    record.out = c.out;
    record.err = c.err;
    record.ending = {c.kind, c.value, c.reason};
    record.seconds = 2.5;
    EXPECT_EQ(StatusOf(record), c.status) << c.what;
    EXPECT_EQ(DetailOf(record), c.detail) << c.what;
  }
}

TEST(Ledger, SaysWhereARowEnded) {
  Record record;
  record.ending = {Kind::signalled, SIGABRT, ""};
  EXPECT_EQ(DetailOf(record), "SIGABRT before the first repetition");
  record = WithRepetitions({"RUN 1: PASSED\n", ""});
  record.ending = {Kind::signalled, SIGABRT, ""};
  EXPECT_EQ(DetailOf(record), "SIGABRT in repetition 2");
  record.ending.value = 63;
  EXPECT_EQ(DetailOf(record), "signal 63 in repetition 2");
  // Where the row was, nobody saw.
  record.ending = {Kind::lost, 0, "'ssh' ended"};
  EXPECT_EQ(DetailOf(record), "'ssh' ended");
  record.ending.lostFirst = "no route";
  EXPECT_EQ(DetailOf(record),
            "'ssh' ended; run once more after the first worker was lost: no route");
}

TEST(Ledger, KnowsItsStatusesByName) {
  for (int i = 0; i <= static_cast<int>(Status::flake); ++i) {
    const auto status = static_cast<Status>(i);
    EXPECT_EQ(StatusNamed(NameOf(status)), status);
  }
  EXPECT_EQ(NameOf(Status::flake), "Flake");
  EXPECT_FALSE(StatusNamed("pass"));
}

}  // namespace
}  // namespace diagnosis
