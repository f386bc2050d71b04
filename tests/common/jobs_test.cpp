// What becomes of jobs in workers, whatever their runners do.

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <deque>
#include <set>
#include <stdexcept>
#include <thread>

#include "tests/common/stub.h"

namespace {

using stub::Jobs;
using stub::Told;
using workers::Ending;
using workers::Job;
using workers::PoolEnd;

TEST_F(Jobs, EndAsTheirRunnersDo) {
  struct {
    const char* task;
    Ending ending;
    int value;
    std::string bytes;
    std::string printed;
    std::string reason;
  } const cases[] = {
      {"say fine print words", Ending::returned, 0, "fine", "words", ""},
      {"say half print words abort", Ending::signalled, SIGABRT, "half", "words", ""},
      {"say half exit", Ending::exited, 3, "half", "", ""},
      {"say half hang", Ending::timedOut, 0, "half", "", ""},
      {"say half stop", Ending::timedOut, 0, "half", "", ""},
      {"say half stop hang", Ending::timedOut, 0, "half", "", ""},
      {"say last close", Ending::returned, 0, "last", "", ""},
      {"kill", Ending::lost, 0, "", "", "the worker was killed by SIGKILL"},
  };
  for (const int count : {1, 3}) {
    options_.workers = count;
    for (const auto& expected : cases) {
      SCOPED_TRACE(expected.task);
      const double seconds = expected.ending == Ending::timedOut ? 0.3 : 30;
      const Told told = RunAll({{.task = "say before"},
                                {.task = expected.task, .seconds = seconds},
                                {.task = "say behind"},
                                {.task = "say last"}});
      EXPECT_EQ(told.end.kind, PoolEnd::Kind::finished);
      EXPECT_EQ(told.devices, std::vector<std::string>{"a device"});
      EXPECT_EQ(told.started.size(), 4U);
      for (const std::size_t other : {0U, 2U, 3U}) {
        EXPECT_EQ(told.ended[other].answer.ending, Ending::returned);
        EXPECT_EQ(told.ended[other].answer.bytes, told.ended[other].job.task.substr(4));
        EXPECT_EQ(told.ended[other].answer.printed, "");
      }
      const workers::Answer& answer = told.ended[1].answer;
      EXPECT_EQ(answer.ending, expected.ending);
      EXPECT_EQ(answer.value, expected.value);
      EXPECT_EQ(answer.bytes, expected.bytes);
      EXPECT_EQ(answer.printed, expected.printed);
      EXPECT_EQ(answer.reason, expected.reason);
      if (expected.ending == Ending::timedOut) {
        // The loop's own clock counts milliseconds, and may be one ahead.
        EXPECT_GE(answer.seconds, 0.29);
      }
    }
  }
}

TEST_F(Jobs, AnswerWhatThereIsRoomFor) {
  const Told told = RunAll({{.task = "overflow"},
                            {.task = std::string(workers::longestTask, ' ')},
                            {.task = std::string(workers::longestTask + 1, ' ')}});
  EXPECT_EQ(told.ended[0].answer.bytes.size(), (3U << 20) + 3);
  EXPECT_EQ(told.ended[1].answer.ending, Ending::returned);
  EXPECT_EQ(told.ended[2].answer.ending, Ending::notRun);
  EXPECT_EQ(told.ended[2].answer.reason, "the task is too long");
}

// What the starts of runners do, how many there are, and what becomes of two jobs of which the
// first ends its runner.
TEST_F(Jobs, TakeAsManyStartsAsTheyMay) {
  struct {
    const char* starts;
    std::size_t count;
    PoolEnd::Kind end;
    Ending second;
    const char* reason;
  } const cases[] = {
      {"..", 2, PoolEnd::Kind::finished, Ending::returned, ""},
      {"xx.xx.", 6, PoolEnd::Kind::finished, Ending::returned, ""},
      {"xxx", 3, PoolEnd::Kind::noWorker, Ending::notRun,
       "OpenCL does not come up: SIGABRT, \"words of the driver\""},
      {".xxx", 4, PoolEnd::Kind::finished, Ending::notRun,
       "OpenCL does not come up: SIGABRT, \"words of the driver\""},
      {"h.h.", 4, PoolEnd::Kind::finished, Ending::returned, ""},
      {"hh", 2, PoolEnd::Kind::noWorker, Ending::notRun, "OpenCL does not come up in time"},
      {"n", 1, PoolEnd::Kind::noDevice, Ending::notRun, "no such device"},
      {".n.", 3, PoolEnd::Kind::finished, Ending::returned, ""},
      // It has closed what its worker wakes it with, and is no crash of the job that it was to do.
      {"c.c.", 4, PoolEnd::Kind::finished, Ending::returned, ""},
      {".ccc", 4, PoolEnd::Kind::finished, Ending::notRun,
       "OpenCL does not stay up: exit status 0"},
  };
  options_.timeoutSeconds = 1;
  for (const auto& expected : cases) {
    SCOPED_TRACE(expected.starts);
    SetStarts(expected.starts);
    const Told told = RunAll({{.task = "abort", .seconds = 0.5}, {.task = "", .seconds = 0.5}});
    EXPECT_EQ(Starts(), expected.count);
    EXPECT_EQ(told.end.kind, expected.end);
    EXPECT_EQ(told.ended[1].answer.ending, expected.second);
    EXPECT_EQ(
        told.end.kind == PoolEnd::Kind::finished ? told.ended[1].answer.reason : told.end.reason,
        expected.reason);
  }
}

TEST_F(Jobs, ShareARunnerUnlessTheyAreToldNotTo) {
  const auto runners = [this](const std::vector<Job>& jobs) {
    std::set<std::string> numbers;
    for (const stub::Ended& ended : RunAll(jobs).ended) numbers.insert(ended.answer.bytes);
    return numbers.size();
  };
  const Job job = {.task = "number"};
  Job fresh = job;
  fresh.freshRunner = true;
  EXPECT_EQ(runners({job, job, job}), 1U);
  EXPECT_EQ(runners({job, fresh, job}), 2U);
  EXPECT_EQ(runners({fresh, fresh, fresh}), 3U);
  int ended = 0;
  afterwards_ = [&](const workers::Answer&) {
    return ++ended == 2 ? workers::Afterwards::endRunner : workers::Afterwards::keepRunner;
  };
  EXPECT_EQ(runners({job, job, job, job}), 2U);
}

TEST_F(Jobs, AreAskedForWhenAWorkerIsFree) {
  constexpr std::uint64_t count = 500;
  options_.workers = 3;
  std::uint64_t given = 0;
  std::uint64_t ended = 0;
  workers::PoolListener listener;
  listener.next = [&]() -> std::optional<Job> {
    // Behind half of them, none until those are over; and what then comes is a chain.
    if (given == count || (given >= count / 2 && ended != given)) return std::nullopt;
    EXPECT_LE(given - ended, 3U);
    return Job{.number = given++, .task = "say a"};
  };
  listener.ended = [&](const Job&, const workers::Answer& answer) {
    EXPECT_EQ(answer.bytes, "a");
    ++ended;
    return workers::Afterwards::keepRunner;
  };
  EXPECT_EQ(workers::RunJobs(options_, listener).kind, PoolEnd::Kind::finished);
  EXPECT_EQ(ended, count);
  EXPECT_LE(Starts(), 3U);
}

TEST_F(Jobs, NeedNoMoreWorkersThanThereAreOfThem) {
  options_.workers = 8;
  EXPECT_EQ(RunTasks({"", ""}).end.kind, PoolEnd::Kind::finished);
  EXPECT_EQ(Starts(), 2U);
  SetStarts("");
  EXPECT_EQ(RunTasks({}).end.kind, PoolEnd::Kind::finished);
  EXPECT_EQ(Starts(), 0U);
}

TEST_F(Jobs, LeaveNoProcess) {
  const Told told = RunAll({{.task = "child"},
                            {.task = "child hang", .seconds = 0.5, .freshRunner = true},
                            {.task = "child abort"},
                            {.task = "kill"},
                            {.task = "child"}});
  for (const stub::Ended& ended : told.ended) {
    if (ended.answer.ending != Ending::lost) {
      EXPECT_TRUE(stub::AllGo(ended.answer.bytes)) << ended.job.task;
    }
  }
  EXPECT_TRUE(stub::AllGo(Runners()));
}

TEST_F(Jobs, AreAllAccountedForAtAnInterrupt) {
  options_.workers = 2;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    std::thread interrupt([&] {
      // Both runners are up.
      while (Starts() < 2) std::this_thread::sleep_for(std::chrono::milliseconds(20));
      kill(getpid(), signal);
    });
    const Told told = RunTasks({"hang", "hang", "say never"});
    interrupt.join();
    EXPECT_EQ(told.end.kind, PoolEnd::Kind::interrupted);
    EXPECT_EQ(told.end.signal, signal);
    EXPECT_EQ(told.end.reason, "interrupted");
    for (const stub::Ended& ended : told.ended) EXPECT_EQ(ended.answer.ending, Ending::notRun);
    SetStarts("");
  }
}

TEST_F(Jobs, LetOutWhatTheListenerThrows) {
  int ended = 0;
  afterwards_ = [&](const workers::Answer&) -> workers::Afterwards {
    if (++ended == 2) throw std::runtime_error("no space left");
    return workers::Afterwards::keepRunner;
  };
  options_.workers = 2;
  EXPECT_THROW(RunTasks({"", "", "", "", ""}), std::runtime_error);
  EXPECT_EQ(ended, 2);
}

}  // namespace
