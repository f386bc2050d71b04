// The way to the workers, and what is left when it breaks.

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>

#include "tests/common/stub.h"

namespace {

using stub::Told;
using workers::Ending;
using workers::PoolEnd;

class Launchers : public stub::Jobs {
 protected:
  // The script gets the worker's command as its words.
  void SetScript(const std::string& script) { options_.launcher = {"sh", "-c", script, "sh"}; }
};

TEST_F(Launchers, PassOnWhatWorkersSay) {
  options_.workers = 4;
  for (const std::string script : {
           "echo Welcome; echo to the board >&2; exec \"$@\"",
           // Whole lines only.
           "sed -u '' | \"$@\" | sed -u ''",
       }) {
    SetScript(script);
    const Told told = RunTasks({"say one", "say two", "say three"});
    EXPECT_EQ(told.end.kind, PoolEnd::Kind::finished);
    for (const stub::Ended& ended : told.ended) {
      EXPECT_EQ(ended.answer.bytes, ended.job.task.substr(4));
      EXPECT_EQ(ended.answer.printed, "");
    }
  }
}

TEST_F(Launchers, SayWhyThereIsNoWorker) {
  struct {
    std::vector<std::string> launcher;
    int tries;  // of each of two workers
    std::string reason;
  } const cases[] = {
      {{"no-such-command", "there"},
       0,
       "'no-such-command' cannot be started: no such file or directory"},
      {{"sh", "-c", "echo >>tries; echo Permission denied >&2; exit 255"},
       3,
       "'sh' ended with exit status 255: Permission denied"},
      {{"sh", "-c", "echo >>tries; kill -9 $$"}, 3, "'sh' was killed by SIGKILL"},
      {{"sh", "-c", "echo >>tries"}, 3, "'sh' ended with exit status 0"},
      {{"sh", "-c",
        R"(echo >>tries; printf '\002stub 1 worker\003\n\377\377\377\377'; exec sleep 300)"},
       3,
       "'sh' sent a message that is too long"},
      {{"sh", "-c",
        R"(echo >>tries; printf '\002stub 1 worker\003\n\001\0\0\0x\n'; exec sleep 300)"},
       3,
       "'sh' sent a message that cannot be understood"},
  };
  options_.workers = 2;
  options_.folder = folder_;
  for (const auto& [launcher, tries, reason] : cases) {
    std::filesystem::remove(folder_ / "tries");
    options_.launcher = launcher;
    const Told told = RunTasks({"", "", ""});
    EXPECT_EQ(told.end.kind, PoolEnd::Kind::noWorker);
    EXPECT_EQ(told.end.reason, reason);
    EXPECT_TRUE(told.started.empty());
    EXPECT_EQ(stub::Contents(folder_ / "tries").size(), 2U * static_cast<std::size_t>(tries));
  }
}

// The system refuses what a worker needs: it says so, wherever that is.
TEST_F(Launchers, SayWhatTheSystemRefuses) {
  options_.launcher = {"env", "STUB_NO_FORK=1"};
  EXPECT_EQ(RunTasks({""}).end.reason, "no process for a runner: Resource temporarily unavailable");
  bool worked = false;
  for (int descriptors = 4; !worked && descriptors < 30; ++descriptors) {
    options_.launcher = {"prlimit", "--nofile=" + std::to_string(descriptors)};
    const Told told = RunTasks({""});
    worked = told.end.kind == PoolEnd::Kind::finished;
    if (!worked) {
      EXPECT_NE(told.end.reason, "");
      EXPECT_EQ(told.end.reason.find("exit status 0"), std::string::npos) << told.end.reason;
    }
  }
  EXPECT_TRUE(worked);
}

TEST_F(Launchers, HaveWhatWasLostDoneOnceMore) {
  // The first worker's job takes it along, and the way is open so often.
  struct {
    int open;
    Ending ending;
    PoolEnd::Kind end;
  } const cases[] = {
      {1, Ending::lost, PoolEnd::Kind::noWorker},
      {2, Ending::lost, PoolEnd::Kind::noWorker},
      {9, Ending::lost, PoolEnd::Kind::finished},
  };
  options_.folder = folder_;
  for (const auto& [open, ending, end] : cases) {
    SetScript("echo >>opened; [ $(wc -l <opened) -le " + std::to_string(open) +
              " ] || exit 7; exec \"$@\"");
    const Told told = RunTasks({"say a", "kill", "say b"});
    EXPECT_EQ(told.end.kind, end);
    EXPECT_EQ(told.ended[0].answer.bytes, "a");
    EXPECT_EQ(told.ended[1].answer.ending, ending);
    EXPECT_EQ(told.ended[1].answer.reason, "'sh' was killed by SIGKILL");
    EXPECT_EQ(told.ended[1].answer.lostFirst, open == 1 ? "" : "'sh' was killed by SIGKILL");
    EXPECT_EQ(told.started.size(), open == 9 ? 3U : 2U);
    EXPECT_EQ(told.end.reason, open == 9 ? "" : "'sh' ended with exit status 7");
    std::filesystem::remove(folder_ / "opened");
  }
}

// Scripts that do not give their place to the worker.
TEST_F(Launchers, LeaveNoProcess) {
  options_.folder = folder_;
  for (const std::string script : {
           "sleep 300 & echo $! >>left; \"$@\"",
           "sleep 300 & echo $! $$ >>left; \"$@\"; sleep 300",
       }) {
    SetScript(script);
    std::thread interrupt([&] {
      while (Starts() < 1) std::this_thread::sleep_for(std::chrono::milliseconds(20));
      kill(getpid(), SIGTERM);
    });
    EXPECT_EQ(RunTasks({"hang"}).end.kind, PoolEnd::Kind::interrupted);
    interrupt.join();
    EXPECT_TRUE(stub::AllGo(stub::Contents(folder_ / "left"))) << script;
    std::filesystem::remove(folder_ / "left");
    SetStarts("");
  }
  SetScript("sleep 300 & echo $! >>left; \"$@\"");
  EXPECT_EQ(RunTasks({""}).end.kind, PoolEnd::Kind::finished);
  EXPECT_TRUE(stub::AllGo(stub::Contents(folder_ / "left")));
}

TEST_F(Launchers, AndWorkersGoWithAPoolThatIsKilled) {
  options_.folder = folder_;
  SetScript("echo $$ >>left; \"$@\"");
  const pid_t pool = fork();
  if (pool == 0) {
    RunTasks({"hang"});
    _exit(0);
  }
  while (Starts() < 1) std::this_thread::sleep_for(std::chrono::milliseconds(20));
  kill(pool, SIGKILL);
  waitpid(pool, nullptr, 0);
  EXPECT_TRUE(stub::AllGo(stub::Contents(folder_ / "left")));
}

}  // namespace
