#include "common/workers/worker.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <iostream>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "diagnosis/execution/messages.h"
#include "diagnosis/execution/runner.h"

namespace diagnosis {
namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;
using std::chrono::milliseconds;

// How often in a row a runner may fail to come up.
constexpr int startsBeforeGivingUp = 3;
// How long a runner may take over its end, which is the driver's, and to die when it is killed: a
// process in a hung device's kernel driver does not.
constexpr auto timeToEnd = milliseconds(5000);
constexpr auto timeToDie = milliseconds(2000);

// The pool has no more orders, or is gone.
struct PoolGone {};

// A file descriptor, owned.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() { Close(); }

  int Number() const { return number_; }
  void Close() {
    if (number_ >= 0) close(std::exchange(number_, -1));
  }

 private:
  int number_;
};

// A copy of the descriptor with a number that is out of a driver's way, if there may be such.
int Above(int descriptor) {
  const int high = fcntl(descriptor, F_DUPFD_CLOEXEC, 300);
  return high >= 0 ? high : fcntl(descriptor, F_DUPFD_CLOEXEC, 3);
}

// How a runner's process ended.
struct Death {
  bool signalled = false;
  int value = 0;  // signal or status
};

std::string TextOf(const Death& death) {
  if (!death.signalled) return "exit status " + std::to_string(death.value);
  const char* const name = sigabbrev_np(death.value);
  return name != nullptr ? "SIG" + std::string(name) : "signal " + std::to_string(death.value);
}

std::string_view LastLine(std::string_view text) {
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.remove_suffix(1);
  return text.substr(text.rfind('\n') + 1);
}

class Worker {
 public:
  Worker(int in, int out) : in_(in), out_(out) {
    void* const memory = mmap(nullptr, sizeof(RunnerMemory), PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED) throw std::runtime_error("no memory for a runner");
    memory_ = new (memory) RunnerMemory;
  }
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;
  ~Worker() {
    Kill();
    munmap(memory_, sizeof(RunnerMemory));
  }

  void Work() {
    Say(workersHello);
    const std::optional<Order> first = NextOrder();
    if (!first) return;
    timeout_ = std::chrono::ceil<milliseconds>(Seconds(std::get<Begin>(*first).timeoutSeconds));
    if (!BringUp()) return;
    while (const std::optional<Order> order = NextOrder()) {
      const Task& task = std::get<Task>(*order);
      if (task.freshRunner && hasRun_) End();
      for (int start = 1; runner_ != 0 || BringUp(); ++start) {
        const std::optional<Ended> ended = Run(task);
        if (ended) {
          Say(Answer(*ended));
          break;
        }
        if (start == startsBeforeGivingUp) {
          Say(Answer(NoRunner{"OpenCL does not stay up: " + TextOf(death_)}));
          break;
        }
      }
    }
    End();
  }

 private:
  enum class Orders { taken, ignored };

  // Has a runner, or has told the pool why not.
  bool BringUp() {
    for (int start = 1;; ++start) {
      const std::optional<std::string> failure = Start();
      if (!failure) return true;
      if (memory_->state == RunnerMemory::State::noDevice && !sawDevice_) {
        Say(Answer(NoDevice{std::string(memory_->Message())}));
        return false;
      }
      if (start == startsBeforeGivingUp) {
        Say(Answer(NoRunner{*failure}));
        return false;
      }
    }
  }

  // Starts a runner and waits until it is ready. Returns what went wrong.
  std::optional<std::string> Start() {
    Fork();
    const bool came = Await([this] { return memory_->state != RunnerMemory::State::starting; },
                            timeout_, Orders::taken);
    if (came && memory_->state == RunnerMemory::State::ready) {
      if (!sawDevice_) Say(AnswerFrom(memory_->Message()));
      sawDevice_ = true;
      return std::nullopt;
    }
    const std::string_view words = LastLine(driver_);
    std::string failure;
    if (came) {
      failure = "there is no GPU device any more";
    } else if (runner_ == 0) {
      failure = "OpenCL does not come up: " + TextOf(death_);
    } else {
      failure = "OpenCL does not come up in time";
    }
    if (!words.empty()) failure += ", \"" + std::string(words.substr(0, 200)) + "\"";
    Kill();
    return failure;
  }

  void Fork() {
    int sockets[2];
    int pipes[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0)
      throw std::runtime_error("no socket for a runner");
    wake_ = Descriptor(sockets[0]);
    const Descriptor runnersWake(sockets[1]);
    if (pipe2(pipes, O_CLOEXEC) != 0) throw std::runtime_error("no pipe for a runner");
    output_ = Descriptor(pipes[0]);
    const Descriptor runnersOutput(pipes[1]);
    fcntl(wake_.Number(), F_SETFL, O_NONBLOCK);
    fcntl(output_.Number(), F_SETFL, O_NONBLOCK);

    memory_->state = RunnerMemory::State::starting;
    memory_->asked = 0;
    memory_->done = 0;
    hasRun_ = false;
    driver_.clear();
    const pid_t worker = getpid();
    runner_ = fork();
    if (runner_ < 0) {
      runner_ = 0;
      throw std::runtime_error(std::string("no process for a runner: ") + std::strerror(errno));
    }
    if (runner_ == 0) BecomeRunner(worker, runnersWake.Number(), runnersOutput.Number());
    setpgid(runner_, runner_);
  }

  [[noreturn]] void BecomeRunner(pid_t worker, int wake, int output) {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != worker) _exit(0);
    for (const int number : {SIGCHLD, SIGPIPE, SIGINT}) signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);

    // The driver gets no descriptor of the worker's but the one socket, out of its way.
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    dup2(wake, 3);
    closefrom(4);
    const int above = Above(3);
    close(3);
    RunnerMain(*memory_, above);
  }

  // Runs a row and tells what became of it; nothing if the runner was at its end, and the row has
  // not begun.
  std::optional<Ended> Run(const Task& task) {
    const Clock::time_point start = Clock::now();
    const std::string message = Packed(Order(task));
    if (message.size() > RunnerMemory::longestMessage)
      return Ended{.ending = {.kind = Ending::Kind::notRun,
                              .value = 0,
                              .reason = "the build options are too long"},
                   .seconds = 0,
                   .driver = {},
                   .journal = {}};
    memory_->SetMessage(message);
    memory_->journal.Clear();
    const std::uint32_t number = ++memory_->asked;
    hasRun_ = true;
    const bool woken = send(wake_.Number(), "", 1, MSG_NOSIGNAL) == 1;
    (void)woken;  // a runner that cannot be woken is dying
    // A driver that closes what is not its own leaves a runner that does its row and ends.
    const auto cannotBegin = [&] { return wake_.Number() < 0 && memory_->begun != number; };
    const bool returned = Await([&] { return memory_->done == number || cannotBegin(); },
                                timeout_ * task.passes, Orders::taken) &&
                          memory_->done == number;
    if (cannotBegin()) {
      End();
      return std::nullopt;
    }

    Ended ended;
    ended.seconds = Seconds(Clock::now() - start).count();
    if (returned) {
      ended.ending.kind = Ending::Kind::returned;
    } else if (runner_ != 0) {
      ended.ending.kind = Ending::Kind::timedOut;
      Kill();
    } else {
      ended.ending.kind = death_.signalled ? Ending::Kind::signalled : Ending::Kind::exited;
      ended.ending.value = death_.value;
    }
    const std::span<const std::byte> written = memory_->journal.Written();
    ended.journal.assign(reinterpret_cast<const char*>(written.data()), written.size());
    Record record;
    const bool sound = ReadJournal(written, record);
    if (!sound || (returned && record.ending.kind != Ending::Kind::returned)) {
      Kill();
      ended.ending = {.kind = Ending::Kind::lost,
                      .value = 0,
                      .reason = "the driver has overwritten the row's own record"};
    }
    ended.driver = std::exchange(driver_, {});
    return ended;
  }

  // Waits until `done`, at most so long, for which it is true. False if the time is over, or the
  // runner is dead and has been buried. What the driver prints in the meantime is collected.
  template <class Done>
  bool Await(Done done, milliseconds time, Orders orders) {
    const Clock::time_point end = Clock::now() + time;
    for (;;) {
      if (done()) {
        Drain();
        return true;
      }
      if (Bury()) return done();
      const auto left = std::chrono::ceil<milliseconds>(end - Clock::now());
      if (left.count() <= 0) return false;
      Poll(left, orders);
    }
  }

  // The next order; nothing when the pool has no more.
  std::optional<Order> NextOrder() try {
    for (;;) {
      if (const std::optional<std::string> message = orders_.Next()) return OrderFrom(*message);
      Poll(milliseconds(-1), Orders::taken);
      Bury();
    }
  } catch (const PoolGone&) {
    return std::nullopt;
  }

  // Waits until something comes, a child dies or the time is over, and takes what came.
  void Poll(milliseconds time, Orders orders) {
    std::array<pollfd, 3> polled = {
        pollfd{.fd = orders == Orders::taken ? in_ : -1, .events = POLLIN, .revents = 0},
        pollfd{.fd = wake_.Number(), .events = POLLIN, .revents = 0},
        pollfd{.fd = output_.Number(), .events = POLLIN, .revents = 0},
    };
    const timespec timeout = {.tv_sec = time.count() / 1000,
                              .tv_nsec = time.count() % 1000 * 1'000'000};
    // SIGCHLD comes here and nowhere else.
    sigset_t none;
    sigemptyset(&none);
    if (ppoll(polled.data(), polled.size(), time.count() < 0 ? nullptr : &timeout, &none) <= 0)
      return;
    char bytes[4096];
    if (polled[0].revents != 0) {
      const ssize_t size = read(in_, bytes, sizeof bytes);
      if (size == 0 || (size < 0 && errno != EINTR && errno != EAGAIN)) throw PoolGone{};
      if (size > 0) orders_.Feed({bytes, static_cast<std::size_t>(size)});
    }
    if (polled[1].revents != 0 && !Skim(wake_.Number())) wake_.Close();
    if (polled[2].revents != 0) Drain();
  }

  // Takes all that is there to be read and throws it away. False at its end.
  static bool Skim(int descriptor) {
    char bytes[4096];
    for (;;) {
      const ssize_t size = read(descriptor, bytes, sizeof bytes);
      if (size <= 0) return size < 0 && (errno == EAGAIN || errno == EINTR);
    }
  }

  // Takes what the driver printed.
  void Drain() {
    char bytes[4096];
    for (int i = 0; i < 64 && output_.Number() >= 0; ++i) {
      const ssize_t size = read(output_.Number(), bytes, sizeof bytes);
      if (size < 0 && (errno == EAGAIN || errno == EINTR)) return;
      if (size <= 0) return output_.Close();
      if (driver_.size() > Journal::longestText) continue;
      driver_.append(bytes, static_cast<std::size_t>(size));
      if (driver_.size() > Journal::longestText) {
        driver_.resize(Journal::longestText);
        driver_ += "\n[the rest is left out]\n";
      }
    }
  }

  // Whether the runner is dead. Then its process group goes with it, and `death_` says how it died.
  bool Bury() {
    if (runner_ == 0) return true;
    siginfo_t info{};
    if (waitid(P_PID, static_cast<id_t>(runner_), &info, WEXITED | WNOHANG | WNOWAIT) != 0 ||
        info.si_pid == 0)
      return false;
    death_ = {.signalled = info.si_code != CLD_EXITED, .value = info.si_status};
    kill(-runner_, SIGKILL);
    waitpid(runner_, nullptr, 0);
    Drain();
    runner_ = 0;
    wake_.Close();
    output_.Close();
    return true;
  }

  // Lets the runner come to an end of its own.
  void End() {
    if (runner_ == 0) return;
    shutdown(wake_.Number(), SHUT_RDWR);
    Await([] { return false; }, timeToEnd, Orders::ignored);
    Kill();
  }

  void Kill() {
    if (runner_ == 0) return;
    kill(-runner_, SIGKILL);
    for (const auto end = Clock::now() + timeToDie; !Bury() && Clock::now() < end;)
      poll(nullptr, 0, 2);
    runner_ = 0;  // whether it is dead or cannot die
    wake_.Close();
    output_.Close();
  }

  void Say(const Answer& answer) const { Say(Framed(Packed(answer))); }

  void Say(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t size = write(out_, bytes.data(), bytes.size());
      if (size < 0 && errno == EINTR) continue;
      if (size < 0) throw PoolGone{};
      bytes.remove_prefix(static_cast<std::size_t>(size));
    }
  }

  int in_;
  int out_;
  RunnerMemory* memory_ = nullptr;
  milliseconds timeout_{};
  FrameReader orders_;
  bool sawDevice_ = false;

  pid_t runner_ = 0;
  bool hasRun_ = false;
  Death death_;
  Descriptor wake_;
  Descriptor output_;
  std::string driver_;  // what it printed
};

}  // namespace

int WorkerMain() {
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

  try {
    Worker worker(in.Number(), out.Number());
    worker.Work();
    return 0;
  } catch (const PoolGone&) {
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "union_triage worker: " << error.what() << std::endl;
    return 1;
  }
}

}  // namespace diagnosis
