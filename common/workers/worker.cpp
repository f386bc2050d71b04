#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <deque>
#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <variant>

#include "common/workers/descriptor.h"
#include "common/workers/framing.h"
#include "common/workers/messages.h"
#include "common/workers/runner.h"
#include "common/workers/runner_process.h"

namespace workers {
namespace {

using Clock = std::chrono::steady_clock;

// How often in a row a runner may end before it is up, and how often it may be given up: that takes
// the whole of a limit each time.
constexpr int startsBeforeGivingUp = 3;
constexpr int hangsBeforeGivingUp = 2;

// The pool has no more orders, or is gone.
struct PoolGone {};

// The way to the pool.
class ReportPipe {
 public:
  explicit ReportPipe(int descriptor) : descriptor_(descriptor) {}

  void Say(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t size = write(descriptor_, bytes.data(), bytes.size());
      if (size < 0 && errno == EINTR) continue;
      if (size < 0) throw PoolGone{};
      bytes.remove_prefix(static_cast<std::size_t>(size));
    }
  }

  void Tell(const Report& report) const { Say(Framed(Packed(report))); }

 private:
  int descriptor_;
};

// Has one runner after the other, and stands between these and the pool. It knows no limit of time:
// in every phase that could last it listens for the pool's word to give up.
class Worker {
 public:
  Worker(const Runner& runner, int in, const ReportPipe& pool)
      : in_(in), pool_(pool), runner_(runner) {}

  void Work() {
    if (!BringUp()) return;
    for (;;) {
      const Order order = NextOrder();
      if (const auto* const task = std::get_if<Task>(&order)) Do(*task);
      if (std::holds_alternative<Finish>(order)) return EndRunner();
    }
  }

 private:
  enum class Outcome { done, dead, givenUp };

  void Enter(Phase::Kind kind) { pool_.Tell(Phase{.kind = kind, .number = ++phase_}); }

  // Has a runner, or has told the pool why not.
  bool BringUp() {
    int hangs = 0;
    for (int start = 1;; ++start) {
      const std::optional<std::string> failure = StartRunner(hangs);
      if (!failure) return true;
      if (runner_.Memory().state == RunnerMemory::State::noDevice && !sawDevice_) {
        pool_.Tell(NoDevice{std::string(runner_.Memory().Message())});
        return false;
      }
      if (start == startsBeforeGivingUp || hangs == hangsBeforeGivingUp) {
        pool_.Tell(NoRunner{*failure});
        return false;
      }
    }
  }

  // Starts a runner and waits until it is ready. Returns what went wrong.
  std::optional<std::string> StartRunner(int& hangs) {
    Enter(Phase::Kind::starting);
    try {
      runner_.Start();
    } catch (const std::system_error& error) {
      return error.what();
    }
    const Outcome outcome =
        Await([this] { return runner_.Memory().state != RunnerMemory::State::starting; });
    const bool ready = runner_.Memory().state == RunnerMemory::State::ready;
    if (outcome == Outcome::done && ready) {
      if (!std::exchange(sawDevice_, true)) pool_.Tell(Up{std::string(runner_.Memory().Message())});
      return std::nullopt;
    }
    if (outcome == Outcome::givenUp) ++hangs;
    const std::string printed = runner_.TakePrinted();
    std::string failure = outcome == Outcome::done ? "there is no GPU device any more"
                          : outcome == Outcome::dead
                              ? "OpenCL does not come up: " + TextOf(runner_.Status())
                              : "OpenCL does not come up in time";
    const std::string_view words = LastLine(printed);
    if (!words.empty()) failure += ", \"" + std::string(words) + "\"";
    runner_.Kill();
    return failure;
  }

  void Do(const Task& task) {
    if (task.freshRunner && runner_.HasBeenAsked()) EndRunner();
    for (int start = 1;; ++start) {
      if (!runner_.IsThere()) {
        if (!BringUp()) return;
        Enter(Phase::Kind::running);
      }
      if (const std::optional<Answer> answer = Run(task)) return pool_.Tell(Ended{*answer});
      if (start == startsBeforeGivingUp)
        return pool_.Tell(NoRunner{"OpenCL does not stay up: " + TextOf(runner_.Status())});
    }
  }

  // Has a task done and tells what became of it; nothing if the runner was at its end, and the task
  // has not begun.
  std::optional<Answer> Run(const Task& task) {
    const Clock::time_point start = Clock::now();
    const RunnerMemory& memory = runner_.Memory();
    const std::uint32_t number = runner_.Ask(task.bytes);
    // A driver that closes what is not its own leaves a runner that does its task and ends.
    const auto cannotBegin = [&] { return runner_.Wake() < 0 && memory.begun != number; };
    const Outcome outcome = Await([&] { return memory.done == number || cannotBegin(); });
    if (cannotBegin()) {
      EndRunner();
      return std::nullopt;
    }

    Answer answer;
    answer.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    switch (outcome) {
      case Outcome::done:
        answer.ending = Ending::returned;
        break;
      case Outcome::dead:
        answer.ending = runner_.Status().signalled ? Ending::signalled : Ending::exited;
        answer.value = runner_.Status().value;
        break;
      case Outcome::givenUp:
        answer.ending = Ending::timedOut;
        runner_.Kill();
        break;
    }
    answer.bytes = memory.answer.Written();
    answer.printed = runner_.TakePrinted();
    return answer;
  }

  // Lets the runner come to an end of its own.
  void EndRunner() {
    if (!runner_.IsThere()) return;
    Enter(Phase::Kind::ending);
    runner_.AskToEnd();
    Await([] { return false; });
    runner_.Kill();
  }

  // Waits until `done`, the runner is dead, or the pool gives this phase up: a worker that was
  // stopped may find all three at once, and its time was over first.
  template <class Done>
  Outcome Await(Done done) {
    for (;;) {
      const bool isDone = done();
      constexpr timespec now = {};
      if (isDone) Poll(&now);
      if (IsGivenUp()) return Outcome::givenUp;
      if (isDone) return Outcome::done;
      if (runner_.Reap()) return done() ? Outcome::done : Outcome::dead;
      Poll();
    }
  }

  // Whether the pool has given up the phase that it was last told of.
  bool IsGivenUp() {
    while (!orders_.empty()) {
      const auto* const giveUp = std::get_if<GiveUp>(&orders_.front());
      if (giveUp == nullptr) return false;
      const bool isThis = giveUp->phase == phase_;
      orders_.pop_front();
      if (isThis) return true;
    }
    return false;
  }

  Order NextOrder() {
    for (;;) {
      if (!orders_.empty()) {
        Order order = std::move(orders_.front());
        orders_.pop_front();
        return order;
      }
      Poll();
      runner_.Reap();
    }
  }

  // Waits until something comes, a child dies or the time is over, and takes what came.
  void Poll(const timespec* limit = nullptr) {
    std::array<pollfd, 3> polled = {
        pollfd{.fd = in_, .events = POLLIN, .revents = 0},
        pollfd{.fd = runner_.Wake(), .events = POLLIN, .revents = 0},
        pollfd{.fd = runner_.Output(), .events = POLLIN, .revents = 0},
    };
    // SIGCHLD comes here and nowhere else.
    sigset_t none;
    sigemptyset(&none);
    if (ppoll(polled.data(), polled.size(), limit, &none) <= 0) return;
    char bytes[4096];
    if (polled[0].revents != 0) {
      const ssize_t size = read(in_, bytes, sizeof bytes);
      if (size == 0 || (size < 0 && errno != EINTR && errno != EAGAIN)) throw PoolGone{};
      if (size > 0) frames_.Feed({bytes, static_cast<std::size_t>(size)});
      while (const std::optional<std::string> message = frames_.Next())
        orders_.push_back(OrderFrom(*message));
    }
    if (polled[1].revents != 0) runner_.HearWake();
    if (polled[2].revents != 0) runner_.HearOutput();
  }

  int in_;
  const ReportPipe& pool_;
  FrameReader frames_;
  std::deque<Order> orders_;
  std::uint32_t phase_ = 0;
  bool sawDevice_ = false;
  RunnerProcess runner_;
};

}  // namespace

int WorkerMain(const Runner& runner) {
  // A driver that writes where it should not must not find these two by their numbers, and what
  // else was handed down is not the worker's.
  closefrom(3);
  const Descriptor null(open("/dev/null", O_RDWR | O_CLOEXEC));
  const Descriptor in(Above(STDIN_FILENO));
  const Descriptor out(Above(STDOUT_FILENO));
  dup2(null.Number(), STDIN_FILENO);
  dup2(STDERR_FILENO, STDOUT_FILENO);

  // The interrupt that a terminal sends to all its processes is the pool's to act on.
  signal(SIGINT, SIG_IGN);
  signal(SIGPIPE, SIG_IGN);
  signal(SIGCHLD, [](int) {});
  sigset_t child;
  sigemptyset(&child);
  sigaddset(&child, SIGCHLD);
  sigprocmask(SIG_BLOCK, &child, nullptr);

  // What cannot be told to the pool is the last line on standard error, which the pool shows.
  const auto refused = [](const char* reason) {
    std::cerr << reason << std::endl;
    return 1;
  };
  if (in.Number() < 0 || out.Number() < 0) return refused("no descriptor for a worker");
  const ReportPipe pool(out.Number());
  try {
    pool.Say(HelloOf(runner.protocol));
    Worker(runner, in.Number(), pool).Work();
    return 0;
  } catch (const PoolGone&) {
    return 0;
  } catch (const std::exception& error) {
    return refused(error.what());
  }
}

}  // namespace workers
